#include "host/gallery/page.h"

#include <algorithm>
#include <cmath>

#include "host/gallery/base64.h"
#include "host/gallery/html_text.h"
#include "host/gallery/page_style.h"
#include "host/knob_value.h"

namespace kelmora::host {
namespace {

std::string Number(std::size_t value)
{
    return std::to_string(value);
}

std::string JpegUri(const Film& film)
{
    return "data:image/jpeg;base64," + Base64(film.jpeg);
}

std::string Counted(std::size_t count, const std::string& word)
{
    return Number(count) + " " + word + (count == 1 ? "" : "s");
}

/// A table in a box of its own that can be pushed sideways. `rows` are HTML.
std::string Table(const std::vector<std::string>& heads, const std::vector<std::vector<std::string>>& rows)
{
    std::string html = "<div class=\"scroll\"><table>\n<tr>";
    for (const std::string& head : heads)
        html += "<th scope=\"col\">" + head + "</th>";
    html += "</tr>\n";
    for (const std::vector<std::string>& row : rows) {
        html += "<tr>";
        for (const std::string& cell : row)
            html += "<td>" + cell + "</td>";
        html += "</tr>\n";
    }
    return html + "</table></div>\n";
}

/// A value as it stands in a cell: a colour with a dab of it, a float with what is shown to users.
std::string ValueCell(const Knob& knob, const ParamValue& value)
{
    std::string text = HtmlText(ValueText(knob, value));
    if (knob.kind == ParamColor)
        return "<span class=\"ink\" style=\"background:" + text + "\"></span>" + text;
    return text;
}

std::string RangeCell(const Knob& knob)
{
    if (knob.kind == ParamFloat) {
        return "shown as " + HtmlText(ShownText(knob, knob.standard)) + " on " + HtmlText(FloatText(knob.min))
            + " to " + HtmlText(FloatText(knob.max)) + (knob.angular ? ", an angle" : "");
    }
    std::string text;
    for (const std::string& choice : knob.choices)
        text += (text.empty() ? "" : ", ") + HtmlText(choice);
    return text;
}

std::string KnobTable(const EffectFace& face)
{
    std::vector<std::vector<std::string>> rows;
    for (std::size_t i = 0; i < face.knobs.size(); ++i) {
        const Knob& knob = face.knobs[i];
        rows.push_back({Number(i), HtmlText(knob.name), KindText(knob.kind), ValueCell(knob, knob.standard),
                        RangeCell(knob)});
    }
    return "<details open><summary>" + Counted(face.knobs.size(), "knob") + "</summary>\n"
        + Table({"Index", "Knob", "Kind", "Default", "Range"}, rows) + "</details>\n";
}

std::string PresetTable(const EffectFace& face)
{
    std::vector<std::string> heads = {"Preset"};
    for (const Knob& knob : face.knobs)
        heads.push_back(HtmlText(knob.name));
    std::vector<std::vector<std::string>> rows;
    for (const Preset& preset : face.presets) {
        std::vector<std::string> row = {HtmlText(preset.name)};
        for (std::size_t i = 0; i < face.knobs.size(); ++i)
            row.push_back(ValueCell(face.knobs[i], preset.values[i]));
        rows.push_back(std::move(row));
    }
    return "<details><summary>What the " + Counted(face.presets.size(), "preset") + " set</summary>\n"
        + Table(heads, rows) + "</details>\n";
}

/// The shots of one effect as figures.
class ShotWriter {
public:
    ShotWriter(const Page& page, const EffectFace& face) : m_page(page), m_face(face) {}

    std::string Figure(const Preset& preset, const PageShot& shot) const
    {
        const bool isMoving = shot.along != Along::Nothing;
        const std::string name = HtmlText(preset.name);
        std::string html = isMoving ? "<figure class=\"moving\"" : "<figure";
        if (shot.along == Along::Time)
            html += " data-seconds=\"" + FloatText(static_cast<float>(m_page.seconds)) + "\"";
        html += ">\n" + Screen(name, shot) + "<figcaption><b>" + name + "</b>";
        if (isMoving)
            html += "<output>" + StartText(shot) + "</output>";
        else
            html += "<span>" + PictureName(shot) + "</span>";
        html += "</figcaption>\n";
        if (isMoving)
            html += Ride(name, shot);
        return html + "</figure>\n";
    }

    /// The frame that is seen at first: the one in the middle.
    static std::int32_t StartFrame(const Film& film) { return film.frames / 2; }

private:
    const Page& m_page;
    const EffectFace& m_face;

    std::string PictureName(const PageShot& shot) const
    {
        return HtmlText(m_page.pictures[shot.picture].name);
    }

    std::string StartText(const PageShot& shot) const
    {
        const double share = static_cast<double>(StartFrame(shot.film)) / (shot.film.frames - 1);
        if (shot.along == Along::Progress)
            return std::to_string(std::lround(share * 100.0)) + " %";
        const long hundredths = std::lround(share * m_page.seconds * 100.0);
        const std::string rest = std::to_string(hundredths % 100);
        return std::to_string(hundredths / 100) + (rest.size() < 2 ? ".0" : ".") + rest + " s";
    }

    std::string Screen(const std::string& preset, const PageShot& shot) const
    {
        const Film& film = shot.film;
        const bool isFilter = m_face.pictures == 1;
        std::string html = "<div class=\"screen";
        if (isFilter)
            html += " before before-" + Number(shot.picture);
        html += "\" style=\"--split:50%;--frame:" + std::to_string(StartFrame(film))
            + ";--frames:" + std::to_string(film.frames) + ";aspect-ratio:" + std::to_string(film.width) + "/"
            + std::to_string(film.height) + "\"><div class=\"after\"><img alt=\"" + HtmlText(m_face.name)
            + ", preset " + preset + (isFilter ? ", on " : ", from ") + PictureName(shot) + "\" src=\""
            + JpegUri(film) + "\"></div>";
        if (isFilter)
            html += "<div class=\"edge\"></div><input class=\"split\" type=\"range\" aria-label=\"Before and "
                    "after of "
                + preset + " on " + PictureName(shot) + "\">";
        return html + "</div>\n";
    }

    static std::string Ride(const std::string& preset, const PageShot& shot)
    {
        return "<div class=\"ride\"><button type=\"button\" aria-label=\"Play " + preset
            + "\" aria-pressed=\"false\">\xE2\x96\xB6\xEF\xB8\x8E</button><input class=\"along\" "
              "type=\"range\" "
              "min=\"0\" max=\""
            + std::to_string(shot.film.frames - 1) + "\" value=\"" + std::to_string(StartFrame(shot.film))
            + "\" aria-label=\"" + (shot.along == Along::Time ? "Time" : "Progress") + " of " + preset
            + "\"></div>\n";
    }
};

/// The frames of the longest film of an effect; 1 when nothing moves.
std::int32_t MostFrames(const PageEffect& effect)
{
    std::int32_t most = 1;
    for (const std::vector<PageShot>& shots : effect.shots)
        for (const PageShot& shot : shots)
            most = std::max(most, shot.film.frames);
    return most;
}

std::string About(const EffectFace& face)
{
    const bool isTransition = face.pictures == 2;
    return "<p class=\"about\">Number " + std::to_string(face.number)
        + (isTransition ? ", a transition" : ", a filter") + ", help topic " + std::to_string(face.helpId)
        + ". <code>kelmora render " + HtmlText(face.slug) + " in.png"
        + (isTransition ? " --to second.png" : "") + " -o out.png</code></p>\n";
}

std::string Section(const Page& page, const PageEffect& effect)
{
    const std::string id = HtmlText(effect.face.slug);
    std::string html = "<section id=\"" + id + "\" aria-labelledby=\"" + id + "-name\">\n<h2 id=\"" + id
        + "-name\">" + HtmlText(effect.face.name) + "</h2>\n" + About(effect.face);
    if (const std::int32_t frames = MostFrames(effect); frames > 1) {
        const std::string last = std::to_string(frames - 1);
        html += "<label class=\"all\">All presets <input type=\"range\" min=\"0\" max=\"" + last
            + "\" value=\"" + std::to_string(frames / 2) + "\"></label>\n";
    }
    html += "<div class=\"shots\">\n";
    const ShotWriter writer(page, effect.face);
    for (std::size_t preset = 0; preset < effect.shots.size(); ++preset)
        for (const PageShot& shot : effect.shots[preset])
            html += writer.Figure(effect.face.presets[preset], shot);
    return html + "</div>\n" + KnobTable(effect.face) + PresetTable(effect.face) + "</section>\n";
}

std::string Head(const Page& page)
{
    std::string style = kPageStyle;
    for (std::size_t i = 0; i < page.pictures.size(); ++i)
        style +=
            ".before-" + Number(i) + " { background-image: url(" + JpegUri(page.pictures[i].film) + "); }\n";
    // The policy is the browser's promise that nothing comes from anywhere else.
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; img-src data:; "
           "style-src 'unsafe-inline'; script-src 'unsafe-inline'\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>"
        + HtmlText(page.library) + ": every effect, every preset</title>\n<style>" + style
        + "</style>\n</head>\n";
}

std::string Top(const Page& page)
{
    std::size_t presets = 0;
    std::string links;
    for (const PageEffect& effect : page.effects) {
        presets += effect.face.presets.size();
        links += "<li><a href=\"#" + HtmlText(effect.face.slug) + "\">" + HtmlText(effect.face.name)
            + "</a></li>\n";
    }
    return "<h1>" + HtmlText(page.library) + "</h1>\n<p class=\"about\">"
        + Counted(page.effects.size(), "effect") + ", " + Counted(presets, "preset")
        + ". Drag across a filter's picture to compare it with the one before; "
          "drag the slider under a transition to see it on its way.</p>\n<nav aria-label=\"Effects\"><ul>\n"
        + links + "</ul></nav>\n";
}

} // namespace

std::string PageHtml(const Page& page)
{
    std::string html = Head(page) + "<body>\n" + Top(page);
    for (const PageEffect& effect : page.effects)
        html += Section(page, effect);
    return html + "<script>" + kPageScript + "</script>\n</body>\n</html>\n";
}

} // namespace kelmora::host

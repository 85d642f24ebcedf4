#include "host/gallery/page.h"

#include <gtest/gtest.h>

namespace kelmora::host {
namespace {

/// The bytes "foo", as two frames of 4 by 2 pixels.
Film FilmOfFoo(std::int32_t frames)
{
    return {{'f', 'o', 'o'}, 4, 2, 16, frames};
}

EffectFace FaceOf(const std::string& name, int pictures)
{
    EffectFace face;
    face.number = 106;
    face.name = name;
    face.slug = "soft-&-round";
    face.helpId = 961;
    face.pictures = pictures;
    Knob spray;
    spray.name = "Spray <1>";
    spray.standard.value = FloatWord(0.5f);
    spray.max = 100.0f;
    Knob ink;
    ink.name = "Ink";
    ink.kind = ParamColor;
    ink.standard = {0x0080FF, 0, ParamColor};
    face.knobs = {spray, ink};
    face.presets = {{"Ebb && Flow", {ParamValue{FloatWord(0.25f), 0, ParamFloat}, ink.standard}}};
    return face;
}

/// One effect with one preset on the picture "cat".
std::string PageOf(int pictures, Along along, std::int32_t frames)
{
    Page page;
    page.library = "Larkvee \"K\"";
    page.pictures = {{"cat", FilmOfFoo(1)}};
    page.effects = {{FaceOf("Soft & Round", pictures), {{{0, along, FilmOfFoo(frames)}}}}};
    page.seconds = 2.0;
    return PageHtml(page);
}

bool Has(const std::string& html, const std::string& part)
{
    return html.find(part) != std::string::npos;
}

TEST(PageHtml, Page_AsksForNothingElse)
{
    const std::string html = PageOf(1, Along::Nothing, 1);
    EXPECT_TRUE(Has(html, "default-src 'none'; img-src data:;"));
    for (const char* const outside : {"http:", "https:", "//", "<link", "@import"})
        EXPECT_FALSE(Has(html, outside)) << outside;
}

TEST(PageHtml, Names_AreWrittenOut)
{
    const std::string html = PageOf(1, Along::Nothing, 1);
    EXPECT_TRUE(Has(html, "<title>Larkvee &quot;K&quot;: every effect, every preset</title>"));
    EXPECT_TRUE(Has(html, "Soft &amp; Round</h2>"));
    EXPECT_TRUE(Has(html, "<a href=\"#soft-&amp;-round\">"));
    EXPECT_TRUE(Has(html, "<b>Ebb &amp;&amp; Flow</b>"));
    EXPECT_TRUE(Has(html, "<td>Spray &lt;1&gt;</td>"));
    EXPECT_FALSE(Has(html, "Ebb && Flow"));
}

TEST(PageHtml, Knobs_AreThoseOfTheFace)
{
    const std::string html = PageOf(1, Along::Nothing, 1);
    EXPECT_TRUE(Has(html, "<summary>2 knobs</summary>"));
    EXPECT_TRUE(Has(html,
                    "<tr><td>0</td><td>Spray &lt;1&gt;</td><td>float</td><td>0.5</td>"
                    "<td>shown as 50 on 0 to 100</td></tr>"));
    EXPECT_TRUE(
        Has(html, "<td>color</td><td><span class=\"ink\" style=\"background:#ff8000\"></span>#ff8000</td>"));
    EXPECT_TRUE(Has(html, "What the 1 preset set"));
    EXPECT_TRUE(Has(html, "<tr><td>Ebb &amp;&amp; Flow</td><td>0.25</td>"));
}

TEST(PageHtml, Filter_LiesOverThePictureBefore)
{
    const std::string html = PageOf(1, Along::Nothing, 1);
    EXPECT_TRUE(Has(html, ".before-0 { background-image: url(data:image/jpeg;base64,Zm9v); }"));
    EXPECT_TRUE(Has(html, "class=\"screen before before-0\""));
    EXPECT_TRUE(Has(html, "aria-label=\"Before and after of Ebb &amp;&amp; Flow on cat\""));
    EXPECT_TRUE(Has(html, "alt=\"Soft &amp; Round, preset Ebb &amp;&amp; Flow, on cat\""));
    EXPECT_FALSE(Has(html, "<button"));
    EXPECT_FALSE(Has(html, "class=\"all\""));
}

TEST(PageHtml, Transition_IsScrubbedAlongItsProgress)
{
    const std::string html = PageOf(2, Along::Progress, 9);
    EXPECT_TRUE(Has(html, "--frame:4;--frames:9;aspect-ratio:4/2"));
    EXPECT_TRUE(Has(html, "<output>50 %</output>"));
    EXPECT_TRUE(Has(html, "min=\"0\" max=\"8\" value=\"4\" aria-label=\"Progress of Ebb &amp;&amp; Flow\""));
    EXPECT_TRUE(Has(html, "All presets <input type=\"range\" min=\"0\" max=\"8\" value=\"4\">"));
    EXPECT_FALSE(Has(html, "class=\"split\""));
    EXPECT_FALSE(Has(html, "data-seconds="));
}

TEST(PageHtml, MovingFilter_IsScrubbedAlongTheTimeAndComparedToo)
{
    const std::string html = PageOf(1, Along::Time, 4);
    EXPECT_TRUE(Has(html, "<figure class=\"moving\" data-seconds=\"2\">"));
    EXPECT_TRUE(Has(html, "<output>1.33 s</output>")); // frame 2 of 0 to 3, two seconds in all
    EXPECT_TRUE(Has(html, "aria-label=\"Time of Ebb &amp;&amp; Flow\""));
    EXPECT_TRUE(Has(html, "class=\"split\""));
}

TEST(PageHtml, Counts_AreInTheOpening)
{
    EXPECT_TRUE(Has(PageOf(2, Along::Progress, 3), "1 effect, 1 preset."));
}

} // namespace
} // namespace kelmora::host

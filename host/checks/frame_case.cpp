#include "host/checks/frame_case.h"

#include <cstring>

#include "contract/render_info.h"
#include "host/strict_host.h"

namespace kelmora::host {
namespace {

/// A RenderInfo in memory of just the promised length, with marked bytes behind.
class InfoRecord {
public:
    explicit InfoRecord(const FrameCase& frame)
    {
        RenderInfo info;
        std::memset(&info, frame.unread, sizeof info);
        info.flags = frame.flags;
        info.progress = frame.progress;
        info.time = frame.time;
        info.pixelAspect = 1.0;
        info.fieldMode = frame.fieldMode;
        m_bytes.assign(sizeof info, frame.unread);
        std::memcpy(m_bytes.data(), &info, kRenderInfoBytes);
        m_before = m_bytes;
    }

    RenderInfo* Get() { return reinterpret_cast<RenderInfo*>(m_bytes.data()); }
    bool IsUnchanged() const { return m_bytes == m_before; }

private:
    std::vector<std::uint8_t> m_bytes;
    std::vector<std::uint8_t> m_before;
};

bool IsSame(const VideoFrame& a, const VideoFrame& b)
{
    return a.data == b.data && a.width == b.width && a.height == b.height && a.stride == b.stride
        && a.pixelBytes == b.pixelBytes && a.reserved[0] == b.reserved[0] && a.reserved[1] == b.reserved[1]
        && a.format == b.format && a.bottomUp == b.bottomUp;
}

/// A picture with its record and how both were before the render.
class InputFrame {
public:
    InputFrame(const FrameShape& shape, std::uint32_t noise, std::uint8_t unread) : m_frame(shape)
    {
        m_frame.FillNoise(noise);
        m_before = m_frame.Pixels();
        m_record = m_frame.Record();
        std::memset(m_record.reserved, unread, sizeof m_record.reserved);
        m_recordBefore = m_record;
    }

    VideoFrame* Record() { return &m_record; }

    void Look(CheckRun& run, const char* which) const
    {
        run.Expect(m_frame.AreGuardsIntact(),
                   std::string("bytes around the ") + which + " picture were written");
        run.Expect(m_frame.Pixels() == m_before, std::string("the ") + which + " picture was written to");
        run.Expect(IsSame(m_record, m_recordBefore),
                   std::string("the record of the ") + which + " picture was changed");
    }

private:
    GuardedFrame m_frame;
    std::vector<std::uint8_t> m_before;
    VideoFrame m_record;
    VideoFrame m_recordBefore;
};

void Report(CheckRun& run, const std::vector<std::string>& rules)
{
    for (const std::string& rule : rules)
        run.Expect(false, rule);
}

} // namespace

FrameCase CaseFor(const EffectFace& face, std::int32_t width, std::int32_t height, PixelFormat format)
{
    FrameCase frame;
    frame.first = ShapeOf(width, height, format);
    frame.second = frame.first;
    frame.output = frame.first;
    frame.hasSecond = face.pictures == 2;
    frame.knobs = face.Defaults();
    return frame;
}

FrameResult RenderCase(CheckRun& run, IVideoEffect& effect, const FrameCase& frame, StrictMemory* memory)
{
    InputFrame first(frame.first, frame.noise, frame.unread);
    InputFrame second(frame.second, frame.noise + 1, frame.unread);
    GuardedFrame output(frame.output);
    output.Fill(frame.outputFill);
    VideoFrame outputRecord = output.Record();
    std::memset(outputRecord.reserved, frame.unread, sizeof outputRecord.reserved);
    const VideoFrame recordBefore = outputRecord;
    InfoRecord info(frame);
    StrictHost host(frame.knobs, Strictness::Strict, memory);

    FrameResult result;
    result.done = effect.Render(&host, first.Record(), frame.hasSecond ? second.Record() : nullptr,
                                &outputRecord, info.Get());
    host.EndRender();
    Report(run, host.BrokenRules());
    if (memory != nullptr) {
        memory->EndRender();
        Report(run, memory->BrokenRules());
        run.Expect(host.MemoryAsked() > 0, "the host was not asked for memory");
    }
    first.Look(run, "first");
    second.Look(run, "second");
    run.Expect(output.AreGuardsIntact(), "bytes around the output were written");
    run.Expect(IsSame(outputRecord, recordBefore), "the record of the output was changed");
    run.Expect(info.IsUnchanged(), "the record of the frame was changed");
    result.pixels = output.Pixels();
    return result;
}

std::vector<std::uint8_t> RenderedPixels(CheckRun& run, IVideoEffect& effect, const FrameCase& frame,
                                         StrictMemory* memory)
{
    FrameResult result = RenderCase(run, effect, frame, memory);
    run.Expect(result.done, "Render said false");
    return std::move(result.pixels);
}

bool ExpectSame(CheckRun& run, const FrameShape& shape, const std::vector<std::uint8_t>& is,
                const std::vector<std::uint8_t>& shouldBe, const std::string& finding)
{
    if (is == shouldBe)
        return true;
    return run.Expect(false, finding + ": " + FirstDifference(shape, is, shouldBe));
}

std::vector<ParamValue> RandomKnobs(const EffectFace& face, std::mt19937& engine)
{
    std::vector<ParamValue> values;
    for (const Knob& knob : face.knobs) {
        const auto word = static_cast<std::uint32_t>(engine());
        const float level = static_cast<float>(word >> 8) * (1.0f / 16777215.0f);
        ParamValue value = {word, 0, knob.kind};
        switch (knob.kind) {
        case ParamFloat:
            value.value = FloatWord(level);
            break;
        case ParamPoint:
            value.value = FloatWord(level);
            value.valueY = FloatWord(1.0f - level);
            break;
        case ParamChoice:
            value.value = knob.choices.empty() ? 0 : word % static_cast<std::uint32_t>(knob.choices.size());
            break;
        case ParamColor:
            value.value = word & 0xFFFFFFu;
            break;
        case ParamCheck:
            value.value = word & 1u;
            break;
        }
        values.push_back(value);
    }
    return values;
}

bool IsScene(std::int32_t number)
{
    return number == Effect3DConfetti || number == Effect3DPizzaBoxes;
}

bool IsCutToSecond(std::int32_t number)
{
    return number != EffectColorMelt && number != EffectSmear;
}

std::string CaseText(const FrameShape& shape)
{
    return FormatText(shape.format) + ", " + std::to_string(shape.width) + " x "
        + std::to_string(shape.height);
}

} // namespace kelmora::host

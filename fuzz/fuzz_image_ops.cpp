// Any pictures and any numbers: every image operation, no fault.

#include "fuzz/input.h"
#include "image/image_ops.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kelmora;
    fuzz::Input input(data, size);
    fuzz::Picture from(input), to(input);
    const bool inPlace = input.Below(8) == 0;
    FrameBuffer src, dst;
    src.AttachFrame(&from.Record());
    dst.AttachFrame(inPlace ? &from.Record() : &to.Record());

    const auto number = [&] {
        return input.Below(16) == 0 ? input.Take<std::int32_t>() : input.Below(64) - 8;
    };
    int whole[64];
    float weights[64];
    for (int i = 0; i < 64; ++i) {
        whole[i] = input.Take<std::int16_t>();
        weights[i] = static_cast<float>(whole[i]) / 64.0f;
    }
    const int taps = std::min(number(), 64);
    ImageOps ops;
    MemoryAllocator allocator;
    switch (input.Below(8)) {
    case 0:
        ops.Copy(src, dst);
        break;
    case 1: {
        const int x = number(), y = number(), w = number(), h = number();
        ops.CopyRect(src, x, y, w, h, dst, number(), number());
        break;
    }
    case 2:
        ops.CopyChannel(src, dst, number(), number());
        break;
    case 3:
        ops.ReverseChannels(src, dst);
        break;
    case 4:
        ops.ExtendBorder(src, dst, number(), number());
        break;
    case 5: {
        const int anchor = number(), margin = number(), divisor = number();
        ops.RowFilter(src, dst, whole, taps, anchor, margin, divisor, input.Below(2) != 0);
        ops.RowFilter(src, dst, weights, taps, anchor, margin, divisor, input.Below(2) != 0);
        break;
    }
    case 6: {
        const int margin = number(), anchor = number(), divisor = number();
        ops.ColumnFilter(src, dst, whole, taps, margin, anchor, divisor, input.Below(2) != 0);
        ops.ColumnFilter(src, dst, weights, taps, margin, anchor, divisor, input.Below(2) != 0);
        break;
    }
    default: {
        const float xSize = input.Below(8) == 0 ? input.Take<float>() : static_cast<float>(input.Below(120));
        const float ySize = input.Below(8) == 0 ? input.Take<float>() : static_cast<float>(input.Below(120));
        ops.Blur(src, dst, xSize, ySize, &allocator, input.Below(2) != 0);
        break;
    }
    }
    return 0;
}

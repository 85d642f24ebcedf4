// How records lie in memory. 32-bit Windows is the wire format; where a pointer is 8 bytes wide, the fields
// behind it move by 4 and everything else stays.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "contract/kelmora.h"

namespace kelmora {
namespace {

constexpr std::size_t kPointer = sizeof(void*);

template <class Field>
Field At(const void* record, std::size_t offset)
{
    Field field;
    std::memcpy(&field, static_cast<const char*>(record) + offset, sizeof field);
    return field;
}

template <class Field>
void Put(std::vector<std::uint8_t>& record, std::size_t offset, Field field)
{
    std::memcpy(record.data() + offset, &field, sizeof field);
}

TEST(Layout_OfParamInfo, IsTheWireFormat)
{
    EXPECT_EQ(sizeof(ParamInfo), 276u);
    ParamInfo info = {};
    info.value = 0x01020304u;
    info.valueY = 0x11121314u;
    info.kind = ParamFloat;
    info.scale.min = -100.0f;
    info.scale.max = 250.0f;
    info.scale.hostFlag = 0x31323334u;
    info.scale.angular = 1;
    std::strcpy(info.name, "Knob");
    info.rect = {66, -90, 198, 30};
    info.shown = 1;
    EXPECT_EQ(At<std::uint32_t>(&info, 0), 0x01020304u);
    EXPECT_EQ(At<std::uint32_t>(&info, 4), 0x11121314u);
    EXPECT_EQ(At<std::uint32_t>(&info, 8), 2u);
    EXPECT_EQ(At<float>(&info, 12), -100.0f);
    EXPECT_EQ(At<float>(&info, 16), 250.0f);
    EXPECT_EQ(At<std::uint32_t>(&info, 20), 0x31323334u);
    EXPECT_EQ(At<std::uint8_t>(&info, 24), 1);
    EXPECT_EQ(std::memcmp(reinterpret_cast<const char*>(&info) + 216, "Knob", 5), 0);
    EXPECT_EQ(At<std::int32_t>(&info, 256), 66);
    EXPECT_EQ(At<std::int32_t>(&info, 260), -90);
    EXPECT_EQ(At<std::int32_t>(&info, 264), 198);
    EXPECT_EQ(At<std::int32_t>(&info, 268), 30);
    EXPECT_EQ(At<std::uint8_t>(&info, 272), 1);
}

TEST(Layout_OfParamInfo, ChoicesLieOverTheScale)
{
    ParamInfo info = {};
    info.kind = ParamChoice;
    info.choice.choiceCount = 10;
    for (int i = 0; i < 10; ++i)
        info.choice.choiceNames[i][0] = static_cast<char>('a' + i);
    EXPECT_EQ(At<std::int32_t>(&info, 12), 10);
    for (std::size_t i = 0; i < 10; ++i)
        EXPECT_EQ(At<char>(&info, 16 + 20 * i), static_cast<char>('a' + i));
    EXPECT_EQ(sizeof info.choice.choiceNames, 200u);
    EXPECT_EQ(sizeof info.name, 40u);
}

TEST(Layout_OfParamKind, CodesAreFixed)
{
    EXPECT_EQ(ParamPoint, 0u);
    EXPECT_EQ(ParamChoice, 1u);
    EXPECT_EQ(ParamFloat, 2u);
    EXPECT_EQ(ParamColor, 3u);
    EXPECT_EQ(ParamCheck, 4u);
    EXPECT_EQ(sizeof(ParamKind), 4u);
}

TEST(Layout_OfParamValue, IsTheWireFormat)
{
    EXPECT_EQ(sizeof(ParamValue), 12u);
    const ParamValue value = {1, 2, 3};
    EXPECT_EQ(At<std::uint32_t>(&value, 0), 1u);
    EXPECT_EQ(At<std::uint32_t>(&value, 4), 2u);
    EXPECT_EQ(At<std::uint32_t>(&value, 8), 3u);
}

TEST(Layout_OfVideoFrame, IsTheWireFormat)
{
    EXPECT_EQ(sizeof(VideoFrame), kPointer == 4 ? 36u : 40u);
    int pixels = 0;
    const VideoFrame frame = {&pixels, 1, -2, -3, 4, {5, 6}, 7, 8};
    EXPECT_EQ(At<void*>(&frame, 0), &pixels);
    EXPECT_EQ(At<std::int32_t>(&frame, kPointer), 1);
    EXPECT_EQ(At<std::int32_t>(&frame, kPointer + 4), -2);
    EXPECT_EQ(At<std::int32_t>(&frame, kPointer + 8), -3);
    EXPECT_EQ(At<std::int32_t>(&frame, kPointer + 12), 4);
    EXPECT_EQ(At<std::uint32_t>(&frame, kPointer + 16), 5u);
    EXPECT_EQ(At<std::uint32_t>(&frame, kPointer + 20), 6u);
    EXPECT_EQ(At<std::uint32_t>(&frame, kPointer + 24), 7u);
    EXPECT_EQ(At<std::uint8_t>(&frame, kPointer + 28), 8);
}

TEST(Layout_OfPixelFormat, CodesAreFixed)
{
    EXPECT_EQ(PF_BGRA8, 0u);
    EXPECT_EQ(PF_ARGB8, 1u);
    EXPECT_EQ(PF_Packed8, 2u);
    EXPECT_EQ(PF_BGRA32F, 3u);
    EXPECT_EQ(PF_ARGB32F, 4u);
    EXPECT_EQ(PF_Mask8, 6u);
    EXPECT_EQ(PF_Mask32F, 7u);
}

TEST(Layout_OfRenderInfo, FieldsStandWhereTheHostPutThem)
{
    EXPECT_EQ(kRenderInfoBytes, 54u);
    EXPECT_GE(sizeof(RenderInfo), 54u);
    std::vector<std::uint8_t> record(sizeof(RenderInfo), 0xEE);
    Put<std::uint32_t>(record, 4, 0x60);
    Put<double>(record, 8, 0.25);
    Put<double>(record, 16, 1e6);
    Put<double>(record, 40, 1.0667);
    Put<std::int16_t>(record, 52, -3);
    RenderInfo info;
    std::memcpy(&info, record.data(), sizeof info);
    EXPECT_EQ(info.flags, static_cast<std::uint32_t>(RenderFieldPicture | RenderHasAspect));
    EXPECT_EQ(info.progress, 0.25);
    EXPECT_EQ(info.time, 1e6);
    EXPECT_EQ(info.pixelAspect, 1.0667);
    EXPECT_EQ(info.fieldMode, -3);
    EXPECT_EQ(RenderFieldPicture, 0x20u);
    EXPECT_EQ(RenderHasAspect, 0x40u);
}

TEST(Layout_OfHostInfo, IsAPointerAndThreeWords)
{
    EXPECT_EQ(sizeof(HostInfo), kPointer == 4 ? 16u : 24u);
    const char name[] = "host";
    const HostInfo info = {name, {1, 2, 3}};
    EXPECT_EQ(At<const char*>(&info, 0), name);
    EXPECT_EQ(At<std::uint32_t>(&info, kPointer), 1u);
    EXPECT_EQ(At<std::uint32_t>(&info, kPointer + 4), 2u);
    EXPECT_EQ(At<std::uint32_t>(&info, kPointer + 8), 3u);
}

TEST(Layout_OfPresetData, IsTheWireFormat)
{
    EXPECT_EQ(sizeof(PresetData), 1984u);
    std::vector<std::uint8_t> record(sizeof(PresetData), 0);
    std::memcpy(record.data(), "name", 5);
    std::memcpy(record.data() + 260, "library", 8);
    std::memcpy(record.data() + 520, "effect", 7);
    Put<std::uint32_t>(record, 780, 11);
    Put<std::uint32_t>(record, 780 + 99 * 12 + 8, 4);
    Put<std::int32_t>(record, 1980, 100);
    PresetData data;
    std::memcpy(&data, record.data(), sizeof data);
    EXPECT_STREQ(data.Name, "name");
    EXPECT_STREQ(data.LibraryName, "library");
    EXPECT_STREQ(data.EffectName, "effect");
    EXPECT_EQ(data.params[0].value, 11u);
    EXPECT_EQ(data.params[99].kind, 4u);
    EXPECT_EQ(data.paramCount, 100);
}

TEST(Layout_OfFrameRect, IsFourWords)
{
    EXPECT_EQ(sizeof(FrameRect), 16u);
    const FrameRect rect = {1, -2, 3, -4};
    EXPECT_EQ(At<std::int32_t>(&rect, 0), 1);
    EXPECT_EQ(At<std::int32_t>(&rect, 4), -2);
    EXPECT_EQ(At<std::int32_t>(&rect, 8), 3);
    EXPECT_EQ(At<std::int32_t>(&rect, 12), -4);
}

TEST(Layout_OfSmallThings, AreOneByteAndSixteenBits)
{
    EXPECT_EQ(sizeof(bool), 1u);
    EXPECT_EQ(sizeof(char16_t), 2u);
}

TEST(ResultCodes, AreThoseOfWindows)
{
    EXPECT_EQ(S_OK, 0);
    EXPECT_EQ(static_cast<std::uint32_t>(E_NOINTERFACE), 0x80004002u);
    EXPECT_EQ(static_cast<std::uint32_t>(E_FAIL), 0x80004005u);
}

TEST(EffectNumbers, RunFrom100To109)
{
    EXPECT_EQ(Effect3DConfetti, 100);
    EXPECT_EQ(Effect3DPizzaBoxes, 101);
    EXPECT_EQ(EffectColorMelt, 102);
    EXPECT_EQ(EffectPaperCollage, 103);
    EXPECT_EQ(EffectSmear, 104);
    EXPECT_EQ(EffectActiveCamera, 105);
    EXPECT_EQ(EffectAirBrush, 106);
    EXPECT_EQ(EffectCropBorders, 107);
    EXPECT_EQ(EffectDetailEnhancer, 108);
    EXPECT_EQ(EffectWaterColor, 109);
}

} // namespace
} // namespace kelmora

#include "library/effect_numbers.h"

#include "contract/effect_library.h"

#include <array>
#include <cstddef>
#include <initializer_list>
#include <new>

#include "effects/fixing/crop_borders.h"
#include "library/wrappers/active_camera.h"
#include "library/wrappers/air_brush.h"
#include "library/wrappers/color_melt.h"
#include "library/wrappers/confetti.h"
#include "library/wrappers/detail_enhancer.h"
#include "library/wrappers/paper_collage.h"
#include "library/wrappers/pizza_boxes.h"
#include "library/wrappers/smear.h"
#include "library/wrappers/water_color.h"

namespace kelmora {
namespace {

using Factory = IVideoEffect* (*)();

template <class Effect>
IVideoEffect* Create()
{
    return new (std::nothrow) Effect;
}

struct Row {
    EffectId number;
    Factory create;
};

constexpr std::uint32_t kFirstNumber = Effect3DConfetti;
constexpr std::size_t kNumbers = EffectWaterColor - Effect3DConfetti + 1;

/// The factories in the order of their numbers, null for a number without a row. Does not compile with a
/// number that is out of range or has two rows.
consteval std::array<Factory, kNumbers> ByNumber(std::initializer_list<Row> rows)
{
    std::array<Factory, kNumbers> factories{};
    for (const Row& row : rows) {
        Factory& place = factories.at(static_cast<std::uint32_t>(row.number) - kFirstNumber);
        place = place ? throw "two rows of one number" : row.create;
    }
    return factories;
}

// The numbers are also what presets are keyed on.
constexpr std::array<Factory, kNumbers> kFactories = ByNumber({
    {Effect3DConfetti, Create<CWrap3DConfetti>},
    {Effect3DPizzaBoxes, Create<CWrap3DPizzaBoxes>},
    {EffectColorMelt, Create<CWrapColorMelt>},
    {EffectPaperCollage, Create<CWrapPaperCollage>},
    {EffectSmear, Create<CWrapSmear>},
    {EffectActiveCamera, Create<CWrapActiveCamera>},
    {EffectAirBrush, Create<CWrapAirbrush>},
    {EffectCropBorders, Create<CBorderCrop>},
    {EffectDetailEnhancer, Create<CWrapDetailEnhancer>},
    {EffectWaterColor, Create<CWrapWaterColor>},
});

} // namespace

IVideoEffect* CreateEffectOfNumber(std::int32_t effectId)
{
    // Below the first number the difference wraps round, and is past the last one as well.
    const std::uint32_t index = static_cast<std::uint32_t>(effectId) - kFirstNumber;
    if (index >= kNumbers || !kFactories[index])
        return nullptr;
    return kFactories[index]();
}

} // namespace kelmora

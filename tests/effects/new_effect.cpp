#include "tests/effects/new_effect.h"

#include "effects/fixing/crop_borders.h"
#include "effects/fixing/pixelator.h"
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

HeldEffect NewEffect(EffectClass which)
{
    switch (which) {
    case EffectClass::Airbrush:
        return HeldEffect(new CAirbrush);
    case EffectClass::UnsharpMask:
        return HeldEffect(new CUnsharpMask);
    case EffectClass::WaterColor:
        return HeldEffect(new CWaterColor);
    case EffectClass::Colormelt:
        return HeldEffect(new CColormelt);
    case EffectClass::EmbossedPaperBlend:
        return HeldEffect(new CEmbossedPaperBlend);
    case EffectClass::Smear:
        return HeldEffect(new CSmear);
    case EffectClass::Activecamera:
        return HeldEffect(new CActivecamera);
    case EffectClass::BorderCrop:
        return HeldEffect(new CBorderCrop);
    case EffectClass::BlowingLeaves:
        return HeldEffect(new D3DBlowingLeaves);
    case EffectClass::Layers:
        return HeldEffect(new D3DLayers);
    case EffectClass::FacePixelator:
        return HeldEffect(new CFacePixelator);
    case EffectClass::WrapAirbrush:
        return HeldEffect(new CWrapAirbrush);
    case EffectClass::WrapDetailEnhancer:
        return HeldEffect(new CWrapDetailEnhancer);
    case EffectClass::WrapWaterColor:
        return HeldEffect(new CWrapWaterColor);
    case EffectClass::WrapColorMelt:
        return HeldEffect(new CWrapColorMelt);
    case EffectClass::WrapPaperCollage:
        return HeldEffect(new CWrapPaperCollage);
    case EffectClass::WrapSmear:
        return HeldEffect(new CWrapSmear);
    case EffectClass::WrapActiveCamera:
        return HeldEffect(new CWrapActiveCamera);
    case EffectClass::WrapConfetti:
        return HeldEffect(new CWrap3DConfetti);
    case EffectClass::WrapPizzaBoxes:
        return HeldEffect(new CWrap3DPizzaBoxes);
    }
    return nullptr;
}

const char* NameOf(EffectClass which)
{
    switch (which) {
    case EffectClass::Airbrush:
        return "AirBrush";
    case EffectClass::UnsharpMask:
        return "DetailEnhancer";
    case EffectClass::WaterColor:
        return "WaterColor";
    case EffectClass::Colormelt:
        return "ColorMelt";
    case EffectClass::EmbossedPaperBlend:
        return "PaperCollage";
    case EffectClass::Smear:
        return "Smear";
    case EffectClass::Activecamera:
        return "ActiveCamera";
    case EffectClass::BorderCrop:
        return "CropBorders";
    case EffectClass::BlowingLeaves:
        return "Confetti";
    case EffectClass::Layers:
        return "PizzaBoxes";
    case EffectClass::FacePixelator:
        return "Pixelator";
    case EffectClass::WrapAirbrush:
        return "WrappedAirBrush";
    case EffectClass::WrapDetailEnhancer:
        return "WrappedDetailEnhancer";
    case EffectClass::WrapWaterColor:
        return "WrappedWaterColor";
    case EffectClass::WrapColorMelt:
        return "WrappedColorMelt";
    case EffectClass::WrapPaperCollage:
        return "WrappedPaperCollage";
    case EffectClass::WrapSmear:
        return "WrappedSmear";
    case EffectClass::WrapActiveCamera:
        return "WrappedActiveCamera";
    case EffectClass::WrapConfetti:
        return "WrappedConfetti";
    case EffectClass::WrapPizzaBoxes:
        return "WrappedPizzaBoxes";
    }
    return "";
}

std::string_view KeyOf(EffectClass which)
{
    switch (InnerOf(which)) {
    case EffectClass::Airbrush:
        return "air_brush";
    case EffectClass::UnsharpMask:
        return "detail_enhancer";
    case EffectClass::WaterColor:
        return "water_color";
    case EffectClass::Colormelt:
        return "color_melt";
    case EffectClass::Smear:
        return "smear";
    case EffectClass::Activecamera:
        return "active_camera";
    case EffectClass::BorderCrop:
        return "crop_borders";
    case EffectClass::BlowingLeaves:
        return "confetti";
    case EffectClass::Layers:
        return "pizza_boxes";
    case EffectClass::FacePixelator:
        return "pixelator";
    default:
        return "paper_collage";
    }
}

EffectClass InnerOf(EffectClass which)
{
    switch (which) {
    case EffectClass::WrapAirbrush:
        return EffectClass::Airbrush;
    case EffectClass::WrapDetailEnhancer:
        return EffectClass::UnsharpMask;
    case EffectClass::WrapWaterColor:
        return EffectClass::WaterColor;
    case EffectClass::WrapColorMelt:
        return EffectClass::Colormelt;
    case EffectClass::WrapPaperCollage:
        return EffectClass::EmbossedPaperBlend;
    case EffectClass::WrapSmear:
        return EffectClass::Smear;
    case EffectClass::WrapActiveCamera:
        return EffectClass::Activecamera;
    case EffectClass::WrapConfetti:
        return EffectClass::BlowingLeaves;
    case EffectClass::WrapPizzaBoxes:
        return EffectClass::Layers;
    default:
        return which;
    }
}

Clock ClockOf(EffectClass which)
{
    switch (InnerOf(which)) {
    case EffectClass::Colormelt:
    case EffectClass::EmbossedPaperBlend:
    case EffectClass::Smear:
    case EffectClass::BlowingLeaves:
    case EffectClass::Layers:
        return Clock::Progress;
    case EffectClass::Activecamera:
        return Clock::Time;
    default:
        return Clock::None;
    }
}

} // namespace kelmora

#include "tests/effects/new_effect.h"

#include "library/wrappers/air_brush.h"
#include "library/wrappers/detail_enhancer.h"

namespace kelmora {

HeldEffect NewEffect(EffectClass which)
{
    switch (which) {
    case EffectClass::Airbrush:
        return HeldEffect(new CAirbrush);
    case EffectClass::UnsharpMask:
        return HeldEffect(new CUnsharpMask);
    case EffectClass::WrapAirbrush:
        return HeldEffect(new CWrapAirbrush);
    case EffectClass::WrapDetailEnhancer:
        return HeldEffect(new CWrapDetailEnhancer);
    }
    return nullptr;
}

} // namespace kelmora

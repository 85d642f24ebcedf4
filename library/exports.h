#pragma once

#include "contract/effect_library.h"

// What the library file exports; see GetEffectsLibraryFunction and CanUnloadDLLNowFunction.
extern "C" {

kelmora::IEffectLibrary* KELMORA_CALL GetEffectsLibrary();
std::int32_t KELMORA_CALL CanUnloadDLLNow();
}

#include "library/exports.h"

#include "library/library_object.h"

#include <new>

kelmora::IEffectLibrary* KELMORA_CALL GetEffectsLibrary()
{
    return new (std::nothrow) kelmora::CKelmora;
}

std::int32_t KELMORA_CALL CanUnloadDLLNow()
{
    return kelmora::DLLDependentObject::LiveObjectCount() == 0 ? 1 : 0;
}

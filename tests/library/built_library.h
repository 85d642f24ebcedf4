#pragma once

#include <filesystem>
#include <string>
#include <utility>

#include "contract/kelmora.h"
#include "platform/module.h"
#include "tests/platform/test_folder.h"

namespace kelmora {

/// The built library file, loaded from a copy in a folder, as a host loads it.
class BuiltLibrary {
public:
    explicit BuiltLibrary(const std::filesystem::path& folder)
        : m_path(TestFolder::Copy(KELMORA_BUILT_LIBRARY, folder)),
          m_module(platform::Module::LoadFile(Utf8(m_path).c_str(), &m_error)),
          m_getEffectsLibrary(m_module.FunctionNamed<GetEffectsLibraryFunction>("GetEffectsLibrary")),
          m_canUnload(m_module.FunctionNamed<CanUnloadDLLNowFunction>("CanUnloadDLLNow"))
    {
    }

    /// Whether the file was loaded and has both exports.
    bool IsGood() const { return m_getEffectsLibrary && m_canUnload; }

    const std::string& Error() const { return m_error; }
    const std::filesystem::path& Path() const { return m_path; }

    IEffectLibrary* GetEffectsLibrary() const { return m_getEffectsLibrary(); }
    std::int32_t CanUnloadDLLNow() const { return m_canUnload(); }

    /// Frees the file.
    void Unload() { m_module.Unload(); }

private:
    std::filesystem::path m_path;
    std::string m_error;
    platform::Module m_module;
    GetEffectsLibraryFunction m_getEffectsLibrary;
    CanUnloadDLLNowFunction m_canUnload;
};

/// The interface `Interface` of `object`, counted; null when it does not have it.
template <class Interface>
Interface* Ask(IUnknown* object)
{
    void* found = nullptr;
    object->QueryInterface(&Interface::id, &found);
    return static_cast<Interface*>(found);
}

} // namespace kelmora

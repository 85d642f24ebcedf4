#include "host/library_file.h"

#include "host/failure.h"
#include "host/names.h"
#include "host/path_text.h"
#include "platform/process.h"

namespace kelmora::host {
namespace {

platform::Module Load(const std::string& path)
{
    std::error_code ignored;
    if (!std::filesystem::exists(PathOf(path), ignored))
        throw Failure(ExitCode::Failed, "there is no library file " + path);
    std::string reason;
    platform::Module module = platform::Module::LoadFile(path.c_str(), &reason);
    if (!module) {
        if (reason.starts_with(path + ": ")) // some systems begin with it themselves
            reason.erase(0, path.size() + 2);
        throw Failure(ExitCode::Failed, "cannot load the library file " + path + ": " + reason);
    }
    return module;
}

template <class Function>
Function Export(const platform::Module& module, const std::string& path, const char* name)
{
    const auto function = module.FunctionNamed<Function>(name);
    if (function == nullptr)
        throw Failure(ExitCode::Failed, path + " is no effect library: it does not export " + name);
    return function;
}

} // namespace

LibraryFile::LibraryFile(const std::string& path)
    : m_module(Load(path)),
      m_getLibrary(Export<GetEffectsLibraryFunction>(m_module, path, "GetEffectsLibrary")),
      m_canUnload(Export<CanUnloadDLLNowFunction>(m_module, path, "CanUnloadDLLNow"))
{
}

Held<IEffectLibrary> LibraryFile::MakeLibrary() const
{
    Held<IEffectLibrary> library(m_getLibrary());
    if (library == nullptr)
        throw Failure(ExitCode::Failed, "the library file gives no library object");
    return library;
}

std::string DefaultLibraryPath()
{
    return TextOf(PathOf(platform::ProgramPath()).parent_path() / KELMORA_LIBRARY_FILE);
}

std::vector<std::int32_t> EffectNumbers(IEffectLibrary& library)
{
    std::vector<std::int32_t> numbers;
    for (std::int32_t number = kFirstEffect; number <= kLastEffect; ++number) {
        if (const Held<IVideoEffect> effect{library.CreateEffect(number)})
            numbers.push_back(number);
    }
    return numbers;
}

std::vector<EffectFace> ReadFaces(IEffectLibrary& library)
{
    std::vector<EffectFace> faces;
    for (std::int32_t number = kFirstEffect; number <= kLastEffect; ++number) {
        if (const Held<IVideoEffect> effect{library.CreateEffect(number)})
            faces.push_back(ReadFace(number, *effect));
    }
    return faces;
}

std::int32_t FindEffect(IEffectLibrary& library, const std::string& asked)
{
    std::vector<std::string> names;
    std::vector<std::int32_t> numbers;
    for (const std::int32_t number : EffectNumbers(library)) {
        if (asked == std::to_string(number))
            return number;
        const char* const name = MakeEffect(library, number)->GetName();
        names.emplace_back(name != nullptr ? name : "");
        numbers.push_back(number);
    }
    if (const auto found = FindName(names, asked))
        return numbers[*found];
    throw Failure(ExitCode::Unknown,
                  UnknownName("effect", asked, names, "\"kelmora list\" shows all effects"));
}

Held<IVideoEffect> MakeEffect(IEffectLibrary& library, std::int32_t number)
{
    Held<IVideoEffect> effect(library.CreateEffect(number));
    if (effect == nullptr)
        throw Failure(ExitCode::Failed, "the library makes no effect " + std::to_string(number));
    return effect;
}

} // namespace kelmora::host

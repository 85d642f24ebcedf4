#include "library/path_library.h"

#include <algorithm>
#include <string_view>

namespace kelmora {

bool PathLibrary::BesideModule(const char16_t* name, char16_t (&path)[kBesideCapacity]) const
{
    char16_t modulePath[platform::kPathCapacity];
    platform::OwnModulePath(modulePath);
    return Beside(modulePath, name, path);
}

bool PathLibrary::Beside(const char16_t* modulePath, const char16_t* name,
                         char16_t (&path)[kBesideCapacity]) const
{
    path[0] = u'\0';
    const std::u16string_view module(modulePath);
    const std::u16string_view file(name);
    const std::size_t separator = module.rfind(platform::kFolderSeparator);
    if (separator == module.npos)
        return false;
    const std::u16string_view folder = module.substr(0, separator + 1);
    if (folder.size() >= kBesideCapacity || file.size() >= kBesideCapacity - folder.size())
        return false;
    char16_t* end = std::copy(folder.begin(), folder.end(), path);
    end = std::copy(file.begin(), file.end(), end);
    *end = u'\0';
    return true;
}

} // namespace kelmora

#include "host/commands/list.h"

#include <algorithm>
#include <iomanip>

#include "host/json_report.h"
#include "host/library_file.h"

namespace kelmora::host {

void RunList(const ListArguments& arguments, std::ostream& out)
{
    const LibraryFile file(arguments.library);
    const Held<IEffectLibrary> library = file.MakeLibrary();
    const std::vector<EffectFace> effects = ReadFaces(*library);
    if (arguments.json) {
        const char* const name = library->GetName();
        out << ListJson(name != nullptr ? name : "", effects);
        return;
    }
    std::size_t slugWidth = 0;
    std::size_t nameWidth = 0;
    for (const EffectFace& effect : effects) {
        slugWidth = std::max(slugWidth, effect.slug.size());
        nameWidth = std::max(nameWidth, effect.name.size());
    }
    for (const EffectFace& effect : effects) {
        out << effect.number << "  " << std::left << std::setw(static_cast<int>(slugWidth)) << effect.slug
            << "  " << std::setw(static_cast<int>(nameWidth)) << effect.name << std::right << "  "
            << (effect.pictures == 2 ? "two pictures" : "one picture ") << std::setw(4) << effect.knobs.size()
            << (effect.knobs.size() == 1 ? " knob " : " knobs") << std::setw(4) << effect.presets.size()
            << (effect.presets.size() == 1 ? " preset" : " presets") << '\n';
    }
}

} // namespace kelmora::host

// A language companion for the tests. It does what a CompanionRecord says and notes what it is asked.
//
// COMPANION_WITHOUT_PARSER  leaves out the export GetLangXMLParser
// COMPANION_WITHOUT_UNLOAD  leaves out the export CanUnloadDLLNow

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "library/language/language_companion.h"
#include "tests/library/companion/companion_record.h"

#ifdef _WIN32
#define COMPANION_EXPORT __declspec(dllexport)
#else
#define COMPANION_EXPORT __attribute__((visibility("default")))
#endif

namespace kelmora {
namespace {

// For a program that does not watch.
CompanionRecord g_unwatched;

CompanionRecord& Record()
{
    const char* const address = std::getenv(kCompanionRecordVariable);
    return address ? *reinterpret_cast<CompanionRecord*>(std::strtoull(address, nullptr, 16)) : g_unwatched;
}

void Note(char event)
{
    CompanionRecord& record = Record();
    if (record.eventCount < CompanionRecord::kMostEvents)
        record.events[record.eventCount++] = event;
}

__attribute__((constructor)) void Attached()
{
    Note('A');
}

__attribute__((destructor)) void Detached()
{
    Note('D');
}

class Parser final : public ILangXMLParser {
public:
    std::int32_t KELMORA_CALL QueryInterface(const InterfaceId* /*id*/, void** out) override
    {
        *out = nullptr;
        return E_NOINTERFACE;
    }

    std::uint32_t KELMORA_CALL AddRef() override { return 2; }

    std::uint32_t KELMORA_CALL Release() override
    {
        Note('R');
        delete this;
        return 0;
    }

    void KELMORA_CALL ParserReserved3() override {}

    bool KELMORA_CALL Load(const char16_t* path) override
    {
        Note('L');
        CompanionRecord& record = Record();
        const std::size_t load = std::min<std::size_t>(m_loads++, 1);
        for (std::size_t i = 0; i + 1 < CompanionRecord::kPathUnits && path[i]; ++i)
            record.loadedPaths[load][i] = path[i];
        ++record.loadCount;
        return record.loadResults[load];
    }

    std::uint32_t KELMORA_CALL GetTextEx(std::uintptr_t a, std::uintptr_t b, std::uintptr_t c,
                                         std::uintptr_t d, std::uintptr_t e, std::uintptr_t f,
                                         std::uintptr_t g) override
    {
        Note('X');
        const std::uintptr_t words[7] = {a, b, c, d, e, f, g};
        std::copy(words, words + 7, Record().words);
        return kCompanionTextExResult;
    }

    std::uint32_t KELMORA_CALL GetText(const char* languageCode, std::uint32_t section, const char* key,
                                       char16_t* buffer, std::uint32_t capacity) override
    {
        Note('T');
        CompanionRecord& record = Record();
        std::strncpy(record.languageCode, languageCode, 3);
        record.section = section;
        record.key = key;
        record.buffer = buffer;
        record.capacity = capacity;
        std::fill_n(buffer, std::min(record.textLength, capacity), u'k');
        return record.textLength;
    }

private:
    std::size_t m_loads = 0;
};

} // namespace
} // namespace kelmora

extern "C" {

#ifndef COMPANION_WITHOUT_PARSER
COMPANION_EXPORT kelmora::ILangXMLParser* GetLangXMLParser();

kelmora::ILangXMLParser* GetLangXMLParser()
{
    kelmora::Note('G');
    return kelmora::Record().giveParser ? new kelmora::Parser : nullptr;
}
#endif

#ifndef COMPANION_WITHOUT_UNLOAD
COMPANION_EXPORT std::int32_t CanUnloadDLLNow();

std::int32_t CanUnloadDLLNow()
{
    kelmora::Note('U');
    return kelmora::Record().canUnload;
}
#endif
}

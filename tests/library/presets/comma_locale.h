#pragma once

#include <clocale>
#include <cstdlib>
#include <string>

#include "tests/platform/test_folder.h"

namespace kelmora {

/// Numbers of the program's locale have a decimal comma, as a host's may, until the object goes.
class CommaLocale {
public:
    CommaLocale() : m_before(std::setlocale(LC_NUMERIC, nullptr))
    {
#ifdef _WIN32
        std::setlocale(LC_NUMERIC, "German_Germany.1252");
#else
        // Made here, since few machines have one. That it consists of numbers alone is a warning to the maker.
        const std::filesystem::path source = m_folder.Path() / "source", made = m_folder.Path() / "comma";
        TestFolder::Write(
            source, "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3\nEND LC_NUMERIC\n");
        const std::string make =
            "localedef -c -i '" + source.string() + "' '" + made.string() + "' 2>/dev/null";
        if (std::system(make.c_str()) < 0)
            return;
        setenv("LOCPATH", m_folder.Path().c_str(), 1);
        std::setlocale(LC_NUMERIC, "comma");
#endif
    }

    ~CommaLocale()
    {
        std::setlocale(LC_NUMERIC, m_before.c_str());
#ifndef _WIN32
        unsetenv("LOCPATH");
#endif
    }

    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

    /// False where there is none to be had.
    static bool IsHere()
    {
        return std::localeconv()->decimal_point[0] == ',';
    }

private:
    std::string m_before;
    TestFolder m_folder;
};

} // namespace kelmora

#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/platform/file_content.h"
#include "tests/platform/test_folder.h"

namespace kelmora {

/// An environment variable, set for a while; null: not set.
class Variable {
public:
    Variable(const char* name, const char* value) : m_name(name)
    {
        if (const char* const before = std::getenv(name))
            m_before = before;
        Set(value);
    }
    ~Variable() { Set(m_before ? m_before->c_str() : nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void Set(const char* value) const
    {
        if (value)
            ::setenv(m_name, value, 1);
        else
            ::unsetenv(m_name);
    }

    const char* m_name;
    std::optional<std::string> m_before;
};

/// A desktop whose programs are scripts of the test, and a screen that nobody looks at.
class FakeDesktop {
public:
    /// Installs `name`, a script that notes its arguments, one a line, and then does `what`.
    void Install(const std::string& name, const std::string& what) const
    {
        const std::filesystem::path file = m_folder.Path() / name;
        TestFolder::Write(file,
                          "#!/bin/sh\nprintf '%s\\n' " + name + " \"$@\" -- >>" + Asked().string() + "\n"
                              + what + "\n");
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }

    /// What the scripts were asked, since the last call of this.
    std::string TakeAsked() const
    {
        const std::string asked = FileContent(Asked());
        std::filesystem::remove(Asked());
        return asked;
    }

    const std::filesystem::path& Path() const { return m_folder.Path(); }

private:
    std::filesystem::path Asked() const { return m_folder.Path() / "asked"; }

    TestFolder m_folder;
    Variable m_path{"PATH", m_folder.Path().c_str()};
    Variable m_display{"DISPLAY", ":99"};
    Variable m_wayland{"WAYLAND_DISPLAY", nullptr};
};

} // namespace kelmora

#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

namespace kelmora {

/// An empty folder for the running test alone. The folder that was current comes back at the end.
class TestFolder {
public:
    TestFolder() : m_before(std::filesystem::current_path())
    {
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        m_path = std::filesystem::absolute(KELMORA_TEST_FOLDER)
            / (std::string(test->test_suite_name()) + "-" + test->name());
        m_path.make_preferred();
        Remove();
        std::filesystem::create_directories(m_path);
    }

    ~TestFolder()
    {
        std::filesystem::current_path(m_before);
        Remove();
    }

    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

    /// The folder `name` in it, made where it is missing.
    std::filesystem::path Folder(const std::filesystem::path& name) const
    {
        std::filesystem::create_directories(m_path / name);
        return m_path / name;
    }

    /// A copy of `file` in `folder` under its own name; gives the copy's path.
    static std::filesystem::path Copy(const std::filesystem::path& file, const std::filesystem::path& folder)
    {
        return Copy(file, folder, file.filename());
    }

    static std::filesystem::path Copy(const std::filesystem::path& file, const std::filesystem::path& folder,
                                      const std::filesystem::path& name)
    {
        std::filesystem::copy_file(file, folder / name);
        return folder / name;
    }

    static void Write(const std::filesystem::path& file, const std::string& content)
    {
        std::ofstream(file, std::ios::binary) << content;
    }

    /// The path in the form in which Windows takes it at any length.
    std::filesystem::path LongPath() const
    {
#ifdef _WIN32
        return LR"(\\?\)" + m_path.native();
#else
        return m_path;
#endif
    }

private:
    void Remove() const
    {
        std::error_code ignored; // a module that stays loaded cannot be removed everywhere
        std::filesystem::remove_all(LongPath(), ignored);
    }

    std::filesystem::path m_before;
    std::filesystem::path m_path;
};

/// A path as UTF-8, as the host passes it.
inline std::string Utf8(const std::filesystem::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

} // namespace kelmora

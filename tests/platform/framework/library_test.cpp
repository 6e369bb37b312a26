#include "platform/framework/library.hpp"

#include <QString>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

using namespace qiro_plugin::utility;

namespace {

using twice_function = int (*)(int);

// Each case loads its own copy of the sample library, so what one case leaves loaded
// cannot hide what another does.
class library : public ::testing::Test {
protected:
    std::filesystem::path m_folder;

    void SetUp() override {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "qiro-library-XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        m_folder = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    std::filesystem::path copy_sample(const std::string& a_file_name) {
        const std::filesystem::path target = m_folder / a_file_name;
        std::filesystem::copy_file(QIRO_SAMPLE_LIBRARY, target);
        return target;
    }

    static bool is_loaded(const std::filesystem::path& a_path) {
        void* handle = dlopen(a_path.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (handle == nullptr) {
            return false;
        }
        dlclose(handle);
        return true;
    }
};

qiro_plugin::utf16_string utf16(const std::filesystem::path& a_path) {
    return QString::fromStdString(a_path.string()).toStdU16String();
}

} // namespace

TEST_F(library, loads_a_library_and_finds_its_function) {
    const auto path = copy_sample("sample.so");
    library_handle handle = load_library(utf16(path));
    ASSERT_NE(handle, nullptr);
    auto twice =
        reinterpret_cast<twice_function>(get_function_address(handle, "qiro_sample_twice"));
    ASSERT_NE(twice, nullptr);
    EXPECT_EQ(twice(21), 42);
    EXPECT_EQ(get_function_address(handle, "qiro_sample_missing"), nullptr);
    EXPECT_EQ(get_function_address(handle, nullptr), nullptr);
    EXPECT_EQ(free_library(handle), 1);
}

TEST_F(library, paths_that_name_no_library_give_null) {
    EXPECT_EQ(load_library(u""), nullptr);
    EXPECT_EQ(load_library(utf16(m_folder / "absent.so")), nullptr);
    EXPECT_EQ(load_library(utf16(m_folder)), nullptr);
    // A bare name is a file in the working folder, never a search of the system's libraries.
    EXPECT_EQ(load_library(u"libc.so.6"), nullptr);
    copy_sample("sample.so");
    EXPECT_EQ(load_library(utf16(m_folder) + qiro_plugin::utf16_string(u"/sample.so\0x", 12)),
              nullptr);
    const std::filesystem::path text = m_folder / "text.so";
    std::ofstream(text) << "not a library\n";
    EXPECT_EQ(load_library(utf16(text)), nullptr);
}

TEST_F(library, relative_and_non_ascii_paths_are_files) {
    copy_sample("libsample.so");
    const auto previous = std::filesystem::current_path();
    std::filesystem::current_path(m_folder);
    library_handle relative = load_library(u"libsample.so");
    std::filesystem::current_path(previous);
    ASSERT_NE(relative, nullptr);
    EXPECT_NE(get_function_address(relative, "qiro_sample_twice"), nullptr);

    const auto japanese = copy_sample("\xE3\x83\xA9\xE3\x82\xA4\xE3\x83\x96.so");
    library_handle handle = load_library(utf16(m_folder) + u"/\u30E9\u30A4\u30D6.so");
    ASSERT_NE(handle, nullptr);
    EXPECT_TRUE(is_loaded(japanese));
}

TEST_F(library, free_library_never_gives_back_the_last_load) {
    const auto path = copy_sample("sample.so");
    library_handle first = load_library(utf16(path));
    library_handle second = load_library(utf16(path));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);

    EXPECT_EQ(free_library(first), 1);
    EXPECT_EQ(free_library(first), 1);
    EXPECT_EQ(free_library(first), 1);
    ASSERT_TRUE(is_loaded(path));
    EXPECT_NE(get_function_address(first, "qiro_sample_twice"), nullptr);

    // Only the load that free_library kept is left: giving it back by hand unloads the
    // library, which shows the releases above did reach the loader.
    dlclose(first);
    EXPECT_FALSE(is_loaded(path));
}

TEST(library_death, null_library_is_a_failed_assertion) {
    EXPECT_DEATH(get_function_address(nullptr, "qiro_sample_twice"),
                 "library\\.cpp:[0-9]+: failed assertion `a_instance_handle'\n");
    EXPECT_DEATH(free_library(nullptr),
                 "library\\.cpp:[0-9]+: failed assertion `a_instance_handle'\n");
}

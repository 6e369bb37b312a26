#include "platform/framework/library.hpp"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

using namespace qiro_plugin::utility;
using qiro_plugin::utf16_string;
namespace fs = std::filesystem;

namespace {

bool is_loaded(const fs::path& a_path) {
    void* handle = dlopen(a_path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    return handle != nullptr && dlclose(handle) == 0;
}

} // namespace

TEST(library, loads_finds_its_functions_and_never_gives_back_the_last_load) {
    // A null library is a failed assertion.
    EXPECT_DEATH(get_function_address(nullptr, "qiro_sample_twice"),
                 "library\\.cpp:[0-9]+: failed assertion `a_instance_handle'\n");
    EXPECT_DEATH(free_library(nullptr),
                 "library\\.cpp:[0-9]+: failed assertion `a_instance_handle'\n");
    // A copy in the private folder test_main removes at the end, so that no other load of the
    // library can hide what the case does. Its name is not ASCII, and the first load is
    // relative to the working folder.
    const fs::path folder = std::getenv("QIRO_FRAMEWORK_TEST_FOLDER");
    const fs::path path = folder / "\xE3\x83\xA9\xE3\x82\xA4\xE3\x83\x96.so";
    fs::copy_file(QIRO_SAMPLE_LIBRARY, path);
    const auto previous = fs::current_path();
    fs::current_path(folder);
    library_handle first = load_library(u"\u30E9\u30A4\u30D6.so");
    fs::current_path(previous);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(load_library(path.u16string()), first);
    // A bare name is a file in the working folder, never a search of the system's libraries,
    // and a path is never cut short at a null character.
    for (const utf16_string& wrong :
         {utf16_string(), (folder / "absent.so").u16string(), utf16_string(u"libc.so.6"),
          path.u16string() + utf16_string(u"\0x", 2)}) {
        EXPECT_EQ(load_library(wrong), nullptr) << fs::path(wrong);
    }

    auto twice = reinterpret_cast<int (*)(int)>(get_function_address(first, "qiro_sample_twice"));
    ASSERT_NE(twice, nullptr);
    EXPECT_EQ(twice(21), 42);
    EXPECT_EQ(get_function_address(first, "qiro_sample_missing"), nullptr);
    EXPECT_EQ(get_function_address(first, nullptr), nullptr);

    for (int release = 0; release < 3; ++release) {
        EXPECT_EQ(free_library(first), 1);
    }
    ASSERT_TRUE(is_loaded(path));
    EXPECT_NE(get_function_address(first, "qiro_sample_twice"), nullptr);
    // Only the load that free_library kept is left: giving it back by hand unloads the
    // library, which shows the releases above did reach the loader.
    dlclose(first);
    EXPECT_FALSE(is_loaded(path));
}

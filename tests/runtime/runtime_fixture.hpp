#pragma once
// A fresh home folder per test, /usr/bin first on PATH (set, not restored: every test sets its
// own), and helpers to make script instances and inspect the data folder.

#include "runtime/plugin_instance_script.hpp"
#include "support/scratch_folder.hpp"
#include "text/utf16_string.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qiro_test {

struct language_row {
    const char* command_name;
    const char* extension;
    const char16_t* module_type;
    const std::string& (*script)();
};

// Perl, Ruby and Python, in that order.
extern const language_row LANGUAGES[3];
inline const language_row& python_row() {
    return LANGUAGES[2];
}

class runtime_fixture : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // ~/Library/Preferences/QIRO Lumen/ of the temporary home, as the runtime spells it.
    std::string data_folder() const;
    // Names in the data folder that look like bridge files.
    std::vector<std::string> bridge_files() const;
    // Copies tests/data/runtime/a_fixture_name into a_folder.
    void copy_fixture(const std::string& a_fixture_name, const std::filesystem::path& a_folder,
                      const std::string& a_file_name = {}) const;
    // An instance of a_folder/a_file_name; an empty a_script_code takes the row's bridge.
    std::unique_ptr<qiro_plugin::qiro_plugin_instance_script>
    make_instance(const std::filesystem::path& a_folder, const std::string& a_file_name,
                  const language_row& a_row = python_row(),
                  const std::string& a_script_code = {}) const;

    std::optional<test_support::scratch_folder> m_scratch;
    std::filesystem::path m_root;      // m_scratch's folder, removed after the test
    std::filesystem::path m_home;      // HOME during the test
    std::filesystem::path m_plugins;   // a folder for plug-in files
    std::filesystem::path m_echo_file; // where the echo plug-ins write what they saw
};

using test_support::read_file;
using test_support::write_file;

} // namespace qiro_test

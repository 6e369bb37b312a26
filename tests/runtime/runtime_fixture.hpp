#pragma once
// A fresh home folder per test, /usr/bin first on PATH (set, not restored: every test sets its
// own), and helpers to make script instances and inspect the data folder.

#include "runtime/message_script.hpp"
#include "runtime/plugin_instance_script.hpp"
#include "support/scratch_folder.hpp"
#include "text/utf16_string.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
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

class runtime_fixture : public ::testing::Test {
protected:
    void SetUp() override;

    // ~/Library/Preferences/QIRO Lumen/ of the temporary home, as the runtime spells it.
    std::string data_folder() const;
    // Names in the data folder that look like bridge files.
    std::vector<std::string> bridge_files() const;
    // Copies tests/data/runtime/a_fixture_name into a_folder.
    void copy_fixture(const std::string& a_fixture_name,
                      const std::filesystem::path& a_folder) const;
    // An instance of a_folder/a_file_name; an empty a_script_code takes the row's bridge.
    std::unique_ptr<qiro_plugin::qiro_plugin_instance_script>
    make_instance(const std::filesystem::path& a_folder, const std::string& a_file_name,
                  const language_row& a_row = LANGUAGES[2],
                  const std::string& a_script_code = {}) const;
    // make_instance, throwing unless the instance is loaded and through its syntax check.
    std::unique_ptr<qiro_plugin::qiro_plugin_instance_script>
    checked_instance(const std::filesystem::path& a_folder, const std::string& a_file_name,
                     const language_row& a_row = LANGUAGES[2]) const;
    // Runs the processing entry on a_request with a_written_form as its written form.
    static std::shared_ptr<qiro_plugin::message_script>
    process(qiro_plugin::qiro_plugin_instance_script& a_instance,
            const qiro_plugin::utf16_string& a_written_form = {},
            qiro_plugin::qiro_plugin_request a_request = {});

    test_support::scratch_folder m_scratch{"qiro-runtime"};
    const std::filesystem::path m_root = m_scratch.path();         // removed after the test
    const std::filesystem::path m_home = m_root / "home";          // HOME during the test
    const std::filesystem::path m_plugins = m_root / "plugins";    // a folder for plug-in files
    const std::filesystem::path m_echo_file = m_root / "echo.txt"; // what the echo plug-ins saw
};

using test_support::read_file;
using test_support::write_file;

} // namespace qiro_test

#include "runtime/runtime_fixture.hpp"

#include "bridges/bridge_scripts.hpp"
#include "text/string_encode.hpp"

#include <cstdlib>
#include <regex>
#include <stdexcept>

namespace fs = std::filesystem;

namespace qiro_test {

const language_row LANGUAGES[3] = {
    {"perl", ".pl", u"Perl", &qiro_plugin::bridge::perl_script},
    {"ruby", ".rb", u"Ruby", &qiro_plugin::bridge::ruby_script},
    {"python", ".py", u"Python", &qiro_plugin::bridge::python_script},
};

void runtime_fixture::SetUp() {
    fs::create_directories(m_home);
    fs::create_directories(m_plugins);
    const char* path = std::getenv("PATH");
    const std::pair<const char*, std::string> environment[] = {
        {"HOME", m_home.string()},
        {"QIRO_MACHINE_PREFERENCES_DIR", (m_root / "machine").string()},
        {"PATH", std::string("/usr/bin:/bin") + (path != nullptr ? std::string(":") + path : "")},
        {"QIRO_TEST_ECHO_FILE", m_echo_file.string()},
    };
    for (const auto& [name, value] : environment) {
        setenv(name, value.c_str(), 1);
    }
}

std::string runtime_fixture::data_folder() const {
    return (m_home / "Library" / "Preferences" / "QIRO Lumen").string() + "/";
}

std::vector<std::string> runtime_fixture::bridge_files() const {
    static const std::regex bridge_name("[0-9A-F]{40}\\.(py|rb|pl)");
    std::vector<std::string> names;
    for (const auto& name : test_support::names_in(data_folder())) {
        if (std::regex_match(name, bridge_name)) {
            names.push_back(name);
        }
    }
    return names;
}

void runtime_fixture::copy_fixture(const std::string& a_fixture_name,
                                   const fs::path& a_folder) const {
    fs::create_directories(a_folder);
    fs::copy_file(fs::path(QIRO_TEST_DATA_DIR) / "runtime" / a_fixture_name,
                  a_folder / a_fixture_name);
}

std::unique_ptr<qiro_plugin::qiro_plugin_instance_script>
runtime_fixture::make_instance(const fs::path& a_folder, const std::string& a_file_name,
                               const language_row& a_row, const std::string& a_script_code) const {
    using qiro_plugin::string_encode::MultiByteUTF8ToWideChar;
    return std::make_unique<qiro_plugin::qiro_plugin_instance_script>(
        MultiByteUTF8ToWideChar((a_folder.string() + "/").c_str()),
        MultiByteUTF8ToWideChar(a_file_name.c_str()), a_row.command_name, a_row.extension,
        a_row.module_type, a_script_code.empty() ? a_row.script() : a_script_code);
}

std::unique_ptr<qiro_plugin::qiro_plugin_instance_script>
runtime_fixture::checked_instance(const fs::path& a_folder, const std::string& a_file_name,
                                  const language_row& a_row) const {
    auto instance = make_instance(a_folder, a_file_name, a_row);
    // Thrown, not expected: running an unloaded instance would end the test program.
    if (!instance->is_load() || !instance->syntax_check()) {
        throw std::runtime_error("not loaded or failed its syntax check: " +
                                 instance->get_last_std_err_output_string());
    }
    return instance;
}

std::shared_ptr<qiro_plugin::message_script>
runtime_fixture::process(qiro_plugin::qiro_plugin_instance_script& a_instance,
                         const qiro_plugin::utf16_string& a_written_form,
                         qiro_plugin::qiro_plugin_request a_request) {
    qiro_plugin::set_record_text(a_request.composition_string, a_request.composition_string_length,
                                 a_written_form);
    const auto message = std::dynamic_pointer_cast<qiro_plugin::message_script>(
        a_instance.alloc_qiro_plugin_message(nullptr, 0));
    EXPECT_TRUE(a_instance.run_processing(message, a_request, {}));
    return message;
}

} // namespace qiro_test

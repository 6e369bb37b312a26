#pragma once
// Runs a decoded bridge the way the host does: a shell command line in a scratch data folder.

#include "bridges/bridge_scripts.hpp"
#include "bridges/protocol.hpp"
#include "support/scratch_folder.hpp"
#include "text/url_xml_escape.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace qiro_plugin::test {

struct language {
    const char* name; // also the interpreter's command
    const char* extension;
    const char* upper_extension;
    const std::string& (*stored_script)();
    friend void PrintTo(const language& a_language, std::ostream* a_stream) {
        *a_stream << a_language.name;
    }
};

inline const language k_languages[] = {{"perl", "pl", "PL", &bridge::perl_script},
                                       {"ruby", "rb", "RB", &bridge::ruby_script},
                                       {"python", "py", "PY", &bridge::python_script}};

struct process_output {
    std::string out;
    std::string err;
    int exit_status = -1;
};

using test_support::read_file;
using test_support::write_file;
// The command-line form of a text: its UTF-8 bytes URL-encoded.
using utility::url_encode;

inline std::string repeat(const std::string& a_text, std::size_t a_count) {
    std::string result;
    for (std::size_t i = 0; i < a_count; ++i) {
        result += a_text;
    }
    return result;
}

const std::string k_header = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n\n<itemlist>\n";
const std::string k_footer = "</itemlist>\n";
// What the fixture plug-in prints as it loads and as its run_process starts: every document
// a test compares also shows that a plug-in's own output comes first.
const std::string k_marks = "[loaded][run]\n";

inline std::string item(const std::string& a_title, const std::string& a_fields = "") {
    return "\t<item type=\"script_candidate\">\n\t\t<title>" + a_title + "</title>\n" + a_fields +
           "\t</item>\n";
}

// A scratch data folder holding the decoded bridge; the test's parameter picks the language.
class bridge_test : public ::testing::TestWithParam<language> {
protected:
    bridge_test() {
        std::filesystem::create_directories(m_folder / "home");
        std::filesystem::create_directories(m_plugins);
        write_file(m_folder / m_bridge, utility::url_decode(GetParam().stored_script()));
    }

    bool is(const char* a_name) const { return std::string(GetParam().name) == a_name; }

    // The command-line form of a fixture plug-in of tests/data/bridges, copied (when it exists)
    // into m_plugins under an upper-case extension.
    std::string plugin(const std::string& a_stem) const {
        const auto copy = m_plugins / (a_stem + "." + GetParam().upper_extension);
        const auto source = std::filesystem::path(QIRO_TEST_DATA_DIR) / "bridges" /
                            (a_stem + "." + GetParam().extension);
        if (std::filesystem::exists(source) && !std::filesystem::exists(copy)) {
            std::filesystem::copy_file(source, copy);
        }
        return url_encode(copy.string());
    }

    // The values of a processing run of the fixture plug-in on a written form.
    std::vector<std::string> processing(const std::string& a_written) const {
        return {plugin("plugin"), "run_process", url_encode(a_written), "", "", "0", "", ""};
    }

    // Runs one shell command line in the data folder with HOME inside it.
    process_output run_line(const std::string& a_line) const {
        const std::string folder = m_folder.string();
        const int status = std::system(("cd '" + folder + "' && HOME='" + folder + "/home' " +
                                        a_line + " </dev/null >.out 2>.err")
                                           .c_str());
        return {read_file(m_folder / ".out"), read_file(m_folder / ".err"),
                WIFEXITED(status) ? WEXITSTATUS(status) : -1};
    }

    // Runs the bridge with values already in their command-line form, each in the host's quotes.
    process_output run(std::vector<std::string> a_values) const {
        a_values.insert(a_values.begin(), m_bridge);
        std::string line = GetParam().name;
        for (const auto& word : a_values) {
            line += QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_START + word +
                    QIRO_PLUGIN_SCRIPT_COMMAND_LINE_QUOTATION_END;
        }
        return run_line(line);
    }

    test_support::scratch_folder m_scratch{"qiro_bridges"};
    const std::filesystem::path m_folder = m_scratch.path();
    // Blanks, a plus sign and 日本 in the name of the plug-ins' folder.
    const std::filesystem::path m_plugins = m_folder / "plug ins+\xE6\x97\xA5\xE6\x9C\xAC";
    const std::string m_bridge =
        std::string("0123456789abcdef0123456789abcdef01234567.") + GetParam().extension;
};

} // namespace qiro_plugin::test

#pragma once
// Runs a decoded bridge the way the host does: a shell command line in a scratch data folder.

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace qiro_plugin::test {

struct process_output {
    std::string out;
    std::string err;
    int exit_status = -1;
};

// Runs "/bin/sh -c <line>" in a_folder with HOME set to a_home; captures both streams.
process_output run_shell(const std::string& a_line, const std::filesystem::path& a_folder,
                         const std::filesystem::path& a_home);

struct language {
    const char* name;
    const char* interpreter;
    const char* extension;
    const std::string& (*stored_script)();
};

// Names the language in test output.
void PrintTo(const language& a_language, std::ostream* a_stream);

const language& perl_language();
const language& ruby_language();
const language& python_language();
const std::vector<language>& all_languages();

// A fresh scratch folder with the decoded bridge of one language written into it.
class bridge_folder {
public:
    explicit bridge_folder(const language& a_language);
    ~bridge_folder();
    bridge_folder(const bridge_folder&) = delete;
    bridge_folder& operator=(const bridge_folder&) = delete;

    const std::filesystem::path& path() const { return m_folder; }

    // Runs the bridge with the given values, each already in its command-line form
    // (URL-encoded, or the port's plain digits), wrapped in the host's quotes.
    process_output run(const std::vector<std::string>& a_values) const;

private:
    const language& m_language;
    std::filesystem::path m_folder;
    std::string m_bridge_name;
};

// The command-line form of a text: its UTF-8 bytes URL-encoded.
std::string encoded(const std::string& a_text);

// A fixture plug-in of tests/data/bridges for one language: "<a_stem>.<extension>".
std::filesystem::path fixture(const language& a_language, const std::string& a_stem);

std::string repeat(const std::string& a_text, std::size_t a_count);

} // namespace qiro_plugin::test

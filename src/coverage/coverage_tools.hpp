#pragma once
// Each language's coverage tool: what it needs installed, the helper files that make the
// interpreter measure the plug-in through its environment alone, and where its output lands.

#include "coverage/coverage_record.hpp"

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qiro_plugin::coverage {

struct coverage_tool {
    std::string language;     // the interpreter command: "python", "ruby" or "perl"
    std::string name;         // for messages: "coverage.py"
    std::string package;      // the Debian package that brings it
    std::string check_script; // code for the interpreter's -e/-c: exits 0 when the tool is there
    // Files written into the run's private folder: name and text.
    std::vector<std::pair<std::string, std::string>> helpers;
};

// The tool for the interpreter command; nullptr for any other.
const coverage_tool* tool_for(std::string_view a_language);

// The shell command line that tells whether the tool is there: the same interpreter the
// bridge runs, asked to load it.
std::string check_command(const coverage_tool& a_tool);

// The variables that make one command of the interpreter measure a_plugin (absolute) with the
// helpers of a_folder (absolute, private to the run). a_current gives this process's value of
// a variable (nullptr when unset), which the search paths and option variables keep.
std::vector<std::pair<std::string, std::string>>
coverage_variables(const coverage_tool& a_tool, const std::string& a_folder,
                   const std::string& a_plugin,
                   const std::function<const char*(const char*)>& a_current);

// Where the run leaves what the tool measured, inside a_folder: Python's JSON report, Ruby's
// dump, Perl's database folder.
std::string output_path(const coverage_tool& a_tool, const std::string& a_folder);

// Perl only: the command line that prints the database (run it where the entry ran, since
// Devel::Cover names files relative to that folder); empty for the other languages, whose
// output is read as it is.
std::string collect_command(const coverage_tool& a_tool, const std::string& a_folder);

// The file of a_plugin among what a reader returned (names relative to a_run_folder, where the
// entry ran, are resolved there); the record is empty, its path a_plugin, when none is.
file_coverage plugin_record(std::vector<file_coverage> a_files, const std::string& a_plugin,
                            const std::string& a_run_folder);

// Reads what the tool left for a_plugin: a_output is the file's text (Python, Ruby) or the
// collector's standard output (Perl). Throws std::runtime_error on output of the wrong form.
file_coverage read_tool_output(const coverage_tool& a_tool, std::string_view a_output,
                               const std::string& a_plugin, const std::string& a_run_folder);

// A folder of its own (mode 0700) inside a_parent, removed with everything in it when the
// object goes, however the run ended.
class private_folder {
public:
    // Throws std::runtime_error when it cannot be made.
    explicit private_folder(const std::string& a_parent);
    ~private_folder();
    private_folder(const private_folder&) = delete;
    private_folder& operator=(const private_folder&) = delete;
    const std::string& path() const { return m_path; } // absolute, without a final "/"

private:
    std::string m_path;
};

// Writes the tool's helpers into a_folder; throws std::runtime_error when it cannot.
void write_helpers(const coverage_tool& a_tool, const std::string& a_folder);

} // namespace qiro_plugin::coverage

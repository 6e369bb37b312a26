#include "coverage/coverage_tools.hpp"

#include "coverage/coverage_readers.hpp"
#include "coverage/stored_helpers.hpp"
#include "text/url_xml_escape.hpp"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace qiro_plugin::coverage {

namespace {

namespace fs = std::filesystem;

std::string decoded(const char* a_text, std::size_t a_size) {
    return utility::url_decode(std::string(a_text, a_size));
}

// One word for /bin/sh whatever it holds.
std::string shell_quoted(const std::string& a_text) {
    std::string quoted = "'";
    for (const char character : a_text) {
        quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return quoted + "'";
}

std::string prepended(const std::string& a_folder, const char* a_current) {
    return a_current == nullptr || *a_current == '\0' ? a_folder : a_folder + ":" + a_current;
}

std::string appended(const char* a_current, const std::string& a_option) {
    return a_current == nullptr || *a_current == '\0' ? a_option
                                                      : std::string(a_current) + " " + a_option;
}

std::string canonical_or_same(const std::string& a_path) {
    std::error_code error;
    const auto canonical = fs::weakly_canonical(a_path, error);
    return error ? a_path : canonical.string();
}

} // namespace

const coverage_tool* tool_for(std::string_view a_language) {
    static const std::vector<coverage_tool> tools = {
        {"python",
         "coverage.py",
         "python3-coverage",
         "import coverage",
         {{"sitecustomize.py", decoded(bridge::stored::coverage_start_python,
                                       bridge::stored::coverage_start_python_size)}}},
        {"ruby",
         "Ruby's Coverage module",
         "ruby",
         "require 'coverage'",
         {{"qiro_coverage.rb", decoded(bridge::stored::coverage_start_ruby,
                                       bridge::stored::coverage_start_ruby_size)}}},
        {"perl",
         "Devel::Cover",
         "libdevel-cover-perl",
         "require Devel::Cover::DB",
         {{"Qiro_coverage.pm",
           decoded(bridge::stored::coverage_start_perl, bridge::stored::coverage_start_perl_size)},
          {"coverage_collect.pl", decoded(bridge::stored::coverage_collect_perl,
                                          bridge::stored::coverage_collect_perl_size)}}},
    };
    for (const auto& tool : tools) {
        if (tool.language == a_language) {
            return &tool;
        }
    }
    return nullptr;
}

std::string check_command(const coverage_tool& a_tool) {
    return a_tool.language + (a_tool.language == "python" ? " -c " : " -e ") +
           shell_quoted(a_tool.check_script);
}

std::vector<std::pair<std::string, std::string>>
coverage_variables(const coverage_tool& a_tool, const std::string& a_folder,
                   const std::string& a_plugin,
                   const std::function<const char*(const char*)>& a_current) {
    const std::string output = output_path(a_tool, a_folder);
    if (a_tool.language == "python") {
        return {{"PYTHONPATH", prepended(a_folder, a_current("PYTHONPATH"))},
                {"QIRO_COVERAGE_PLUGIN", a_plugin},
                {"QIRO_COVERAGE_OUTPUT", output}};
    }
    if (a_tool.language == "ruby") {
        return {{"RUBYLIB", prepended(a_folder, a_current("RUBYLIB"))},
                {"RUBYOPT", appended(a_current("RUBYOPT"), "-rqiro_coverage")},
                {"QIRO_COVERAGE_PLUGIN", a_plugin},
                {"QIRO_COVERAGE_OUTPUT", output}};
    }
    return {{"PERL5LIB", prepended(a_folder, a_current("PERL5LIB"))},
            {"PERL5OPT", appended(a_current("PERL5OPT"), "-MQiro_coverage")},
            {"QIRO_COVERAGE_PLUGIN", a_plugin},
            {"QIRO_COVERAGE_DB", output}};
}

std::string output_path(const coverage_tool& a_tool, const std::string& a_folder) {
    return a_folder + (a_tool.language == "python" ? "/coverage.json"
                       : a_tool.language == "ruby" ? "/coverage.txt"
                                                   : "/cover_db");
}

std::string collect_command(const coverage_tool& a_tool, const std::string& a_folder) {
    if (a_tool.language != "perl") {
        return {};
    }
    return "perl " + shell_quoted(a_folder + "/coverage_collect.pl") + " " +
           shell_quoted(output_path(a_tool, a_folder));
}

file_coverage plugin_record(std::vector<file_coverage> a_files, const std::string& a_plugin,
                            const std::string& a_run_folder) {
    const std::string wanted = canonical_or_same(a_plugin);
    for (auto& file : a_files) {
        const std::string path =
            file.path.starts_with('/') ? file.path : (fs::path(a_run_folder) / file.path).string();
        if (canonical_or_same(path) == wanted) {
            file.path = a_plugin;
            return std::move(file);
        }
    }
    file_coverage none;
    none.path = a_plugin;
    return none;
}

file_coverage read_tool_output(const coverage_tool& a_tool, std::string_view a_output,
                               const std::string& a_plugin, const std::string& a_run_folder) {
    if (a_tool.language == "python") {
        return plugin_record(read_coverage_py_json(a_output, a_run_folder), a_plugin, a_run_folder);
    }
    if (a_tool.language == "ruby") {
        return plugin_record(read_ruby_coverage_dump(a_output), a_plugin, a_run_folder);
    }
    return plugin_record(read_devel_cover_dump(a_output), a_plugin, a_run_folder);
}

private_folder::private_folder(const std::string& a_parent) {
    std::string pattern = (fs::path(a_parent) / ".qiro-coverage-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("cannot make a private folder in " + a_parent);
    }
    m_path = pattern;
}

private_folder::~private_folder() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

void write_helpers(const coverage_tool& a_tool, const std::string& a_folder) {
    for (const auto& [name, text] : a_tool.helpers) {
        const fs::path path = fs::path(a_folder) / name;
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        file << text;
        file.close();
        if (!file) {
            throw std::runtime_error("cannot write " + path.string());
        }
    }
}

} // namespace qiro_plugin::coverage

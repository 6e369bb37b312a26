#pragma once
// The cases of one plug-in: the written forms an author keeps and what each run must give.

#include "core/plugin_discovery.hpp"
#include "diagnosis/run_evidence.hpp"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qiro_plugin::cases {

// A case runs one entry of the plug-in.
using case_kind = diagnosis::entry_kind;

// How the expected candidates are compared with the list a run gave.
enum class match_mode {
    exact,   // the same number, in the same order
    prefix,  // the list begins with them
    contains // each appears somewhere in the list
};

// The candidate fields a case may check, as the plug-in names them.
const std::vector<std::string>& candidate_field_names();

// One expected candidate: only the fields named are compared (UTF-8 values).
using candidate_pattern = std::vector<std::pair<std::string, std::string>>;

struct expectation {
    std::optional<std::vector<candidate_pattern>> candidates;
    match_mode match = match_mode::exact;
    std::optional<std::uint64_t> count;
    bool no_errors = true;
    std::vector<std::string> diagnosis;       // codes that must be among the findings
    std::vector<std::string> stderr_contains; // texts the standard-error pane must hold
};

struct test_case {
    std::string name;
    case_kind kind = case_kind::processing;
    std::string written_form; // UTF-8; for a callback, the form the candidates were searched for
    std::string reading;
    std::string candidate; // the committed candidate of a callback
    expectation expect;
    std::size_t index = 0; // its place in the file's "cases" array
};

// Something wrong in a cases file, where it is (1-based; 0 when the place is unknown).
struct file_problem {
    std::size_t line = 0;
    std::size_t column = 0;
    std::string message;
};

struct cases_file {
    std::filesystem::path path;
    debugger::plugin_entry plugin;
    nlohmann::ordered_json document; // the whole file as read, kept for rewriting it
    std::vector<test_case> cases;    // the well-formed cases
    // A problem that spoils the whole file or one case; the cases it names are not run.
    std::vector<file_problem> problems;
};

// "NAME.cases.json" beside "NAME.py": the plug-in's path with its extension replaced, as its
// companion .xml is found.
std::filesystem::path cases_path_for(const std::filesystem::path& a_plugin);

// The plug-in a cases file belongs to: the file of the same stem with the extension .pl, .py or
// .rb that exists (in that order), or nothing.
std::optional<std::filesystem::path> plugin_for_cases(const std::filesystem::path& a_cases);

// Reads and checks a cases file. Never throws: what is wrong lands in problems, with the line
// and column of the offending value.
cases_file read_cases_file(const std::filesystem::path& a_path,
                           const debugger::plugin_entry& a_plugin);

// The same for text already in memory (a_path names it in messages only).
cases_file parse_cases_text(const std::string& a_text, const std::filesystem::path& a_path,
                            const debugger::plugin_entry& a_plugin);

} // namespace qiro_plugin::cases

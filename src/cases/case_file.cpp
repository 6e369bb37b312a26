#include "cases/case_file.hpp"

#include "cases/json_positions.hpp"
#include "core/request_filling.hpp"
#include "text/string_encode.hpp"

#include <fstream>
#include <iterator>
#include <set>
#include <system_error>

namespace qiro_plugin::cases {

namespace {

using json = nlohmann::ordered_json;
namespace fs = std::filesystem;

// A cases file is a hand-written list of examples; anything this large is a mistake.
constexpr std::uintmax_t file_size_limit = 16 * 1024 * 1024;
// The limits the host puts on what it hands a plug-in, in UTF-16 code units.
constexpr std::size_t written_form_limit = debugger::WRITTEN_FORM_MAX_LENGTH;
constexpr std::size_t request_text_limit = QIRO_PLUGIN_REQUEST_STRING_CAPACITY;

// Collects problems with the place of the value they concern.
class problem_list {
public:
    problem_list(const std::string& a_text, std::vector<file_problem>& a_problems)
        : m_text(a_text), m_offsets(value_offsets(a_text)), m_problems(a_problems) {}

    void add(const std::string& a_pointer, const std::string& a_message) {
        file_problem problem{0, 0, a_message};
        if (const auto found = m_offsets.find(a_pointer); found != m_offsets.end()) {
            const auto position = position_of_offset(m_text, found->second);
            problem.line = position.line;
            problem.column = position.column;
        }
        m_problems.push_back(std::move(problem));
    }
    std::size_t size() const { return m_problems.size(); }

private:
    const std::string& m_text;
    std::map<std::string, std::size_t> m_offsets;
    std::vector<file_problem>& m_problems;
};

std::size_t utf16_length(const std::string& a_text) {
    try {
        return string_encode::MultiByteUTF8ToWideChar(a_text.c_str()).size();
    } catch (const std::exception&) {
        return a_text.size();
    }
}

// Reads one case member after another, each check naming the member it is about.
class case_reader {
public:
    case_reader(problem_list& a_problems, const json& a_case, std::string a_pointer)
        : m_problems(a_problems), m_case(a_case), m_pointer(std::move(a_pointer)) {}

    std::optional<test_case> read(std::size_t a_index) {
        const std::size_t before = m_problems.size();
        if (!m_case.is_object()) {
            m_problems.add(m_pointer,
                           "a case must be an object with \"name\" and \"written_form\"");
            return std::nullopt;
        }
        test_case result;
        result.index = a_index;
        check_members(
            m_case, m_pointer,
            {"name", "description", "written_form", "reading", "callback", "preference", "expect"});
        if (const auto name = text(m_case, m_pointer, "name", true, 0)) {
            result.name = *name;
            if (name->empty()) {
                m_problems.add(m_pointer + "/name", "the case name is empty");
            }
        }
        read_entry(result);
        if (m_case.contains("expect")) {
            read_expectation(m_case["expect"], m_pointer + "/expect", result);
        }
        if (m_problems.size() != before) {
            return std::nullopt;
        }
        return result;
    }

private:
    void read_entry(test_case& a_case) {
        const int entries = static_cast<int>(m_case.contains("written_form")) +
                            static_cast<int>(m_case.contains("callback")) +
                            static_cast<int>(m_case.contains("preference"));
        if (entries != 1) {
            m_problems.add(m_pointer, "a case names exactly one of \"written_form\" (a candidate "
                                      "search), \"callback\" or \"preference\"");
            return;
        }
        if (m_case.contains("written_form")) {
            a_case.kind = case_kind::processing;
            a_case.written_form =
                text(m_case, m_pointer, "written_form", true, written_form_limit).value_or("");
            a_case.reading =
                text(m_case, m_pointer, "reading", false, request_text_limit).value_or("");
            return;
        }
        if (m_case.contains("reading")) {
            m_problems.add(m_pointer + "/reading", "\"reading\" belongs to a candidate search");
        }
        if (m_case.contains("preference")) {
            a_case.kind = case_kind::preference;
            if (m_case["preference"] != true) {
                m_problems.add(m_pointer + "/preference", "\"preference\" must be true");
            }
            return;
        }
        a_case.kind = case_kind::callback;
        const auto& callback = m_case["callback"];
        const std::string pointer = m_pointer + "/callback";
        if (!callback.is_object()) {
            m_problems.add(pointer, "\"callback\" must be an object with \"candidate\" and "
                                    "\"written_form\"");
            return;
        }
        check_members(callback, pointer, {"candidate", "written_form"});
        a_case.candidate =
            text(callback, pointer, "candidate", true, request_text_limit).value_or("");
        a_case.written_form =
            text(callback, pointer, "written_form", true, written_form_limit).value_or("");
    }

    void read_expectation(const json& a_expect, const std::string& a_pointer, test_case& a_case) {
        if (!a_expect.is_object()) {
            m_problems.add(a_pointer, "\"expect\" must be an object");
            return;
        }
        check_members(
            a_expect, a_pointer,
            {"candidates", "match", "count", "no_errors", "diagnosis", "stderr_contains"});
        auto& expect = a_case.expect;
        if (a_case.kind != case_kind::processing) {
            for (const char* member : {"candidates", "match", "count"}) {
                if (a_expect.contains(member)) {
                    m_problems.add(a_pointer + "/" + member,
                                   std::string("\"") + member +
                                       "\" applies to a candidate search only");
                }
            }
        }
        if (a_expect.contains("candidates")) {
            expect.candidates = candidates(a_expect["candidates"], a_pointer + "/candidates");
        }
        if (a_expect.contains("match")) {
            const auto& match = a_expect["match"];
            if (match == "exact") {
                expect.match = match_mode::exact;
            } else if (match == "prefix") {
                expect.match = match_mode::prefix;
            } else if (match == "contains") {
                expect.match = match_mode::contains;
            } else {
                m_problems.add(a_pointer + "/match",
                               "\"match\" must be \"exact\", \"prefix\" or \"contains\"");
            }
        }
        if (a_expect.contains("count")) {
            if (a_expect["count"].is_number_unsigned()) {
                expect.count = a_expect["count"].get<std::uint64_t>();
            } else {
                m_problems.add(a_pointer + "/count", "\"count\" must be a whole number, 0 or more");
            }
        }
        if (a_expect.contains("no_errors")) {
            if (a_expect["no_errors"].is_boolean()) {
                expect.no_errors = a_expect["no_errors"].get<bool>();
            } else {
                m_problems.add(a_pointer + "/no_errors", "\"no_errors\" must be true or false");
            }
        }
        expect.diagnosis = text_list(a_expect, a_pointer, "diagnosis");
        expect.stderr_contains = text_list(a_expect, a_pointer, "stderr_contains");
    }

    std::vector<candidate_pattern> candidates(const json& a_list, const std::string& a_pointer) {
        std::vector<candidate_pattern> patterns;
        if (!a_list.is_array()) {
            m_problems.add(a_pointer, "\"candidates\" must be a list of objects");
            return patterns;
        }
        for (std::size_t index = 0; index < a_list.size(); ++index) {
            const std::string pointer = a_pointer + "/" + std::to_string(index);
            const auto& item = a_list[index];
            if (!item.is_object() || item.empty()) {
                m_problems.add(pointer, "an expected candidate must be an object naming at least "
                                        "one field");
                continue;
            }
            check_members(item, pointer, candidate_field_names());
            candidate_pattern pattern;
            for (const auto& [field, value] : item.items()) {
                if (!value.is_string()) {
                    m_problems.add(pointer + "/" + field, "\"" + field + "\" must be a string");
                } else {
                    pattern.emplace_back(field, value.get<std::string>());
                }
            }
            patterns.push_back(std::move(pattern));
        }
        return patterns;
    }

    // A string, or a list of strings.
    std::vector<std::string> text_list(const json& a_object, const std::string& a_pointer,
                                       const char* a_member) {
        std::vector<std::string> texts;
        if (!a_object.contains(a_member)) {
            return texts;
        }
        const auto& value = a_object[a_member];
        const std::string pointer = a_pointer + "/" + a_member;
        if (value.is_string()) {
            texts.push_back(value.get<std::string>());
            return texts;
        }
        if (value.is_array() &&
            std::all_of(value.begin(), value.end(), [](const json& a) { return a.is_string(); })) {
            for (const auto& item : value) {
                texts.push_back(item.get<std::string>());
            }
            return texts;
        }
        m_problems.add(pointer,
                       std::string("\"") + a_member + "\" must be a string or a list of strings");
        return texts;
    }

    // A string member; a_limit > 0 bounds it in UTF-16 code units.
    std::optional<std::string> text(const json& a_object, const std::string& a_pointer,
                                    const char* a_member, bool a_required, std::size_t a_limit) {
        const std::string pointer = a_pointer + "/" + a_member;
        if (!a_object.contains(a_member)) {
            if (a_required) {
                m_problems.add(a_pointer, std::string("\"") + a_member + "\" is missing");
            }
            return std::nullopt;
        }
        const auto& value = a_object[a_member];
        if (!value.is_string()) {
            m_problems.add(pointer, std::string("\"") + a_member + "\" must be a string");
            return std::nullopt;
        }
        const auto result = value.get<std::string>();
        if (a_limit > 0 && a_required && result.empty()) {
            m_problems.add(pointer, std::string("\"") + a_member + "\" is empty");
        } else if (a_limit > 0 && utf16_length(result) > a_limit) {
            m_problems.add(pointer, std::string("\"") + a_member + "\" is longer than " +
                                        std::to_string(a_limit) + " UTF-16 code units");
        }
        return result;
    }

    // A misspelt member would otherwise be silently ignored and its check never made.
    void check_members(const json& a_object, const std::string& a_pointer,
                       const std::vector<std::string>& a_known) {
        for (const auto& [key, value] : a_object.items()) {
            if (std::find(a_known.begin(), a_known.end(), key) == a_known.end()) {
                std::string known;
                for (const auto& name : a_known) {
                    known += (known.empty() ? "" : ", ") + name;
                }
                m_problems.add(a_pointer + "/" + key,
                               "unknown member \"" + key + "\" (expected one of " + known + ")");
            }
        }
    }

    problem_list& m_problems;
    const json& m_case;
    std::string m_pointer;
};

void read_cases(const std::string& a_text, cases_file& a_file) {
    problem_list problems(a_text, a_file.problems);
    const auto& root = a_file.document;
    if (!root.is_object() || !root.contains("cases") || !root["cases"].is_array()) {
        problems.add("", "a cases file is an object whose \"cases\" member lists the cases");
        return;
    }
    for (const auto& [key, value] : root.items()) {
        if (key != "cases" && key != "$schema" && key != "description") {
            problems.add("/" + key, "unknown member \"" + key +
                                        "\" (expected \"cases\", \"$schema\" or \"description\")");
        }
    }
    std::set<std::string> names;
    const auto& list = root["cases"];
    for (std::size_t index = 0; index < list.size(); ++index) {
        const std::string pointer = "/cases/" + std::to_string(index);
        case_reader reader(problems, list[index], pointer);
        if (auto read = reader.read(index)) {
            if (!names.insert(read->name).second) {
                problems.add(pointer + "/name", "a second case named \"" + read->name + "\"");
                continue;
            }
            a_file.cases.push_back(std::move(*read));
        }
    }
}

} // namespace

const std::vector<std::string>& candidate_field_names() {
    static const std::vector<std::string> names{
        "hyoki", "comment", "comment_text", "alternative", "alternative_type", "alternative_alias",
        "info"};
    return names;
}

fs::path cases_path_for(const fs::path& a_plugin) {
    fs::path path = a_plugin;
    return path.replace_extension(".cases.json");
}

std::optional<fs::path> plugin_for_cases(const fs::path& a_cases) {
    const std::string name = a_cases.filename().string();
    const std::string suffix = ".cases.json";
    if (name.size() <= suffix.size() || !name.ends_with(suffix)) {
        return std::nullopt;
    }
    const std::string stem = name.substr(0, name.size() - suffix.size());
    for (const char* extension : {".pl", ".py", ".rb"}) {
        std::error_code error;
        const fs::path candidate = a_cases.parent_path() / (stem + extension);
        if (fs::is_regular_file(candidate, error)) {
            return candidate;
        }
    }
    return std::nullopt;
}

cases_file parse_cases_text(const std::string& a_text, const fs::path& a_path,
                            const debugger::plugin_entry& a_plugin) {
    cases_file file;
    file.path = a_path;
    file.plugin = a_plugin;
    try {
        file.document = json::parse(a_text);
    } catch (const json::parse_error& error) {
        // The parser counts the byte it stopped at from 1.
        const auto position = position_of_offset(a_text, error.byte > 0 ? error.byte - 1 : 0);
        std::string message = error.what();
        // "[json.exception.parse_error.101] parse error at line 1, column 2: syntax error ..."
        if (const auto colon = message.find(": "); colon != std::string::npos) {
            message = message.substr(colon + 2);
        }
        file.problems.push_back({position.line, position.column, "not JSON: " + message});
        return file;
    }
    read_cases(a_text, file);
    return file;
}

cases_file read_cases_file(const fs::path& a_path, const debugger::plugin_entry& a_plugin) {
    std::error_code error;
    const auto size = fs::file_size(a_path, error);
    if (error || size > file_size_limit) {
        cases_file file;
        file.path = a_path;
        file.plugin = a_plugin;
        file.problems.push_back(
            {0, 0,
             error ? "cannot read the file: " + error.message()
                   : "the file is larger than " + std::to_string(file_size_limit) + " bytes"});
        return file;
    }
    std::ifstream stream(a_path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (!stream.good() && !stream.eof()) {
        cases_file file;
        file.path = a_path;
        file.plugin = a_plugin;
        file.problems.push_back({0, 0, "cannot read the file"});
        return file;
    }
    return parse_cases_text(text, a_path, a_plugin);
}

} // namespace qiro_plugin::cases

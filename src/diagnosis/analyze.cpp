#include "diagnosis/analyze.hpp"

#include "diagnosis/companion_check.hpp"
#include "diagnosis/interpreter_lookup.hpp"
#include "diagnosis/stream_analysis.hpp"
#include "diagnosis/traceback_reader.hpp"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <limits>
#include <map>
#include <regex>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace qiro_plugin::diagnosis {

namespace {

// The run result reader refuses longer documents.
constexpr std::uint64_t document_limit = 10'485'760;
constexpr double slow_margin_ms = 100.0;
// Bounds of cpu_time_scale(): a measurement outside them says more about the clock than about
// the processor.
constexpr double min_scale = 0.1;
constexpr double max_scale = 10.0;
// The fastest machine the start figures are meant to hold on, against the reference.
constexpr double fastest_scale = 1.0 / 3.0;
// The processor time of calibration_work() on the reference machine, where the expected start
// times were measured.
constexpr double calibration_reference_ms = 0.51;
constexpr int calibration_rounds = 1000;
// Only this many kinds of dropped candidates are listed, each with this many numbers.
constexpr std::size_t candidate_findings_limit = 10;
constexpr std::size_t candidate_numbers_shown = 5;

// How Debian names a library's package after its module or gem: lower case, dashes for
// underscores (python3-foo-bar for foo_bar).
std::string debian_name(std::string a_module) {
    for (char& each : a_module) {
        each =
            each == '_' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(each)));
    }
    return a_module;
}

std::string with_one_decimal(double a_value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", a_value);
    return text;
}

std::string first_lines(const std::string& a_text, std::size_t a_count, std::size_t a_bytes) {
    std::string result;
    std::size_t lines = 0;
    for (const char item : a_text) {
        if (item == '\n' && ++lines >= a_count) {
            result += " ...";
            break;
        }
        result += item == '\n' ? ' ' : item;
        if (result.size() >= a_bytes) {
            result += " ...";
            break;
        }
    }
    return result;
}

std::string last_lines(const std::string& a_text, std::size_t a_count) {
    std::size_t start = a_text.size();
    std::size_t seen = 0;
    while (start > 0) {
        if (a_text[start - 1] == '\n' && start != a_text.size() && ++seen >= a_count) {
            break;
        }
        --start;
    }
    return a_text.substr(start);
}

std::vector<std::string> read_lines(const std::string& a_path) {
    std::vector<std::string> lines;
    std::ifstream file(a_path, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

bool blank_or_comment(const std::string& a_line) {
    const auto first = a_line.find_first_not_of(" \t");
    return first == std::string::npos || a_line[first] == '#';
}

// The line of the Ruby block that has no "end", judged by indentation: an "end" closes the
// opener at its own indentation, so an opener deeper than an "end" that passes it is open.
std::optional<std::pair<std::uint32_t, std::string>>
unclosed_ruby_block(const std::vector<std::string>& a_lines) {
    static const std::regex opener(
        R"(^(\s*)(module|class|def|if|unless|while|until|case|begin|for)\b.*$)");
    static const std::regex do_block(R"(^(\s*).*\bdo\s*(\|[^|]*\|)?\s*(#.*)?$)");
    static const std::regex closer(R"(^(\s*)end\b.*$)");
    static const std::regex one_line(R"(\bend\s*(#.*)?$)");
    struct open_block {
        std::size_t indent;
        std::uint32_t line;
        std::string keyword;
    };
    std::vector<open_block> open;
    std::smatch match;
    for (std::size_t index = 0; index < a_lines.size(); ++index) {
        const std::string& text = a_lines[index];
        const auto number = static_cast<std::uint32_t>(index + 1);
        if (std::regex_match(text, match, closer)) {
            const std::size_t indent = match[1].length();
            if (!open.empty() && open.back().indent > indent) {
                return std::pair{open.back().line, open.back().keyword};
            }
            if (!open.empty()) {
                open.pop_back();
            }
        } else if (std::regex_search(text, one_line)) {
            continue;
        } else if (std::regex_match(text, match, opener)) {
            open.push_back({static_cast<std::size_t>(match[1].length()), number, match[2]});
        } else if (std::regex_match(text, match, do_block)) {
            open.push_back({static_cast<std::size_t>(match[1].length()), number, "do"});
        }
    }
    if (open.empty()) {
        return std::nullopt;
    }
    return std::pair{open.back().line, open.back().keyword};
}

std::string join(const std::vector<std::string>& a_items, std::string_view a_separator) {
    std::string result;
    for (const auto& item : a_items) {
        if (!result.empty()) {
            result += a_separator;
        }
        result += item;
    }
    return result;
}

struct analysis {
    const run_evidence& m_evidence;
    ui_language m_language;
    std::vector<finding> m_findings;

    std::string say(std::string_view a_key,
                    std::initializer_list<std::string_view> a_values = {}) const {
        return text(a_key, m_language, a_values);
    }

    std::string plugin_path() const { return m_evidence.plugin_folder + m_evidence.plugin_file; }

    finding& add(std::string_view a_code, severity a_level, std::string a_message,
                 std::string a_hint = {}) {
        finding item;
        item.code = std::string(a_code);
        item.level = a_level;
        item.message = std::move(a_message);
        item.hint = std::move(a_hint);
        m_findings.push_back(std::move(item));
        return m_findings.back();
    }

    bool has(std::string_view a_code) const {
        return std::any_of(m_findings.begin(), m_findings.end(),
                           [&](const finding& a_item) { return a_item.code == a_code; });
    }

    std::string entry_method() const { return method_name(m_evidence.entry); }

    std::string expected_entry() const {
        const std::string method = entry_method();
        if (m_evidence.language == "ruby") {
            return "module Qiro_plugin / def " + method + "(request)";
        }
        if (m_evidence.language == "perl") {
            return "package Qiro_plugin; / sub " + method + " { my ($request) = @_; ... }";
        }
        return "def qiro_plugin_" + method + "(request)";
    }

    std::string expected_return() const {
        if (m_evidence.language == "ruby") {
            return "{\"candidate\" => [{\"hyoki\" => \"...\"}]} (string keys, not symbols)";
        }
        if (m_evidence.language == "perl") {
            return "return (candidate => [{hyoki => '...'}]); (a list, not a hash reference)";
        }
        return "return {\"candidate\": [{\"hyoki\": \"...\"}]}";
    }

    std::string debug_output_example() const {
        if (m_evidence.language == "ruby") {
            return "$stderr.puts(...) or warn(...)";
        }
        if (m_evidence.language == "perl") {
            return "print STDERR ... or warn ...";
        }
        return "print(..., file=sys.stderr)";
    }

    // No language took the file: say whether it is the name, the file or the interpreter.
    void no_instance() {
        const std::string path = plugin_path();
        const auto& check = m_evidence.syntax_check;
        if (check.ran && (check.exit_status == 127 ||
                          check.std_error.find(": not found") != std::string::npos)) {
            static const std::pair<const char*, const char*> packages[] = {
                {"perl", "perl"}, {"ruby", "ruby"}, {"python", "python-is-python3"}};
            std::string package = m_evidence.language;
            for (const auto& [command, name] : packages) {
                if (m_evidence.language == command) {
                    package = name;
                }
            }
            add(codes::interpreter_missing, severity::error,
                say("interpreter_missing", {m_evidence.language}),
                say("interpreter_missing.hint", {package}));
            return;
        }
        const auto& name = m_evidence.plugin_file;
        const auto ends_with = [&](std::string_view a_end) {
            if (name.size() <= a_end.size()) {
                return false;
            }
            std::string tail = name.substr(name.size() - a_end.size());
            std::transform(tail.begin(), tail.end(), tail.begin(), [](unsigned char a_char) {
                return static_cast<char>(std::tolower(a_char));
            });
            return tail == a_end;
        };
        struct stat status {};
        std::string message;
        if (!ends_with(".py") && !ends_with(".rb") && !ends_with(".pl")) {
            message = say("no_language.extension", {name});
        } else if (::stat(path.c_str(), &status) != 0) {
            message = say("no_language.missing", {path});
        } else if (::access(path.c_str(), R_OK) != 0) {
            message = say("no_language.unreadable", {path});
        } else {
            add(codes::no_language, severity::error,
                say("no_language.check", {m_evidence.language}), say("no_language.check_hint"));
            return;
        }
        add(codes::no_language, severity::error, message, say("no_language.hint"));
    }

    void streams(const command_evidence& a_command) {
        if (a_command.timed_out) {
            const char* what = a_command.stopped ? "timed_out.stopped" : "timed_out";
            std::string hint = a_command.stopped ? std::string() : say("timed_out.hint");
            if (!a_command.std_error.empty()) {
                if (!hint.empty()) {
                    hint += '\n';
                }
                hint += say("timed_out.partial", {last_lines(a_command.std_error, 10)});
            }
            add(codes::timed_out, severity::error,
                say(what, {with_one_decimal(a_command.elapsed_ms / 1000.0)}), hint);
        }
        if (a_command.std_output_cut) {
            add(codes::stream_cut, severity::error, say("stream_cut", {say("stream.std_output")}));
        }
        if (a_command.std_error_cut) {
            add(codes::stream_cut, severity::warning, say("stream_cut", {say("stream.std_error")}));
        }
        if (m_evidence.entry == entry_kind::processing &&
            a_command.std_output.size() > document_limit) {
            add(codes::output_too_large, severity::error,
                say("output_too_large", {std::to_string(a_command.std_output.size())}),
                say("output_too_large.hint"));
        }
        for (const auto& [stream, key] : {std::pair{&a_command.std_output, "stream.std_output"},
                                          std::pair{&a_command.std_error, "stream.std_error"}}) {
            if (const auto fault = find_utf8_fault(*stream)) {
                // On standard output such a character most likely came from a returned string,
                // which the bridge writes in the lax form, as the plug-in manager's did.
                const bool on_output = stream == &a_command.std_output;
                const char* hint = "not_utf8.hint";
                if (on_output && fault->what == utf8_fault::kind::surrogate) {
                    hint = "not_utf8.surrogate.hint";
                } else if (on_output && fault->what == utf8_fault::kind::above_unicode) {
                    hint = "not_utf8.above_unicode.hint";
                }
                add(codes::not_utf8, severity::error,
                    say("not_utf8", {say(key), std::to_string(fault->offset), fault->bad_bytes}),
                    say(hint))
                    .offset = fault->offset;
            }
        }
    }

    void place(finding& a_finding, const std::optional<std::string>& a_file,
               std::optional<std::uint32_t> a_line,
               std::optional<std::uint32_t> a_column = {}) const {
        if (a_line) {
            a_finding.file = a_file ? *a_file : plugin_path();
            a_finding.line = a_line;
            a_finding.column = a_column;
        }
    }

    // A message that starts with the plug-in's own "PATH:LINE: " repeats the finding's place.
    std::string without_own_place(std::string a_message) const {
        static const std::regex prefix(R"(^([^\s:]+):(\d+):\s*)");
        std::smatch match;
        if (std::regex_search(a_message, match, prefix)) {
            const std::string path = match[1];
            const std::size_t slash = path.rfind('/');
            if ((slash == std::string::npos ? path : path.substr(slash + 1)) ==
                m_evidence.plugin_file) {
                a_message.erase(0, static_cast<std::size_t>(match.length(0)));
            }
        }
        return a_message;
    }

    std::string syntax_hint(const std::string& a_message) const {
        static const std::regex not_utf8(
            R"(codec can't decode|Non-UTF-8 code|invalid multibyte char|Malformed UTF-8)");
        if (std::regex_search(a_message, not_utf8)) {
            return say("syntax_error.not_utf8.hint");
        }
        if (m_evidence.language == "ruby" &&
            a_message.find("unexpected end-of-input") != std::string::npos) {
            std::string hint = say("syntax_error.ruby_end.hint");
            if (const auto block = unclosed_ruby_block(read_lines(plugin_path()))) {
                hint += ' ';
                hint += say("syntax_error.ruby_end.guess",
                            {block->second, std::to_string(block->first)});
            }
            return hint;
        }
        return say("syntax_error.hint");
    }

    void syntax_finding(const std::string& a_message, const std::optional<std::string>& a_file,
                        std::optional<std::uint32_t> a_line,
                        std::optional<std::uint32_t> a_column = {}) {
        // Ruby starts each line of its report with the place again.
        std::string message;
        std::vector<std::string> seen;
        std::size_t start = 0;
        while (start <= a_message.size()) {
            std::size_t end = a_message.find('\n', start);
            if (end == std::string::npos) {
                end = a_message.size();
            }
            std::string line = without_own_place(a_message.substr(start, end - start));
            if (std::find(seen.begin(), seen.end(), line) == seen.end()) {
                message += message.empty() ? "" : "\n";
                message += line;
                seen.push_back(std::move(line));
            }
            start = end + 1;
        }
        place(add(codes::syntax_error, severity::error, message, syntax_hint(a_message)), a_file,
              a_line, a_column);
    }

    bool beside_plugin(const std::string& a_relative) const {
        struct stat status {};
        return ::stat((m_evidence.plugin_folder + a_relative).c_str(), &status) == 0;
    }

    // A load that failed: what happened and what to do, in the author's language and case.
    void load_finding(const probe_evidence::failure& a_failure) {
        const std::string& message = a_failure.message;
        const std::string& run_error = m_evidence.run.std_error;
        std::string text = say("load_failed", {message});
        std::string hint = say("load_failed.hint");
        std::optional<std::uint32_t> line = a_failure.line;
        std::optional<std::string> file = a_failure.file;
        std::smatch match;
        if (m_evidence.language == "perl") {
            static const std::regex missing(R"(Can't locate (\S+)\.pm in @INC)");
            if (a_failure.type == "no_true_value" ||
                message.find("did not return a true value") != std::string::npos) {
                // Perl names the require's place; the value is the file's last statement.
                const auto lines = read_lines(plugin_path());
                std::size_t last = lines.size();
                while (last > 1 && blank_or_comment(lines[last - 1])) {
                    --last;
                }
                text = say("load_failed.no_true_value");
                hint = say("load_failed.no_true_value.hint");
                file.reset();
                line = last > 0 ? std::optional<std::uint32_t>(last) : std::nullopt;
            } else if (std::regex_search(message, match, missing)) {
                std::string module = a_failure.module;
                const std::string path = match[1].str() + ".pm";
                if (module.empty()) {
                    module = std::regex_replace(match[1].str(), std::regex("/"), "::");
                }
                const bool at_compile = a_failure.type == "use_missing" ||
                                        message.find("BEGIN failed") != std::string::npos ||
                                        run_error.find("BEGIN failed") != std::string::npos;
                std::string package = "lib";
                for (const char item : module) {
                    package +=
                        item == ':'
                            ? '-'
                            : static_cast<char>(std::tolower(static_cast<unsigned char>(item)));
                }
                package = std::regex_replace(package, std::regex("--"), "-") + "-perl";
                text =
                    say(at_compile ? "load_failed.perl_use" : "load_failed.perl_require", {module});
                hint = beside_plugin(path) ? say("load_failed.perl_beside.hint", {path})
                                           : say("load_failed.perl_module.hint", {module, package});
            }
        } else if (m_evidence.language == "ruby") {
            static const std::regex missing(R"(cannot load such file -- (\S+))");
            if (std::regex_search(message, match, missing)) {
                std::string name = match[1];
                const bool relative = a_failure.type == "require_relative" ||
                                      run_error.find("require_relative'") != std::string::npos;
                if (relative) {
                    const std::size_t slash = name.rfind('/');
                    const std::string base =
                        slash == std::string::npos ? name : name.substr(slash + 1);
                    text = say("load_failed.own_file", {base + ".rb"});
                    hint = say("load_failed.ruby_relative.hint",
                               {m_evidence.plugin_folder, base + ".rb"});
                } else if (beside_plugin(name + ".rb")) {
                    text = say("load_failed.library", {name});
                    hint = say("load_failed.ruby_beside.hint", {name});
                } else {
                    text = say("load_failed.library", {name});
                    hint = say("load_failed.ruby_gem.hint", {name, debian_name(name)});
                }
            }
        } else if (m_evidence.language == "python") {
            static const std::regex missing(R"(No module named '([^'.]+)[^']*')");
            if (std::regex_search(message, match, missing)) {
                const std::string name = match[1];
                text = say("load_failed.library", {name});
                hint = beside_plugin(name + ".py") || beside_plugin(name + "/__init__.py")
                           ? say("load_failed.python_beside.hint", {name})
                           : say("load_failed.python_module.hint", {name, debian_name(name)});
            }
        }
        place(add(codes::load_failed, severity::error, text, hint), file, line, a_failure.column);
    }

    // One line of what to do next for the common exceptions whose message does not say it.
    std::string exception_advice(const std::string& a_message) const {
        std::smatch match;
        static const std::regex python_missing(
            R"(FileNotFoundError: .*No such file or directory: '([^']+)')");
        static const std::regex ruby_missing(R"(No such file or directory @ \w+ - (\S+))");
        std::string path;
        bool missing = false;
        if (std::regex_search(a_message, match, python_missing) ||
            std::regex_search(a_message, match, ruby_missing)) {
            path = match[1];
            missing = true;
        } else if (a_message.find("No such file or directory") != std::string::npos) {
            missing = true;
        }
        if (missing && !path.starts_with("/")) {
            const char* key = m_evidence.language == "ruby"   ? "advice.relative_path.ruby"
                              : m_evidence.language == "perl" ? "advice.relative_path.perl"
                                                              : "advice.relative_path.python";
            return say(key, {path.empty() ? std::string("words.txt") : path});
        }
        if (a_message.starts_with("EOFError") && m_evidence.language == "python") {
            return say("advice.no_input");
        }
        return {};
    }

    void exception_finding(const failure_reading& a_reading) {
        std::string hint = exception_advice(a_reading.message);
        const std::string trace = join(a_reading.frames, "\n");
        if (!trace.empty()) {
            if (!hint.empty()) {
                hint += '\n';
            }
            hint += say("plugin_exception.hint", {trace});
        }
        std::optional<std::string> file = a_reading.file;
        std::optional<std::uint32_t> line = a_reading.line;
        // A Perl die whose message ends in a newline names no place; the probe saw where it was.
        const auto* probe =
            m_evidence.probe && m_evidence.probe->answered ? &*m_evidence.probe : nullptr;
        if (!line && probe != nullptr && probe->call_failure && probe->call_failure->line) {
            file = probe->call_failure->file;
            line = probe->call_failure->line;
        }
        place(add(codes::plugin_exception, severity::error,
                  say("plugin_exception", {a_reading.message}), hint),
              file, line);
        for (const auto& warning : a_reading.warnings) {
            place(add(codes::plugin_exception, severity::note,
                      say("plugin_exception.warning", {warning.message})),
                  std::nullopt, warning.line);
        }
    }

    // The entry is there in a form the bridge refuses: say what was found, where, and the form.
    void entry_shape_finding(const probe_evidence::entry_shape& a_shape) {
        const std::string hint = say("entry_missing.hint", {expected_entry()});
        if (!a_shape.declaration) {
            add(codes::entry_missing, severity::error,
                say(a_shape.kind == "class" ? "entry_missing.class_somewhere" : "entry_missing",
                    {entry_method()}),
                hint);
            return;
        }
        const std::string found = a_shape.declaration->text;
        const std::string line = std::to_string(a_shape.declaration->line);
        std::string message;
        if (a_shape.kind == "class") {
            message = say("entry_missing.class", {found, line});
        } else if (a_shape.kind == "parameters") {
            message = say("entry_missing.parameters",
                          {found, line, std::to_string(a_shape.takes.value_or(0))});
        } else {
            message = say("entry_missing.name_case", {found, line});
        }
        place(add(codes::entry_missing, severity::error, message, hint), std::nullopt,
              a_shape.declaration->line);
    }

    // What the interpreter printed when the bridge failed, read per language.
    void failure() {
        const auto& run = m_evidence.run;
        failure_reading reading = read_failure(m_evidence.language, run.std_output, run.std_error,
                                               m_evidence.plugin_file);
        if (m_evidence.language == "perl" && reading.kind == failure_kind::exception &&
            run.exit_status == 0) {
            reading.kind = failure_kind::none; // warnings of a run that went on
        }
        const auto* probe =
            m_evidence.probe && m_evidence.probe->answered ? &*m_evidence.probe : nullptr;
        // The probe tells a file that does not compile, load or define the entry more exactly.
        if (probe != nullptr && (probe->compile_failure || probe->load_failure || probe->shape ||
                                 !probe->entry_found.value_or(true))) {
            return;
        }
        switch (reading.kind) {
        case failure_kind::syntax:
            syntax_finding(reading.message, reading.file, reading.line);
            break;
        case failure_kind::load:
            load_finding({{}, {}, reading.message, reading.file, reading.line, reading.column});
            break;
        case failure_kind::entry_missing:
            add(codes::entry_missing, severity::error, say("entry_missing", {entry_method()}),
                say("entry_missing.hint", {expected_entry()}));
            break;
        case failure_kind::exception:
            exception_finding(reading);
            break;
        case failure_kind::return_shape:
            if (probe == nullptr || !probe->returned) {
                add(codes::wrong_return_shape, severity::error,
                    say("wrong_return_shape", {reading.message}),
                    say("wrong_return_shape.hint", {expected_return()}));
            }
            break;
        case failure_kind::none:
            break;
        }
    }

    void document() {
        const auto& output = m_evidence.run.std_output;
        if (output.size() > document_limit || find_utf8_fault(output)) {
            return;
        }
        const auto strays = find_stray_output(output);
        for (const auto& stray : strays) {
            std::string shown = first_lines(stray.text, 3, 200);
            while (!shown.empty() && (shown.back() == ' ' || shown.back() == '\r')) {
                shown.pop_back();
            }
            const std::string message =
                stray.first_line == stray.last_line
                    ? say("stray_output.one", {std::to_string(stray.first_line), shown})
                    : say("stray_output.many", {std::to_string(stray.first_line),
                                                std::to_string(stray.last_line), shown});
            add(codes::stray_output, severity::error, message,
                say("stray_output.hint", {debug_output_example()}))
                .offset = stray.offset;
        }
        // The bridges' own refusals ("error : ...") are explained by the failure, not the parser.
        if (!strays.empty() || has_document_header(output) || output.starts_with("error : ")) {
            return;
        }
        // Without the bridge's document, whatever there is did not come from a finished run.
        if (!has_error(m_findings) || output.find('<') != std::string::npos) {
            if (output.empty()) {
                if (!has_error(m_findings)) {
                    add(codes::document_invalid, severity::error, say("document_invalid.empty"),
                        say("document_invalid.hint"));
                }
            } else if (const auto fault = find_parse_fault(output)) {
                add(codes::document_invalid, severity::error,
                    say("document_invalid", {std::to_string(fault->line),
                                             std::to_string(fault->column), fault->message}),
                    say("document_invalid.hint"))
                    .offset = fault->offset;
            }
        }
    }

    void probe_findings(probe_evidence a_probe) {
        for (auto* failure :
             {&a_probe.compile_failure, &a_probe.load_failure, &a_probe.call_failure}) {
            if (*failure) {
                (*failure)->message = hide_bridge_files((*failure)->message);
            }
        }
        if (a_probe.compile_failure) {
            const auto& failure = *a_probe.compile_failure;
            syntax_finding(failure.message, failure.file, failure.line, failure.column);
            return;
        }
        if (a_probe.load_failure) {
            load_finding(*a_probe.load_failure);
            return;
        }
        if (a_probe.shape) {
            entry_shape_finding(*a_probe.shape);
            return;
        }
        if (a_probe.entry_found && !*a_probe.entry_found) {
            add(codes::entry_missing, severity::error, say("entry_missing", {entry_method()}),
                say("entry_missing.hint", {expected_entry()}));
            return;
        }
        if (a_probe.call_failure && !has(codes::plugin_exception) && !has(codes::timed_out)) {
            const auto& failure = *a_probe.call_failure;
            place(add(codes::plugin_exception, severity::error,
                      say("plugin_exception", {failure.message}),
                      exception_advice(failure.message)),
                  failure.file, failure.line, failure.column);
        }
        if (a_probe.returned && !a_probe.returned->ok) {
            returned_findings(*a_probe.returned);
        }
        candidate_findings(a_probe.candidates);
    }

    void returned_findings(const probe_evidence::returned_shape& a_shape) {
        // What the bridge then failed on is this value, not an error of the entry's own.
        m_findings.erase(std::remove_if(m_findings.begin(), m_findings.end(),
                                        [](const finding& a_item) {
                                            return a_item.code == codes::wrong_return_shape ||
                                                   (a_item.code == codes::plugin_exception &&
                                                    !a_item.line);
                                        }),
                         m_findings.end());
        if (a_shape.flattened) {
            std::string hint = say("wrong_return_shape.hint", {expected_return()});
            std::optional<std::uint32_t> line;
            if (a_shape.slip) {
                line = a_shape.slip->line;
                const std::string fixed =
                    std::regex_replace(a_shape.slip->text, std::regex(R"((=>|,)\s*@)"), "$1 \\@",
                                       std::regex_constants::format_first_only);
                hint = say("wrong_return_shape.flattened.hint", {a_shape.slip->text, fixed});
            }
            place(add(codes::wrong_return_shape, severity::error,
                      say("wrong_return_shape.flattened", {std::to_string(*a_shape.flattened)}),
                      hint),
                  std::nullopt, line);
            return;
        }
        std::string message;
        if (a_shape.candidate_type) {
            message = say("wrong_return_shape.candidate", {*a_shape.candidate_type});
        } else if (a_shape.keys) {
            message = say("wrong_return_shape.keys", {a_shape.type, join(*a_shape.keys, ", ")});
        } else {
            message = say("wrong_return_shape", {a_shape.type});
        }
        add(codes::wrong_return_shape, severity::error, message,
            say("wrong_return_shape.hint", {expected_return()}));
    }

    std::string drop_reason(const probe_evidence::candidate_note& a_note, bool a_many) const {
        if (a_note.reason == "not_mapping" || a_note.reason == "wrong_type") {
            return say("reason." + a_note.reason, {a_note.type, a_note.field});
        }
        if (a_note.reason == "cut" || a_note.reason == "dropped_over_limit") {
            // The lengths differ from one candidate to the next; the limit does not.
            return say("reason." + a_note.reason + (a_many ? ".many" : ""),
                       {std::to_string(a_note.length.value_or(0)),
                        std::to_string(a_note.limit.value_or(0))});
        }
        if (a_note.reason == "beyond_limit") {
            return say("reason.beyond_limit", {std::to_string(a_note.limit.value_or(100))});
        }
        return say("reason." + a_note.reason);
    }

    // One finding for each way candidates are dropped or cut, with how many and which; the
    // numbers count from 1, as the author counts the items of the list.
    void candidate_findings(const std::vector<probe_evidence::candidate_note>& a_notes) {
        using kind =
            std::tuple<bool, std::string, std::string, std::string, std::optional<std::uint64_t>>;
        std::vector<std::pair<kind, std::vector<const probe_evidence::candidate_note*>>> groups;
        for (const auto& note : a_notes) {
            const kind key{note.kept, note.field, note.reason, note.type, note.limit};
            auto found = std::find_if(groups.begin(), groups.end(),
                                      [&](const auto& a_group) { return a_group.first == key; });
            if (found == groups.end()) {
                groups.push_back({key, {}});
                found = std::prev(groups.end());
            }
            found->second.push_back(&note);
        }
        // A run that still gave candidates worked: what it lost is a warning.
        const bool some_left = m_evidence.document_parsed && m_evidence.candidate_count > 0;
        bool first = true;
        std::size_t listed = 0;
        for (const auto& [key, notes] : groups) {
            if (++listed > candidate_findings_limit) {
                break;
            }
            const auto& note = *notes.front();
            std::string numbers;
            for (std::size_t index = 0; index < notes.size(); ++index) {
                if (index == candidate_numbers_shown) {
                    numbers += ", ...";
                    break;
                }
                if (index > 0) {
                    numbers += ", ";
                }
                numbers += std::to_string(notes[index]->index + 1);
            }
            const bool many = notes.size() > 1;
            const std::string reason = drop_reason(note, many);
            const std::string count = std::to_string(notes.size());
            std::string message;
            if (note.kept) {
                message =
                    many ? say("candidate_dropped.field.many", {count, numbers, note.field, reason})
                         : say("candidate_dropped.field", {numbers, note.field, reason});
            } else {
                message = many ? say("candidate_dropped.many", {count, numbers, reason})
                               : say("candidate_dropped", {numbers, reason});
            }
            add(codes::candidate_dropped,
                note.kept || some_left ? severity::warning : severity::error, message,
                first ? say("candidate_dropped.hint") : std::string());
            first = false;
        }
    }

    // The compilers' one-line form: a message's further lines go to the head of its hint.
    void one_line_messages() {
        for (auto& item : m_findings) {
            const std::size_t end = item.message.find('\n');
            if (end == std::string::npos) {
                continue;
            }
            std::string rest = item.message.substr(end + 1);
            item.message.erase(end);
            while (!rest.empty() && (rest.back() == '\n' || rest.back() == ' ')) {
                rest.pop_back();
            }
            if (!rest.empty()) {
                item.hint = item.hint.empty() ? rest : rest + "\n" + item.hint;
            }
        }
    }

    void companion() {
        const auto fault = check_companion(plugin_path());
        if (!fault) {
            return;
        }
        std::string detail = fault->reason;
        if (fault->parse) {
            detail = std::to_string(fault->parse->line) + ":" +
                     std::to_string(fault->parse->column) + ": " + fault->parse->message;
        }
        // When it is why the entry was refused, it is the run's error.
        auto& item = add(codes::companion_xml_invalid,
                         m_evidence.entry_enabled ? severity::warning : severity::error,
                         say("companion_xml_invalid", {fault->path, detail}),
                         say("companion_xml_invalid.hint"));
        item.file = fault->path;
        if (fault->parse) {
            item.line = fault->parse->line;
            item.column = fault->parse->column;
        }
    }

    void start_time() {
        const auto& check = m_evidence.syntax_check;
        if (!check.ran || check.timed_out || m_evidence.language.empty()) {
            return;
        }
        // Processor time, not elapsed time: a busy machine delays every start alike, while a
        // shim's extra work (a version manager resolving the version) shows as work done.
        // Both scale with the machine: a start that is slow here may be normal on a processor
        // three times slower, and a shim's work shrinks on one three times faster.
        const double spent = check.cpu_ms.value_or(0.0);
        // The measurement costs a few milliseconds of processor time, so a start that would be
        // quick even on a machine three times faster than the reference is not measured.
        const double scale = m_evidence.cpu_time_scale.value_or(
            spent > (expected_start_ms(m_evidence.language) + slow_margin_ms) * fastest_scale
                ? cpu_time_scale()
                : fastest_scale);
        const double expected = expected_start_ms(m_evidence.language) * scale;
        if (spent <= expected + slow_margin_ms * scale) {
            return;
        }
        const auto where = describe_interpreter(m_evidence.language);
        add(codes::interpreter_slow, severity::warning,
            say("interpreter_slow",
                {m_evidence.language, where, std::to_string(static_cast<long>(spent)),
                 std::to_string(static_cast<long>(spent - expected))}),
            say("interpreter_slow.hint"));
    }

    void run() {
        if (!m_evidence.instance_made) {
            // An exception before any language answered is the run's own error, not the file's.
            if (m_evidence.error.empty()) {
                no_instance();
            }
            companion();
            return;
        }
        const bool good = m_evidence.run.ran && m_evidence.error.empty() &&
                          !m_evidence.run.timed_out &&
                          (m_evidence.entry != entry_kind::processing ||
                           (m_evidence.document_parsed && m_evidence.candidate_count > 0));
        streams(m_evidence.syntax_check);
        if (m_evidence.run.ran) {
            streams(m_evidence.run);
        }
        // A good run's outputs are not read any further: it costs the author nothing.
        const bool read_outputs = !good && m_evidence.run.ran && !m_evidence.run.timed_out;
        if (read_outputs) {
            failure();
        }
        if (m_evidence.probe && m_evidence.probe->answered) {
            probe_findings(*m_evidence.probe);
        }
        if (read_outputs && m_evidence.entry == entry_kind::processing &&
            !m_evidence.document_parsed) {
            document();
        }
        companion();
        start_time();
        one_line_messages();
    }
};

} // namespace

std::vector<finding> diagnose(const run_evidence& a_evidence, ui_language a_language) {
    analysis work{a_evidence, a_language, {}};
    work.run();
    return std::move(work.m_findings);
}

std::string summarize(const std::vector<finding>& a_findings) {
    for (const auto level : {severity::error, severity::warning}) {
        for (const auto& item : a_findings) {
            if (item.level == level) {
                const std::size_t end = item.message.find('\n');
                return end == std::string::npos ? item.message : item.message.substr(0, end);
            }
        }
    }
    return {};
}

namespace {

double thread_cpu_ms() {
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1000.0 + static_cast<double>(now.tv_nsec) / 1e6;
}

// Work done by the C library (number formatting and parsing), so that the figure does not
// depend on how this program was compiled: optimized or not, with sanitizers or not.
double calibration_work() {
    char text[64];
    double value = 1.0;
    for (int round = 0; round < calibration_rounds; ++round) {
        std::snprintf(text, sizeof text, "%.17g", value);
        value = std::strtod(text, nullptr) * 1.000001 + 0.5;
    }
    return value;
}

double measure_cpu_time_scale() {
    double best = std::numeric_limits<double>::infinity();
    volatile double sink = 0;
    // Short tries, the best of them: one that the scheduler interrupts comes back to cold caches.
    for (int attempt = 0; attempt < 8; ++attempt) {
        const double start = thread_cpu_ms();
        sink = sink + calibration_work();
        best = std::min(best, thread_cpu_ms() - start);
    }
    return std::clamp(best / calibration_reference_ms, min_scale, max_scale);
}

} // namespace

double cpu_time_scale() {
    static const double scale = measure_cpu_time_scale();
    return scale;
}

double expected_start_ms(const std::string& a_language) {
    // Processor time of the bridge's syntax check with Debian's interpreters, rounded up.
    if (a_language == "perl") {
        return 20.0;
    }
    if (a_language == "ruby") {
        return 100.0;
    }
    return 50.0;
}

} // namespace qiro_plugin::diagnosis

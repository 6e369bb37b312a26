#include "diagnosis/analyze.hpp"

#include "diagnosis/companion_check.hpp"
#include "diagnosis/interpreter_lookup.hpp"
#include "diagnosis/stream_analysis.hpp"
#include "diagnosis/traceback_reader.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <sys/stat.h>
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
// Only this many dropped candidates are listed one by one.
constexpr std::size_t candidate_findings_limit = 10;

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
        if (probe != nullptr &&
            (probe->compile_failure || probe->load_failure || !probe->entry_found.value_or(true))) {
            return;
        }
        const std::string trace = join(reading.frames, "\n");
        switch (reading.kind) {
        case failure_kind::syntax:
            place(add(codes::syntax_error, severity::error, reading.message,
                      say("syntax_error.hint")),
                  reading.file, reading.line);
            break;
        case failure_kind::load:
            place(add(codes::load_failed, severity::error, say("load_failed", {reading.message}),
                      say("load_failed.hint")),
                  reading.file, reading.line);
            break;
        case failure_kind::entry_missing:
            add(codes::entry_missing, severity::error, say("entry_missing", {entry_method()}),
                say("entry_missing.hint", {expected_entry()}));
            break;
        case failure_kind::exception:
            place(add(codes::plugin_exception, severity::error,
                      say("plugin_exception", {reading.message}),
                      trace.empty() ? std::string() : say("plugin_exception.hint", {trace})),
                  reading.file, reading.line);
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
        const auto failure_place = [this](finding& a_finding,
                                          const probe_evidence::failure& a_failure) {
            place(a_finding, a_failure.file, a_failure.line, a_failure.column);
        };
        if (a_probe.compile_failure) {
            failure_place(add(codes::syntax_error, severity::error,
                              a_probe.compile_failure->message, say("syntax_error.hint")),
                          *a_probe.compile_failure);
            return;
        }
        if (a_probe.load_failure) {
            failure_place(add(codes::load_failed, severity::error,
                              say("load_failed", {a_probe.load_failure->message}),
                              say("load_failed.hint")),
                          *a_probe.load_failure);
            return;
        }
        if (a_probe.entry_found && !*a_probe.entry_found) {
            add(codes::entry_missing, severity::error, say("entry_missing", {entry_method()}),
                say("entry_missing.hint", {expected_entry()}));
            return;
        }
        if (a_probe.call_failure && !has(codes::plugin_exception) && !has(codes::timed_out)) {
            failure_place(add(codes::plugin_exception, severity::error,
                              say("plugin_exception", {a_probe.call_failure->message})),
                          *a_probe.call_failure);
        }
        if (a_probe.returned && !a_probe.returned->ok) {
            const auto& shape = *a_probe.returned;
            std::string message;
            if (shape.candidate_type) {
                message = say("wrong_return_shape.candidate", {*shape.candidate_type});
            } else if (shape.keys) {
                message = say("wrong_return_shape.keys", {shape.type, join(*shape.keys, ", ")});
            } else {
                message = say("wrong_return_shape", {shape.type});
            }
            m_findings.erase(std::remove_if(m_findings.begin(), m_findings.end(),
                                            [](const finding& a_item) {
                                                return a_item.code == codes::wrong_return_shape;
                                            }),
                             m_findings.end());
            add(codes::wrong_return_shape, severity::error, message,
                say("wrong_return_shape.hint", {expected_return()}));
        }
        std::size_t listed = 0;
        for (const auto& note : a_probe.candidates) {
            if (++listed > candidate_findings_limit) {
                break;
            }
            std::string reason;
            if (note.reason == "not_mapping" || note.reason == "wrong_type") {
                reason = say("reason." + note.reason, {note.type, note.field});
            } else if (note.reason == "cut" || note.reason == "dropped_over_limit") {
                reason = say("reason." + note.reason, {std::to_string(note.length.value_or(0)),
                                                       std::to_string(note.limit.value_or(0))});
            } else if (note.reason == "beyond_limit") {
                reason = say("reason.beyond_limit", {std::to_string(note.limit.value_or(100))});
            } else {
                reason = say("reason." + note.reason);
            }
            const std::string index = std::to_string(note.index);
            add(codes::candidate_dropped, note.kept ? severity::warning : severity::error,
                note.kept ? say("candidate_dropped.field", {index, note.field, reason})
                          : say("candidate_dropped", {index, reason}),
                say("candidate_dropped.hint"));
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

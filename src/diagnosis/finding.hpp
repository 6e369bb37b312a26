#pragma once
// One thing the diagnosis found in a run: a fixed code, how bad it is, what and where.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qiro_plugin::diagnosis {

// The fixed codes; new ones may be added, none renamed (scripts and cases files name them).
namespace codes {
inline constexpr std::string_view no_language = "no_language";
inline constexpr std::string_view interpreter_missing = "interpreter_missing";
inline constexpr std::string_view syntax_error = "syntax_error";
inline constexpr std::string_view load_failed = "load_failed";
inline constexpr std::string_view entry_missing = "entry_missing";
inline constexpr std::string_view plugin_exception = "plugin_exception";
inline constexpr std::string_view stray_output = "stray_output";
inline constexpr std::string_view document_invalid = "document_invalid";
inline constexpr std::string_view not_utf8 = "not_utf8";
inline constexpr std::string_view wrong_return_shape = "wrong_return_shape";
inline constexpr std::string_view candidate_dropped = "candidate_dropped";
inline constexpr std::string_view timed_out = "timed_out";
inline constexpr std::string_view stream_cut = "stream_cut";
inline constexpr std::string_view output_too_large = "output_too_large";
inline constexpr std::string_view companion_xml_invalid = "companion_xml_invalid";
inline constexpr std::string_view interpreter_slow = "interpreter_slow";
} // namespace codes

enum class severity { error, warning, note };

// "error", "warning" or "note".
std::string_view severity_name(severity a_severity);

struct finding {
    std::string code; // one of codes::
    diagnosis::severity level = severity::error;
    std::string message; // UTF-8, in the UI language
    std::string hint;    // UTF-8, in the UI language; may be empty
    // Where, in the author's own file (the plug-in or its .xml), never in a bridge; line and
    // column are 1-based. offset is a byte offset into a stream.
    std::optional<std::string> file;
    std::optional<std::uint32_t> line;
    std::optional<std::uint32_t> column;
    std::optional<std::uint64_t> offset;
};

// True when any finding has severity error.
bool has_error(const std::vector<finding>& a_findings);

} // namespace qiro_plugin::diagnosis

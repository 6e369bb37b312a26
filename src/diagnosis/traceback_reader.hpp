#pragma once
// Reading what an interpreter printed when a plug-in failed: the kind of failure, the place in
// the author's own file, and the traceback with the bridge's frames folded into one line.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qiro_plugin::diagnosis {

enum class failure_kind {
    none,          // nothing the reader recognises
    syntax,        // the plug-in does not compile
    load,          // it compiles but loading it failed
    entry_missing, // the bridge did not find the entry
    exception,     // the entry (or code it called) raised or died
    return_shape   // the bridge failed on what the entry returned
};

struct failure_reading {
    failure_kind kind = failure_kind::none;
    std::string message; // the interpreter's words, the bridge's file name replaced
    std::optional<std::string> file;
    std::optional<std::uint32_t> line;
    std::optional<std::uint32_t> column;
    // Innermost first: the plug-in's frames, then library frames, then one "[bridge]" line;
    // a frame repeated in a row (a recursion) is one line ending in "× N".
    std::vector<std::string> frames;
    // What the interpreter warned before the error (Perl), each with its line in the plug-in.
    struct warning {
        std::string message;
        std::optional<std::uint32_t> line;
    };
    std::vector<warning> warnings;
};

// Reads the outputs of a bridge run of the plug-in a_plugin_file (its file name) in the
// language "perl", "ruby" or "python".
failure_reading read_failure(std::string_view a_language, std::string_view a_std_output,
                             std::string_view a_std_error, std::string_view a_plugin_file);

// The text with every path of a temporary bridge (or probe) file replaced by "[bridge]", since
// its name means nothing to the author and the file is gone, and Perl's trailing notes about
// the require that failed dropped.
std::string hide_bridge_files(std::string a_text);

// True for the name of a temporary bridge file: 40 hexadecimal digits and an extension.
bool is_bridge_file(std::string_view a_path);

} // namespace qiro_plugin::diagnosis

#include "diagnosis/traceback_reader.hpp"

#include <algorithm>
#include <regex>

namespace qiro_plugin::diagnosis {

namespace {

// The bridges' own failure texts on standard output.
constexpr std::string_view load_error_text = "error : plugin module load error.";
constexpr std::string_view callable_error_text = "error : plugin module load error2.";
constexpr std::string_view perl_method_error_text = "error : plugin method [";

struct frame {
    std::string file;
    std::uint32_t line = 0;
    std::string function;
    std::uint64_t repeated = 1; // the interpreter's own count of the same frame in a row
};

std::string_view base_name(std::string_view a_path) {
    const std::size_t slash = a_path.rfind('/');
    return slash == std::string_view::npos ? a_path : a_path.substr(slash + 1);
}

bool is_plugin(std::string_view a_path, std::string_view a_plugin_file) {
    return base_name(a_path) == a_plugin_file;
}

std::vector<std::string> split_lines(std::string_view a_text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < a_text.size()) {
        std::size_t end = a_text.find('\n', start);
        if (end == std::string_view::npos) {
            end = a_text.size();
        }
        std::string line(a_text.substr(start, end - start));
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        lines.push_back(std::move(line));
        start = end + 1;
    }
    return lines;
}

std::string hide_bridge(std::string a_text) {
    return hide_bridge_files(std::move(a_text));
}

std::string trim(std::string a_text) {
    const auto blank = [](char a_char) {
        return a_char == ' ' || a_char == '\n' || a_char == '\t';
    };
    while (!a_text.empty() && blank(a_text.back())) {
        a_text.pop_back();
    }
    const auto first = std::find_if_not(a_text.begin(), a_text.end(), blank);
    return std::string(first, a_text.end());
}

// Frames outermost first, as Python and Perl print them, become the reading's frame lines and
// place: the innermost plug-in frame gives the place.
void fold_frames(const std::vector<frame>& a_innermost_first, std::string_view a_plugin_file,
                 failure_reading& a_reading) {
    // A recursion prints the same frame hundreds of times: one line with the count.
    std::vector<frame> folded;
    for (const auto& item : a_innermost_first) {
        if (!folded.empty() && folded.back().file == item.file && folded.back().line == item.line &&
            folded.back().function == item.function) {
            folded.back().repeated += item.repeated;
        } else {
            folded.push_back(item);
        }
    }
    std::vector<std::string> plugin;
    std::vector<std::string> library;
    bool bridge = false;
    for (const auto& item : folded) {
        if (is_bridge_file(item.file)) {
            bridge = true;
            continue;
        }
        std::string text =
            "  " +
            std::string(is_plugin(item.file, a_plugin_file) ? base_name(item.file)
                                                            : std::string_view(item.file)) +
            ":" + std::to_string(item.line);
        if (!item.function.empty()) {
            text += " in ";
            text += item.function;
        }
        if (item.repeated > 1) {
            text += " × ";
            text += std::to_string(item.repeated);
        }
        if (is_plugin(item.file, a_plugin_file)) {
            if (!a_reading.line) {
                a_reading.file = item.file;
                a_reading.line = item.line;
            }
            plugin.push_back(std::move(text));
        } else if (plugin.empty()) {
            // Only the library code the plug-in called, not the loader around it.
            library.push_back(std::move(text));
        }
    }
    a_reading.frames = plugin;
    if (!plugin.empty()) {
        a_reading.frames.insert(a_reading.frames.end(), library.begin(), library.end());
    }
    if (bridge) {
        a_reading.frames.emplace_back("  [bridge]");
    }
}

bool any_function(const std::vector<frame>& a_frames, std::string_view a_name) {
    return std::any_of(a_frames.begin(), a_frames.end(), [&](const frame& a_frame) {
        return is_bridge_file(a_frame.file) && a_frame.function == a_name;
    });
}

failure_reading read_python(std::string_view a_std_output, std::string_view a_std_error,
                            std::string_view a_plugin_file) {
    failure_reading reading;
    if (a_std_output.find(callable_error_text) != std::string_view::npos) {
        reading.kind = failure_kind::entry_missing;
        reading.message = std::string(callable_error_text);
        return reading;
    }
    const auto lines = split_lines(a_std_error);
    const auto start =
        std::find(lines.rbegin(), lines.rend(), "Traceback (most recent call last):");
    if (start == lines.rend()) {
        return reading;
    }
    static const std::regex frame_line(R"re(^  File "(.+)", line (\d+)(?:, in (.+))?$)re");
    static const std::regex repeated_line(R"(^  \[Previous line repeated (\d+) more times?\]$)");
    std::vector<frame> frames;
    for (auto line = start.base(); line != lines.end(); ++line) {
        std::smatch match;
        if (std::regex_match(*line, match, frame_line)) {
            frames.push_back(
                {match[1], static_cast<std::uint32_t>(std::stoul(match[2])), match[3]});
        } else if (std::regex_match(*line, match, repeated_line) && !frames.empty()) {
            frames.back().repeated += std::stoull(match[1]);
        } else if (!line->empty() && line->front() != ' ') {
            reading.message = *line; // the last unindented line names the exception
        }
    }
    reading.message = hide_bridge(reading.message);
    const std::string type = reading.message.substr(0, reading.message.find(':'));
    std::reverse(frames.begin(), frames.end());
    fold_frames(frames, a_plugin_file, reading);
    const bool innermost_in_bridge = !frames.empty() && is_bridge_file(frames.front().file);
    if (type == "SyntaxError" || type == "IndentationError" || type == "TabError") {
        reading.kind = failure_kind::syntax;
    } else if (any_function(frames, "load_plugin")) {
        reading.kind = failure_kind::load;
    } else if (type == "AttributeError" &&
               reading.message.find("has no attribute 'qiro_plugin_") != std::string::npos) {
        reading.kind = failure_kind::entry_missing;
    } else if (innermost_in_bridge && reading.message.starts_with("KeyError: 'candidate'")) {
        reading.kind = failure_kind::return_shape;
    } else {
        reading.kind = failure_kind::exception;
    }
    return reading;
}

failure_reading read_ruby(std::string_view a_std_error, std::string_view a_plugin_file) {
    failure_reading reading;
    const auto lines = split_lines(a_std_error);
    static const std::regex head(R"(^(.+?):(\d+):in [`'](.+?)': (.*)$)");
    static const std::regex from(R"(^\s+from (.+?):(\d+):in [`'](.+?)'$)");
    // The last head line starts the error; its message runs until the first "from" line.
    std::size_t head_at = lines.size();
    for (std::size_t index = lines.size(); index-- > 0;) {
        if (std::regex_match(lines[index], head)) {
            head_at = index;
            break;
        }
    }
    if (head_at == lines.size()) {
        return reading;
    }
    std::smatch match;
    std::regex_match(lines[head_at], match, head);
    std::vector<frame> frames{
        {match[1], static_cast<std::uint32_t>(std::stoul(match[2])), match[3]}};
    std::string message = match[4];
    std::size_t index = head_at + 1;
    for (; index < lines.size() && !std::regex_match(lines[index], from); ++index) {
        message += "\n" + lines[index];
    }
    static const std::regex levels(R"(^\s+\.\.\. (\d+) levels\.\.\.$)");
    for (; index < lines.size(); ++index) {
        if (std::regex_match(lines[index], match, from)) {
            frames.push_back(
                {match[1], static_cast<std::uint32_t>(std::stoul(match[2])), match[3]});
        } else if (std::regex_match(lines[index], match, levels)) {
            // The levels left out lie between the frames around them; in a recursion they
            // are the same frame again.
            frames.back().repeated += std::stoull(match[1]);
        }
    }
    // The class closes the message's first line; the lines after it quote the code.
    static const std::regex class_at_end(R"(^(.*) \(([A-Za-z_:]+)\)\s*$)");
    std::string type;
    std::string shown = message.substr(0, message.find('\n'));
    if (std::regex_match(shown, match, class_at_end)) {
        type = match[2];
    }
    reading.message = hide_bridge(trim(shown));
    fold_frames(frames, a_plugin_file, reading);
    const bool innermost_in_bridge = is_bridge_file(frames.front().file);
    if (type == "SyntaxError") {
        reading.kind = failure_kind::syntax;
        // The place is in the message: "PATH:LINE: syntax error, ...".
        static const std::regex place(R"(([^\s:]+):(\d+):)");
        for (auto it = std::sregex_iterator(message.begin(), message.end(), place);
             it != std::sregex_iterator(); ++it) {
            if (is_plugin((*it)[1].str(), a_plugin_file)) {
                reading.file = (*it)[1];
                reading.line = static_cast<std::uint32_t>(std::stoul((*it)[2]));
                break;
            }
        }
    } else if (type == "LoadError" || any_function(frames, "load_plugin")) {
        reading.kind = failure_kind::load;
    } else if (innermost_in_bridge && (type == "NameError" || type == "NoMethodError") &&
               (message.find("Qiro_plugin") != std::string::npos ||
                message.find("undefined method") != std::string::npos)) {
        reading.kind = failure_kind::entry_missing;
    } else {
        reading.kind = failure_kind::exception;
    }
    return reading;
}

failure_reading read_perl(std::string_view a_std_output, std::string_view a_std_error,
                          std::string_view a_plugin_file) {
    failure_reading reading;
    if (a_std_output.find(perl_method_error_text) != std::string_view::npos) {
        reading.kind = failure_kind::entry_missing;
        reading.message = hide_bridge(std::string(a_std_output));
        return reading;
    }
    const std::string error(a_std_error);
    if (trim(error).empty()) {
        return reading;
    }
    // Perl names places as "at FILE line N"; the first in the plug-in is the innermost.
    static const std::regex place(R"( at (.+?) line (\d+)[.,])");
    std::vector<frame> frames;
    for (auto it = std::sregex_iterator(error.begin(), error.end(), place);
         it != std::sregex_iterator(); ++it) {
        frames.push_back({(*it)[1], static_cast<std::uint32_t>(std::stoul((*it)[2])), {}});
    }
    fold_frames(frames, a_plugin_file, reading);
    const auto lines = split_lines(error);
    reading.message = hide_bridge(trim(error));
    if (a_std_output.find(load_error_text) != std::string_view::npos) {
        static const std::regex load_reason(R"(Can't locate |did not return a true value)");
        static const std::regex syntax_reason(
            R"(syntax error|Global symbol|Missing right curly|Can't find string terminator|)"
            R"(Unmatched right|Bareword .* not allowed|Illegal declaration)");
        reading.kind =
            !std::regex_search(error, load_reason) && std::regex_search(error, syntax_reason)
                ? failure_kind::syntax
                : failure_kind::load;
        return reading;
    }
    // Perl prints its warnings and then the error on the same stream: each warning ends in
    // " at FILE line N."; the error is what follows the last of them (a die whose message
    // ends in a newline names no place), or else the last of them.
    static const std::regex terminated(
        R"(^.* at .+? line \d+(?:, <[^>]*> (?:line|chunk) \d+)?\.$)");
    std::vector<std::string> messages;
    std::string current;
    for (const auto& line : lines) {
        if (!current.empty()) {
            current += '\n';
        }
        current += line;
        if (std::regex_match(line, terminated)) {
            messages.push_back(std::move(current));
            current.clear();
        }
    }
    if (!trim(current).empty()) {
        messages.push_back(trim(current));
    }
    if (messages.empty()) {
        return reading;
    }
    const std::string last = messages.back();
    messages.pop_back();
    for (const auto& warning : messages) {
        failure_reading::warning item{hide_bridge(trim(warning)), {}};
        for (auto it = std::sregex_iterator(warning.begin(), warning.end(), place);
             it != std::sregex_iterator(); ++it) {
            if (is_plugin((*it)[1].str(), a_plugin_file)) {
                item.line = static_cast<std::uint32_t>(std::stoul((*it)[2]));
                break;
            }
        }
        reading.warnings.push_back(std::move(item));
    }
    frames.clear();
    for (auto it = std::sregex_iterator(last.begin(), last.end(), place);
         it != std::sregex_iterator(); ++it) {
        frames.push_back({(*it)[1], static_cast<std::uint32_t>(std::stoul((*it)[2])), {}});
    }
    reading.file.reset();
    reading.line.reset();
    fold_frames(frames, a_plugin_file, reading);
    reading.message = hide_bridge(trim(last));
    static const std::regex reference_fault(
        R"(Not an? (ARRAY|HASH) reference|as an? (ARRAY|HASH) ref)");
    reading.kind = !reading.line && std::regex_search(last, reference_fault)
                       ? failure_kind::return_shape
                       : failure_kind::exception;
    return reading;
}

} // namespace

std::string hide_bridge_files(std::string a_text) {
    static const std::regex bridge_path(R"((?:/[^\s"':]*/)?[0-9A-F]{40}\.(?:py|rb|pl))");
    static const std::regex perl_noise(
        R"(\n?(?:Compilation failed in require|BEGIN failed--compilation aborted) at [^\n]*)");
    static const std::regex include_path(R"( \(@INC contains:[^)]*\))");
    a_text = std::regex_replace(a_text, perl_noise, "");
    a_text = std::regex_replace(a_text, include_path, "");
    return std::regex_replace(a_text, bridge_path, "[bridge]");
}

bool is_bridge_file(std::string_view a_path) {
    static const std::regex name(R"([0-9A-F]{40}\.(py|rb|pl))");
    const std::string base(base_name(a_path));
    return std::regex_match(base, name);
}

failure_reading read_failure(std::string_view a_language, std::string_view a_std_output,
                             std::string_view a_std_error, std::string_view a_plugin_file) {
    if (a_language == "python") {
        return read_python(a_std_output, a_std_error, a_plugin_file);
    }
    if (a_language == "ruby") {
        if (a_std_output.find(load_error_text) != std::string_view::npos && a_std_error.empty()) {
            failure_reading reading;
            reading.kind = failure_kind::load;
            reading.message = std::string(load_error_text);
            return reading;
        }
        return read_ruby(a_std_error, a_plugin_file);
    }
    if (a_language == "perl") {
        return read_perl(a_std_output, a_std_error, a_plugin_file);
    }
    return {};
}

} // namespace qiro_plugin::diagnosis

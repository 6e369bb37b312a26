#include "core/live_std_error.hpp"

#include "text/utf8_text.hpp"

namespace qiro_plugin::debugger {

namespace {

bool is_continuation(char a_byte) {
    return (static_cast<unsigned char>(a_byte) & 0xC0) == 0x80;
}

// How many bytes a sequence that starts with a_lead claims (1 for a byte that starts none).
std::size_t claimed_length(char a_lead) {
    const auto lead = static_cast<unsigned char>(a_lead);
    return lead >= 0xF0 && lead < 0xF8 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
}

// The text without a sequence that its last bytes only begin.
std::string_view without_unfinished_character(std::string_view a_text) {
    for (std::size_t back = 1; back <= 3 && back <= a_text.size(); ++back) {
        const char byte = a_text[a_text.size() - back];
        if (!is_continuation(byte)) {
            return claimed_length(byte) > back ? a_text.substr(0, a_text.size() - back) : a_text;
        }
    }
    return a_text;
}

} // namespace

std::string std_error_tail(std::string_view a_so_far, std::size_t a_lines,
                           std::size_t a_max_bytes) {
    if (a_lines == 0 || a_max_bytes == 0) {
        return {};
    }
    std::string_view text = without_unfinished_character(a_so_far);
    // A finished last line is a line, not the start of an empty one.
    if (!text.empty() && text.back() == '\n') {
        text.remove_suffix(text.size() > 1 && text[text.size() - 2] == '\r' ? 2 : 1);
    }
    std::size_t start = text.size() > a_max_bytes ? text.size() - a_max_bytes : 0;
    bool cut_by_bytes = start > 0;
    std::size_t lines = 0;
    for (std::size_t at = text.size(); at > start; --at) {
        if (text[at - 1] == '\n' && ++lines == a_lines) {
            start = at;
            cut_by_bytes = false;
            break;
        }
    }
    // A cut inside a character moves on to the next one.
    for (std::size_t skipped = 0;
         cut_by_bytes && skipped < 3 && start < text.size() && is_continuation(text[start]);
         ++skipped) {
        ++start;
    }
    std::string tail;
    tail.reserve(text.size() - start);
    for (std::size_t at = start; at < text.size(); ++at) {
        if (text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n') {
            continue;
        }
        tail += text[at];
    }
    return string_encode::to_utf8_marked(string_encode::to_utf16_marked(tail));
}

} // namespace qiro_plugin::debugger

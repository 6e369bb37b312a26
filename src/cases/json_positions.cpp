#include "cases/json_positions.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string_view>

namespace qiro_plugin::cases {

namespace {

// A walk over text that is known to be valid JSON: no error handling is needed.
class offset_walker {
public:
    offset_walker(const std::string& a_text, std::map<std::string, std::size_t>& a_offsets)
        : m_text(a_text), m_offsets(a_offsets) {
        // The parser skips a byte-order mark; so does the walk.
        if (m_text.starts_with("\xEF\xBB\xBF")) {
            m_at = 3;
        }
    }

    void value(const std::string& a_pointer, std::size_t a_depth = 0) {
        skip_space();
        m_offsets.emplace(a_pointer, m_at);
        if (m_at >= m_text.size()) {
            return;
        }
        const char first = m_text[m_at];
        if ((first == '{' || first == '[') && a_depth >= depth_limit) {
            skip_nested();
        } else if (first == '{') {
            object(a_pointer, a_depth);
        } else if (first == '[') {
            array(a_pointer, a_depth);
        } else if (first == '"') {
            string();
        } else {
            while (m_at < m_text.size() &&
                   std::string_view(",]} \t\r\n").find(m_text[m_at]) == std::string_view::npos) {
                ++m_at;
            }
        }
    }

private:
    // Nothing in a cases file lies this deep; deeper values are passed over without recursion,
    // so that a hostile nesting cannot exhaust the stack.
    static constexpr std::size_t depth_limit = 32;

    void skip_nested() {
        std::size_t open = 0;
        do {
            const char c = m_text[m_at];
            if (c == '"') {
                string();
                continue;
            }
            open += (c == '{' || c == '[') ? 1 : 0;
            open -= (c == '}' || c == ']') ? 1 : 0;
            ++m_at;
        } while (open > 0 && m_at < m_text.size());
    }

    void object(const std::string& a_pointer, std::size_t a_depth) {
        ++m_at;
        while (true) {
            skip_space();
            if (m_text[m_at] == '}') {
                ++m_at;
                return;
            }
            if (m_text[m_at] == ',') {
                ++m_at;
                skip_space();
            }
            const std::size_t key_start = m_at;
            string();
            const auto key = nlohmann::json::parse(m_text.substr(key_start, m_at - key_start))
                                 .get<std::string>();
            skip_space();
            ++m_at; // the colon
            value(a_pointer + "/" + escaped(key), a_depth + 1);
        }
    }

    void array(const std::string& a_pointer, std::size_t a_depth) {
        ++m_at;
        for (std::size_t index = 0;; ++index) {
            skip_space();
            if (m_text[m_at] == ']') {
                ++m_at;
                return;
            }
            if (m_text[m_at] == ',') {
                ++m_at;
            }
            value(a_pointer + "/" + std::to_string(index), a_depth + 1);
        }
    }

    void string() {
        ++m_at;
        while (m_text[m_at] != '"') {
            m_at += m_text[m_at] == '\\' ? 2 : 1;
        }
        ++m_at;
    }

    void skip_space() {
        while (m_at < m_text.size() &&
               std::string_view(" \t\r\n").find(m_text[m_at]) != std::string_view::npos) {
            ++m_at;
        }
    }

    static std::string escaped(const std::string& a_key) {
        std::string result;
        for (const char c : a_key) {
            result += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
        }
        return result;
    }

    const std::string& m_text;
    std::map<std::string, std::size_t>& m_offsets;
    std::size_t m_at = 0;
};

} // namespace

text_position position_of_offset(const std::string& a_text, std::size_t a_offset) {
    text_position position;
    const std::size_t end = std::min(a_offset, a_text.size());
    for (std::size_t at = 0; at < end; ++at) {
        const auto byte = static_cast<unsigned char>(a_text[at]);
        if (byte == '\n') {
            ++position.line;
            position.column = 1;
        } else if ((byte & 0xC0) != 0x80) {
            ++position.column;
        }
    }
    return position;
}

std::map<std::string, std::size_t> value_offsets(const std::string& a_text) {
    std::map<std::string, std::size_t> offsets;
    offset_walker walker(a_text, offsets);
    walker.value("");
    return offsets;
}

} // namespace qiro_plugin::cases

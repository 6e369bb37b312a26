#include "text/wide_string.hpp"

#include "text/string_encode.hpp"

#include <cctype>

namespace qiro_plugin::utility {

namespace {

constexpr auto npos = utf16_string::npos;

// Position of the first begin marker from a_from and of the first end marker after it.
bool find_markers(const utf16_string& a_text, const utf16_string& a_begin,
                  const utf16_string& a_end, std::size_t a_from, std::size_t& a_begin_pos,
                  std::size_t& a_end_pos) {
    a_begin_pos = a_text.find(a_begin, a_from);
    if (a_begin_pos == npos) {
        return false;
    }
    a_end_pos = a_text.find(a_end, a_begin_pos + a_begin.size());
    return a_end_pos != npos;
}

utf16_string piece(const utf16_string& a_text, const utf16_string& a_begin,
                   const utf16_string& a_end, std::size_t a_begin_pos, std::size_t a_end_pos,
                   bool a_include_markers) {
    if (a_include_markers) {
        return a_text.substr(a_begin_pos, a_end_pos + a_end.size() - a_begin_pos);
    }
    const std::size_t start = a_begin_pos + a_begin.size();
    return a_text.substr(start, a_end_pos - start);
}

} // namespace

utf16_string find_sub_string_range(const utf16_string& a_text, const utf16_string& a_begin,
                                   const utf16_string& a_end, bool a_include_markers) {
    std::size_t begin_pos = 0;
    std::size_t end_pos = 0;
    if (!find_markers(a_text, a_begin, a_end, 0, begin_pos, end_pos)) {
        return utf16_string();
    }
    return piece(a_text, a_begin, a_end, begin_pos, end_pos, a_include_markers);
}

std::vector<utf16_string> find_sub_string_range_all(const utf16_string& a_text,
                                                    const utf16_string& a_begin,
                                                    const utf16_string& a_end,
                                                    bool a_include_markers) {
    std::vector<utf16_string> result;
    std::size_t from = 0;
    std::size_t begin_pos = 0;
    std::size_t end_pos = 0;
    while (find_markers(a_text, a_begin, a_end, from, begin_pos, end_pos)) {
        result.push_back(piece(a_text, a_begin, a_end, begin_pos, end_pos, a_include_markers));
        from = end_pos + a_end.size();
        if (a_begin.empty() && a_end.empty()) {
            // Empty markers match everywhere without advancing; step on so the walk ends.
            if (from >= a_text.size()) {
                break;
            }
            ++from;
        }
    }
    return result;
}

std::vector<utf16_string> split_string(const utf16_string& a_text,
                                       const utf16_string& a_separator) {
    std::vector<utf16_string> result;
    std::size_t start = 0;
    if (!a_separator.empty()) {
        for (std::size_t found = a_text.find(a_separator); found != npos;
             found = a_text.find(a_separator, start)) {
            result.push_back(a_text.substr(start, found - start));
            start = found + a_separator.size();
        }
    }
    result.push_back(a_text.substr(start));
    return result;
}

void delete_sub_string(bool a_all, utf16_string& a_text, const utf16_string& a_pattern) {
    if (a_pattern.empty()) {
        return;
    }
    do {
        const std::size_t found = a_text.find(a_pattern);
        if (found == npos) {
            return;
        }
        a_text.erase(found, a_pattern.size());
    } while (a_all);
}

utf16_string delete_sub_string_range_first(utf16_string& a_text, const utf16_string& a_begin,
                                           const utf16_string& a_end) {
    std::size_t begin_pos = 0;
    std::size_t end_pos = 0;
    if (!find_markers(a_text, a_begin, a_end, 0, begin_pos, end_pos)) {
        return utf16_string();
    }
    utf16_string result = a_text.substr(begin_pos);
    a_text.erase(begin_pos, end_pos + a_end.size() - begin_pos);
    return result;
}

void delete_sub_string_range_all(utf16_string& a_text, const utf16_string& a_begin,
                                 const utf16_string& a_end) {
    std::size_t begin_pos = 0;
    std::size_t end_pos = 0;
    while (find_markers(a_text, a_begin, a_end, 0, begin_pos, end_pos)) {
        const std::size_t length = end_pos + a_end.size() - begin_pos;
        if (length == 0) {
            return; // two empty markers would erase nothing for ever
        }
        a_text.erase(begin_pos, length);
    }
}

bool replace_sub_string(bool a_all, utf16_string& a_text, const utf16_string& a_pattern,
                        const utf16_string& a_replacement) {
    bool replaced = false;
    std::size_t from = 0;
    while (from <= a_text.size()) {
        const std::size_t found = a_text.find(a_pattern, from);
        if (found == npos) {
            break;
        }
        a_text.replace(found, a_pattern.size(), a_replacement);
        replaced = true;
        from = found + a_replacement.size();
        if (!a_all) {
            break;
        }
        if (a_pattern.empty()) {
            ++from; // an empty pattern matches at every position: step past each one
        }
    }
    return replaced;
}

void replace_sub_string_range_all(utf16_string& a_text, const utf16_string& a_begin,
                                  const utf16_string& a_end, const utf16_string& a_replacement) {
    std::size_t from = 0;
    std::size_t begin_pos = 0;
    std::size_t end_pos = 0;
    while (from <= a_text.size() &&
           find_markers(a_text, a_begin, a_end, from, begin_pos, end_pos)) {
        a_text.replace(begin_pos, end_pos + a_end.size() - begin_pos, a_replacement);
        from = begin_pos + a_replacement.size();
        if (a_begin.empty() && a_end.empty()) {
            ++from;
        }
    }
}

utf16_string toupper_string(const utf16_string& a_text) {
    utf16_string result(a_text);
    for (auto& unit : result) {
        if (unit < 256) {
            unit = static_cast<char16_t>(std::toupper(static_cast<int>(unit)));
        }
    }
    return result;
}

std::string toupper_string(const std::string& a_text) {
    std::string result(a_text);
    for (auto& byte : result) {
        byte = static_cast<char>(std::toupper(static_cast<unsigned char>(byte)));
    }
    return result;
}

bool is_same_extensions(const utf16_string& a_first, const utf16_string& a_second) {
    return toupper_string(a_first) == toupper_string(a_second);
}

utf16_string convert_integer_to_string(std::int32_t a_value) {
    return string_encode::MultiByteUTF8ToWideChar(std::to_string(a_value).c_str());
}

utf16_string cut_code_units(const utf16_string& a_text, std::size_t a_limit) {
    if (a_text.size() <= a_limit) {
        return a_text;
    }
    std::size_t length = a_limit;
    if (length > 0 && a_text[length - 1] >= 0xD800 && a_text[length - 1] <= 0xDBFF &&
        a_text[length] >= 0xDC00 && a_text[length] <= 0xDFFF) {
        --length;
    }
    return a_text.substr(0, length);
}

} // namespace qiro_plugin::utility

#include "cases/comment_text.hpp"

#include <string_view>

namespace qiro_plugin::cases {

namespace {

// The bridges' wrapper around a plain comment, up to the heading's text and after the body.
constexpr std::string_view wrapper_start =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" ?><html xmlns=\"http://www.w3.org/1999/xhtml\">"
    "<head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\" /></head>"
    "<body><h2>";
constexpr std::string_view heading_end = "</h2>";
constexpr std::string_view wrapper_end = "</body></html>";
constexpr std::string_view line_break = "<br />";

// The five entities the bridges write; "&amp;" last, so that "&amp;lt;" stays "&lt;".
std::string unescaped(std::string_view a_text) {
    static constexpr std::pair<std::string_view, char> entities[] = {
        {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}, {"&amp;", '&'}};
    std::string result;
    result.reserve(a_text.size());
    for (std::size_t at = 0; at < a_text.size();) {
        bool replaced = false;
        if (a_text[at] == '&') {
            for (const auto& [entity, character] : entities) {
                if (a_text.substr(at, entity.size()) == entity) {
                    result += character;
                    at += entity.size();
                    replaced = true;
                    break;
                }
            }
        }
        if (!replaced) {
            result += a_text[at++];
        }
    }
    return result;
}

std::string without_markup(std::string_view a_document) {
    std::string text;
    bool in_markup = false;
    for (const char item : a_document) {
        if (in_markup) {
            in_markup = item != '>';
        } else if (item == '<') {
            in_markup = true;
        } else {
            text += item;
        }
    }
    return unescaped(text);
}

} // namespace

std::string comment_text(const std::string& a_comment) {
    const std::string_view comment = a_comment;
    if (!comment.starts_with(wrapper_start) || !comment.ends_with(wrapper_end)) {
        return without_markup(comment);
    }
    const std::size_t heading = comment.find(heading_end, wrapper_start.size());
    if (heading == std::string_view::npos) {
        return without_markup(comment);
    }
    const std::size_t start = heading + heading_end.size();
    std::string_view body = comment.substr(start, comment.size() - wrapper_end.size() - start);
    std::string returned;
    for (std::size_t at = 0; at < body.size();) {
        const std::size_t found = body.find(line_break, at);
        returned += unescaped(
            body.substr(at, found == std::string_view::npos ? body.size() - at : found - at));
        if (found == std::string_view::npos) {
            break;
        }
        returned += "\\n";
        at = found + line_break.size();
    }
    return returned;
}

} // namespace qiro_plugin::cases

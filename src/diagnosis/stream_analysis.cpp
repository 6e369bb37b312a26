#include "diagnosis/stream_analysis.hpp"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace qiro_plugin::diagnosis {

namespace {

constexpr std::string_view document_header = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>";
constexpr std::string_view document_end = "</itemlist>\n";

// The length of the valid sequence at a_at, or 0 when none starts there.
std::size_t sequence_length(std::string_view a_bytes, std::size_t a_at) {
    const auto byte = [&](std::size_t a_index) {
        return static_cast<unsigned char>(a_bytes[a_index]);
    };
    const unsigned char lead = byte(a_at);
    if (lead < 0x80) {
        return 1;
    }
    std::size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;  // no overlong forms
        high = lead == 0xED ? 0x9F : 0xBF; // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF; // nothing above U+10FFFF
    } else {
        return 0;
    }
    if (a_at + length > a_bytes.size()) {
        return 0;
    }
    for (std::size_t index = 1; index < length; ++index) {
        const unsigned char next = byte(a_at + index);
        if (next < (index == 1 ? low : 0x80) || next > (index == 1 ? high : 0xBF)) {
            return 0;
        }
    }
    return length;
}

// Whether the bytes at a_at are one of the lax sequences of a surrogate (U+D800 to U+DFFF,
// ED A0..BF xx) or of a code point past U+10FFFF (F4 90.. and the lead bytes above it).
utf8_fault::kind lax_kind(std::string_view a_bytes, std::size_t a_at) {
    const auto byte = [&](std::size_t a_index) {
        return static_cast<unsigned char>(a_bytes[a_index]);
    };
    const unsigned char lead = byte(a_at);
    std::size_t length = 0;
    auto kind = utf8_fault::kind::invalid;
    if (lead == 0xED && a_at + 1 < a_bytes.size() && byte(a_at + 1) >= 0xA0) {
        length = 3;
        kind = utf8_fault::kind::surrogate;
    } else if ((lead == 0xF4 && a_at + 1 < a_bytes.size() && byte(a_at + 1) >= 0x90) ||
               (lead >= 0xF5 && lead <= 0xF7)) {
        length = 4;
        kind = utf8_fault::kind::above_unicode;
    } else if (lead >= 0xF8 && lead <= 0xFD) {
        length = lead <= 0xFB ? 5 : 6;
        kind = utf8_fault::kind::above_unicode;
    } else {
        return utf8_fault::kind::invalid;
    }
    if (a_at + length > a_bytes.size()) {
        return utf8_fault::kind::invalid;
    }
    for (std::size_t index = 1; index < length; ++index) {
        if (byte(a_at + index) < 0x80 || byte(a_at + index) > 0xBF) {
            return utf8_fault::kind::invalid;
        }
    }
    return kind;
}

std::uint32_t line_of(std::string_view a_text, std::size_t a_offset) {
    return static_cast<std::uint32_t>(
        1 +
        std::count(a_text.begin(), a_text.begin() + static_cast<std::ptrdiff_t>(a_offset), '\n'));
}

stray_text make_stray(std::string_view a_output, std::size_t a_begin, std::size_t a_end) {
    stray_text stray;
    stray.offset = a_begin;
    stray.text = std::string(a_output.substr(a_begin, a_end - a_begin));
    stray.first_line = line_of(a_output, a_begin);
    // A text ending in a line break ends on the line before it.
    const std::size_t last = a_end > a_begin && a_output[a_end - 1] == '\n' ? a_end - 1 : a_end;
    stray.last_line = line_of(a_output, std::max(last, a_begin));
    return stray;
}

} // namespace

std::optional<utf8_fault> find_utf8_fault(std::string_view a_bytes) {
    for (std::size_t at = 0; at < a_bytes.size();) {
        // ASCII runs are the common case; skip them without the table of ranges.
        if (static_cast<unsigned char>(a_bytes[at]) < 0x80) {
            ++at;
            continue;
        }
        const std::size_t length = sequence_length(a_bytes, at);
        if (length == 0) {
            utf8_fault fault;
            fault.offset = at;
            fault.what = lax_kind(a_bytes, at);
            const std::size_t end = std::min(a_bytes.size(), at + 4);
            for (std::size_t index = at; index < end; ++index) {
                char hex[8];
                std::snprintf(hex, sizeof hex, "%s0x%02X", index == at ? "" : " ",
                              static_cast<unsigned char>(a_bytes[index]));
                fault.bad_bytes += hex;
            }
            return fault;
        }
        at += length;
    }
    return std::nullopt;
}

bool has_document_header(std::string_view a_std_output) {
    return a_std_output.find(document_header) != std::string_view::npos;
}

std::vector<stray_text> find_stray_output(std::string_view a_std_output) {
    std::vector<stray_text> strays;
    // The plug-in writes before the bridge, so the bridge's header is the last one.
    const std::size_t header = a_std_output.rfind(document_header);
    if (header == std::string_view::npos) {
        return strays;
    }
    if (header > 0) {
        strays.push_back(make_stray(a_std_output, 0, header));
    }
    const std::size_t end = a_std_output.find(document_end, header);
    if (end != std::string_view::npos && end + document_end.size() < a_std_output.size()) {
        strays.push_back(make_stray(a_std_output, end + document_end.size(), a_std_output.size()));
    }
    return strays;
}

std::optional<parse_fault> find_parse_fault(std::string_view a_text) {
    if (a_text.empty()) {
        return parse_fault{1, 1, 0, "Document is empty"};
    }
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> context(xmlNewParserCtxt(),
                                                                               &xmlFreeParserCtxt);
    if (!context) {
        return std::nullopt;
    }
    const int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    const xmlDocPtr document = xmlCtxtReadMemory(
        context.get(), a_text.data(), static_cast<int>(a_text.size()), nullptr, nullptr, options);
    if (document != nullptr) {
        xmlFreeDoc(document);
        return std::nullopt;
    }
    parse_fault fault;
    const xmlError* error = xmlCtxtGetLastError(context.get());
    fault.line = error != nullptr && error->line > 0 ? static_cast<std::uint32_t>(error->line) : 1;
    fault.column =
        error != nullptr && error->int2 > 0 ? static_cast<std::uint32_t>(error->int2) : 1;
    if (error != nullptr && error->message != nullptr) {
        fault.message = error->message;
        while (!fault.message.empty() &&
               (fault.message.back() == '\n' || fault.message.back() == ' ')) {
            fault.message.pop_back();
        }
    }
    std::size_t offset = 0;
    for (std::uint32_t line = 1; line < fault.line && offset < a_text.size(); ++line) {
        const std::size_t next = a_text.find('\n', offset);
        offset = next == std::string_view::npos ? a_text.size() : next + 1;
    }
    fault.offset = std::min<std::size_t>(offset + fault.column - 1, a_text.size());
    return fault;
}

} // namespace qiro_plugin::diagnosis

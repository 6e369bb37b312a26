#pragma once
// Text between the core's UTF-16 strings and Qt's, unit for unit.

#include "text/utf16_string.hpp"

#include <QString>

namespace qiro_plugin::debugger {

inline QString to_qstring(const utf16_string& a_text) {
    return QString::fromUtf16(a_text.data(), static_cast<qsizetype>(a_text.size()));
}

inline utf16_string to_utf16(const QString& a_text) {
    return utf16_string(reinterpret_cast<const char16_t*>(a_text.utf16()),
                        static_cast<std::size_t>(a_text.size()));
}

} // namespace qiro_plugin::debugger

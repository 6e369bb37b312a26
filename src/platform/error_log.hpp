#pragma once
// The input method's error log: time-stamped Shift_JIS lines in two rotating files.

#include "text/utf16_string.hpp"

namespace qiro_plugin::utility {

// Appends one line to qirolumen_0.txt or qirolumen_1.txt in the user folder's "Logs";
// best effort, never throws.
void output_error_log(const utf16_string& a_message);

} // namespace qiro_plugin::utility

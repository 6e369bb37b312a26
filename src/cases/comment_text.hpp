#pragma once
// The plain comment an author returned, read back from the XHTML document the host receives.

#include <string>

namespace qiro_plugin::cases {

// a_comment is the candidate's comment as the host receives it (UTF-8). The bridges wrap a
// plain comment in an XHTML document with the title as heading and a backslash-n as a line
// break: that comment comes back as returned (the line break as the two characters \n again).
// A document the plug-in wrote itself (comment_xhtml) gives its text without the markup.
std::string comment_text(const std::string& a_comment);

} // namespace qiro_plugin::cases

#pragma once
// SHA-1 digest of a byte string as 40 upper-case hexadecimal digits.

#include <string>

namespace qiro_plugin {

// The empty text gives the empty string, not the digest of nothing.
std::string create_sha_hash(const std::string& a_text);

} // namespace qiro_plugin

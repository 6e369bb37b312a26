#pragma once
// Per-thread cache of iconv conversion handles; an iconv_t must not be shared between threads.

#include <iconv.h>

namespace qiro_plugin::string_encode::detail {

// Returns a reset handle from a_from to a_to, or (iconv_t)-1 when glibc has no such conversion.
iconv_t cached_iconv(const char* a_to, const char* a_from);

} // namespace qiro_plugin::string_encode::detail

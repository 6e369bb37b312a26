#pragma once
// Assertion for misuse of the XML layer: prints where and what failed, then ends the process.

namespace xml_access_library::detail {

[[noreturn]] void report_failed_assertion(const char* a_file, unsigned a_line,
                                          const char* a_condition);

} // namespace xml_access_library::detail

// Stays active in release builds: a handle without a node must never be followed.
#define XML_ACCESS_ASSERT(a_condition)                                                             \
    ((a_condition) ? static_cast<void>(0)                                                          \
                   : ::xml_access_library::detail::report_failed_assertion(__FILE__, __LINE__,     \
                                                                           #a_condition))

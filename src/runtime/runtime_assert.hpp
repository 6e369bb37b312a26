#pragma once
// Assertion for programming errors: prints where and what failed, then ends the process.

namespace qiro_plugin::detail {

[[noreturn]] void report_failed_assertion(const char* a_file, unsigned a_line,
                                          const char* a_condition);

} // namespace qiro_plugin::detail

// Unlike assert(), this stays active in release builds: the host relies on it.
#define QIRO_RUNTIME_ASSERT(a_condition)                                                           \
    ((a_condition)                                                                                 \
         ? static_cast<void>(0)                                                                    \
         : ::qiro_plugin::detail::report_failed_assertion(__FILE__, __LINE__, #a_condition))

// For conditions whose reported text must differ from the expression that tests them.
#define QIRO_RUNTIME_ASSERT_TEXT(a_condition, a_text)                                              \
    ((a_condition) ? static_cast<void>(0)                                                          \
                   : ::qiro_plugin::detail::report_failed_assertion(__FILE__, __LINE__, a_text))

#pragma once
// The check for programming errors: report where and what failed, then end the process.

namespace qiro_plugin::utility {

// Prints "<file>:<line>: failed assertion `<condition>'" to standard error and aborts.
[[noreturn]] void failed_assertion(const char* a_file, unsigned int a_line,
                                   const char* a_condition);

} // namespace qiro_plugin::utility

// Unlike assert(), it stays active in release builds: hosts rely on a misuse ending the process.
#define QIRO_ASSERT(a_condition)                                                                   \
    ((a_condition) ? static_cast<void>(0)                                                          \
                   : ::qiro_plugin::utility::failed_assertion(__FILE__, __LINE__, #a_condition))

// For conditions whose reported text must differ from the expression that tests them.
#define QIRO_ASSERT_TEXT(a_condition, a_text)                                                      \
    ((a_condition) ? static_cast<void>(0)                                                          \
                   : ::qiro_plugin::utility::failed_assertion(__FILE__, __LINE__, a_text))

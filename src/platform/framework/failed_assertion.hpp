#pragma once
// The check for programming errors of the framework shims: report and end the process.

namespace qiro_plugin::utility {

// Prints "<file>:<line>: failed assertion `<condition>'" to standard error and aborts.
[[noreturn]] void failed_assertion(const char* a_file, unsigned int a_line,
                                   const char* a_condition);

} // namespace qiro_plugin::utility

#define QIRO_FRAMEWORK_ASSERT(a_condition)                                                         \
    ((a_condition) ? static_cast<void>(0)                                                          \
                   : ::qiro_plugin::utility::failed_assertion(__FILE__, __LINE__, #a_condition))

#include "runtime/runtime_assert.hpp"

#include <cstdio>
#include <cstdlib>

namespace qiro_plugin::detail {

void report_failed_assertion(const char* a_file, unsigned a_line, const char* a_condition) {
    std::fprintf(stderr, "%s:%u: failed assertion `%s'\n", a_file, a_line, a_condition);
    std::fflush(stderr);
    std::abort();
}

} // namespace qiro_plugin::detail

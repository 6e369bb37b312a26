#include "platform/failed_assertion.hpp"

#include <cstdio>
#include <cstdlib>

namespace qiro_plugin::utility {

void failed_assertion(const char* a_file, unsigned int a_line, const char* a_condition) {
    std::fprintf(stderr, "%s:%u: failed assertion `%s'\n", a_file, a_line, a_condition);
    std::fflush(stderr);
    std::abort();
}

} // namespace qiro_plugin::utility

#include "diagnosis/interpreter_lookup.hpp"

#include <climits>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

namespace qiro_plugin::diagnosis {

std::string describe_interpreter(const std::string& a_command) {
    const char* path = std::getenv("PATH");
    std::string folders = path != nullptr ? path : "/usr/bin:/bin";
    std::size_t start = 0;
    while (start <= folders.size()) {
        std::size_t end = folders.find(':', start);
        if (end == std::string::npos) {
            end = folders.size();
        }
        std::string folder = folders.substr(start, end - start);
        start = end + 1;
        const std::string candidate =
            (folder.empty() ? std::string(".") : folder) + "/" + a_command;
        if (::access(candidate.c_str(), X_OK) != 0) {
            continue;
        }
        std::string result = candidate;
        char real[PATH_MAX];
        if (::realpath(candidate.c_str(), real) != nullptr && candidate != real) {
            result += std::string(" -> ") + real;
        }
        std::ifstream stream(candidate, std::ios::binary);
        char magic[2] = {};
        if (stream.read(magic, 2) && magic[0] == '#' && magic[1] == '!') {
            result += ", a script";
        }
        return result;
    }
    return "not on PATH";
}

} // namespace qiro_plugin::diagnosis

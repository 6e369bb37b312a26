#include "diagnosis/companion_check.hpp"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace qiro_plugin::diagnosis {

namespace {

// The document readers refuse anything longer.
constexpr std::uint64_t document_limit = 10'485'760;

} // namespace

std::string companion_path(const std::string& a_plugin_path) {
    const std::size_t dot = a_plugin_path.rfind('.');
    const std::size_t slash = a_plugin_path.rfind('/');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
        return a_plugin_path + ".xml";
    }
    return a_plugin_path.substr(0, dot) + ".xml";
}

std::optional<companion_fault> check_companion(const std::string& a_plugin_path) {
    companion_fault fault;
    fault.path = companion_path(a_plugin_path);
    struct stat status {};
    if (::stat(fault.path.c_str(), &status) != 0) {
        return std::nullopt; // no companion: the defaults are meant
    }
    if (!S_ISREG(status.st_mode)) {
        fault.reason = "not a regular file";
        return fault;
    }
    if (static_cast<std::uint64_t>(status.st_size) > document_limit) {
        fault.reason = std::to_string(status.st_size) + " bytes, over the limit of 10,485,760";
        return fault;
    }
    std::ifstream stream(fault.path, std::ios::binary);
    if (!stream) {
        fault.reason = std::strerror(errno);
        return fault;
    }
    const std::string text{std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>()};
    fault.parse = find_parse_fault(text);
    if (!fault.parse) {
        return std::nullopt;
    }
    return fault;
}

} // namespace qiro_plugin::diagnosis

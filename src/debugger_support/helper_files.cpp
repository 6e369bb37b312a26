#include "debugger_support/helper_files.hpp"

#include "debugger_support/stored_helpers.hpp"
#include "text/url_xml_escape.hpp"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace qiro_plugin::debugger_support {

const std::string& helper_script(std::string_view a_language) {
    static const std::string perl = utility::url_decode(
        std::string(bridge::stored::debug_helper_perl, bridge::stored::debug_helper_perl_size));
    static const std::string ruby = utility::url_decode(
        std::string(bridge::stored::debug_helper_ruby, bridge::stored::debug_helper_ruby_size));
    static const std::string python = utility::url_decode(
        std::string(bridge::stored::debug_helper_python, bridge::stored::debug_helper_python_size));
    static const std::string none;
    if (a_language == "perl") {
        return perl;
    }
    if (a_language == "ruby") {
        return ruby;
    }
    return a_language == "python" ? python : none;
}

private_folder::private_folder(const std::string& a_parent) {
    std::string pattern = a_parent;
    if (!pattern.empty() && pattern.back() != '/') {
        pattern += '/';
    }
    pattern += "qiro-lumen-debug-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (::mkdtemp(buffer.data()) == nullptr) {
        throw std::runtime_error("private_folder::private_folder() : " + pattern + ": " +
                                 std::strerror(errno));
    }
    m_path = buffer.data();
}

private_folder::~private_folder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string private_folder::write_file(const std::string& a_name,
                                       const std::string& a_content) const {
    const std::string path = m_path + "/" + a_name;
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd == -1) {
        throw std::runtime_error("private_folder::write_file() : " + path + ": " +
                                 std::strerror(errno));
    }
    std::size_t written = 0;
    while (written < a_content.size()) {
        const ssize_t step = ::write(fd, a_content.data() + written, a_content.size() - written);
        if (step < 0 && errno == EINTR) {
            continue;
        }
        if (step <= 0) {
            const int error = errno;
            ::close(fd);
            throw std::runtime_error("private_folder::write_file() : " + path + ": " +
                                     std::strerror(error));
        }
        written += static_cast<std::size_t>(step);
    }
    ::close(fd);
    return path;
}

} // namespace qiro_plugin::debugger_support

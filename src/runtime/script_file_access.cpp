#include "runtime/script_file_access.hpp"

#include "text/url_xml_escape.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace qiro_plugin {

namespace {

[[noreturn]] void throw_fault() {
    throw std::runtime_error("script_file_access::script_file_access() : fault.");
}

// Closes the descriptor on every path out of the constructor.
class file_descriptor {
public:
    explicit file_descriptor(int a_descriptor) : m_descriptor(a_descriptor) {}
    ~file_descriptor() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    file_descriptor(const file_descriptor&) = delete;
    file_descriptor& operator=(const file_descriptor&) = delete;
    int get() const { return m_descriptor; }
    // Reports a failed close, which is where a full disk may first show.
    bool close() {
        const int descriptor = m_descriptor;
        m_descriptor = -1;
        return ::close(descriptor) == 0;
    }

private:
    int m_descriptor;
};

bool write_all(int a_descriptor, const std::string& a_bytes) {
    std::size_t written = 0;
    while (written < a_bytes.size()) {
        const ssize_t count =
            ::write(a_descriptor, a_bytes.data() + written, a_bytes.size() - written);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        written += static_cast<std::size_t>(count);
    }
    return true;
}

// Reads the text of a file up to its first NUL byte, giving up (false) once it is longer than
// a_limit bytes, since it then cannot equal the expected text.
bool read_text(int a_descriptor, std::size_t a_limit, std::string& a_text) {
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(a_descriptor, buffer, sizeof buffer);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        if (count == 0) {
            return true;
        }
        const auto* terminator =
            static_cast<const char*>(std::memchr(buffer, '\0', static_cast<std::size_t>(count)));
        a_text.append(buffer, terminator != nullptr ? static_cast<std::size_t>(terminator - buffer)
                                                    : static_cast<std::size_t>(count));
        if (a_text.size() > a_limit) {
            return false;
        }
        if (terminator != nullptr) {
            return true;
        }
    }
}

// Every command of a run, and every run of a soak, writes the same bridge: the last decoding
// is kept per thread, so that it is not done again for each command.
const std::string& decoded_script(const std::string& a_encoded) {
    thread_local std::string encoded;
    thread_local std::string decoded;
    if (a_encoded != encoded) {
        decoded = utility::url_decode(a_encoded);
        encoded = a_encoded;
    }
    return decoded;
}

// A file left from an earlier command is reused only when its text equals the script.
void accept_existing_file(const std::string& a_path, const std::string& a_script) {
    file_descriptor existing(
        ::open(a_path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (existing.get() < 0 || ::fstat(existing.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        throw_fault();
    }
    std::string text;
    if (!read_text(existing.get(), a_script.size(), text) || text != a_script) {
        throw_fault();
    }
}

} // namespace

script_file_access::script_file_access(const std::string& a_folder, const std::string& a_file_name,
                                       const std::string& a_encoded_script)
    : m_path(a_folder + a_file_name) {
    const std::string& script = decoded_script(a_encoded_script);
    file_descriptor created(
        ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (created.get() < 0) {
        if (errno != EEXIST) {
            throw_fault();
        }
        accept_existing_file(m_path, script);
        return;
    }
    if (!write_all(created.get(), script) || !created.close()) {
        ::unlink(m_path.c_str());
        throw_fault();
    }
}

script_file_access::~script_file_access() {
    std::remove(m_path.c_str());
}

} // namespace qiro_plugin

#include "platform/failed_assertion.hpp"
#include "runtime/instance_script_impl.hpp"
#include "text/string_encode.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qiro_plugin {

namespace {

// The document reader refuses longer texts: reading one byte more than this is enough for
// it to say so.
constexpr std::size_t PREFERENCE_DOCUMENT_LIMIT = 10485760;

// The text of a regular file up to its first NUL byte, at most one byte over the limit; false
// when it cannot be read. A FIFO or device beside the plug-in must not block the load.
bool read_document(const std::string& a_path, std::string& a_text) {
    const int descriptor = ::open(a_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    struct stat status {};
    bool is_read = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    char buffer[65536];
    while (is_read && a_text.size() <= PREFERENCE_DOCUMENT_LIMIT) {
        const ssize_t count =
            ::read(descriptor, buffer,
                   std::min(sizeof buffer, PREFERENCE_DOCUMENT_LIMIT + 1 - a_text.size()));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            is_read = count == 0;
            break;
        }
        const auto* terminator =
            static_cast<const char*>(std::memchr(buffer, '\0', static_cast<std::size_t>(count)));
        if (terminator != nullptr) {
            a_text.append(buffer, static_cast<std::size_t>(terminator - buffer));
            break;
        }
        a_text.append(buffer, static_cast<std::size_t>(count));
    }
    ::close(descriptor);
    return is_read;
}

} // namespace

xml_access_library::script_preference::plugin_preference_data
qiro_plugin_instance_script::impl::get_plugin_preference() const {
    std::string plugin_preference_path_file =
        string_encode::WideCharToMultiByteFilePath(m_plugin_file_path.c_str());
    QIRO_ASSERT(plugin_preference_path_file.size() > m_scripy_extension_name.size());
    plugin_preference_path_file.replace(plugin_preference_path_file.size() -
                                            m_scripy_extension_name.size(),
                                        std::string::npos, ".xml");

    std::string text;
    if (!read_document(plugin_preference_path_file, text)) {
        return {};
    }
    // A document over the reader's limit throws here and the plug-in does not load; one that
    // does not parse leaves the defaults.
    xml_access_library::script_preference reader(text);
    if (reader.parse()) {
        return reader.get_plugin_preference_data();
    }
    return {};
}

} // namespace qiro_plugin

#include "platform/failed_assertion.hpp"
#include "runtime/instance_script_impl.hpp"
#include "text/string_encode.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>

namespace qiro_plugin {

namespace {

// The document reader refuses longer texts, so nothing beyond this is worth reading.
constexpr std::size_t PREFERENCE_DOCUMENT_LIMIT = 10485760;

// The text of a regular file up to its first NUL byte; false when it cannot be read or is
// longer than the limit. A FIFO or device beside the plug-in must not block the load.
bool read_document(const std::string& a_path, std::string& a_text) {
    const int descriptor = ::open(a_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    struct stat status {};
    bool is_read = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    char buffer[65536];
    while (is_read) {
        const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            is_read = count == 0;
            break;
        }
        a_text.append(buffer, static_cast<std::size_t>(count));
        is_read = a_text.size() <= PREFERENCE_DOCUMENT_LIMIT;
    }
    ::close(descriptor);
    if (is_read) {
        a_text.resize(std::min(a_text.size(), a_text.find('\0')));
    }
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
    try {
        xml_access_library::script_preference reader(text);
        if (reader.parse()) {
            return reader.get_plugin_preference_data();
        }
    } catch (const std::exception&) {
        // A document the reader refuses counts as missing: the plug-in loads with defaults.
    }
    return {};
}

} // namespace qiro_plugin

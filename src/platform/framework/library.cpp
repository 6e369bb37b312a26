#include "platform/framework/library.hpp"

#include "platform/failed_assertion.hpp"

#include <QFile>
#include <QString>

#include <dlfcn.h>

#include <map>
#include <mutex>

namespace qiro_plugin::utility {

namespace {

// dlopen counts its own references but does not tell them, so the loads handed out are
// counted here to know which release would be the last one.
struct load_counts {
    std::mutex m_mutex;
    std::map<library_handle, unsigned long> m_counts;
};

load_counts& counts() {
    static load_counts instance;
    return instance;
}

} // namespace

library_handle load_library(const utf16_string& a_path) {
    if (a_path.empty() || a_path.find(u'\0') != utf16_string::npos) {
        return nullptr;
    }
    QByteArray path =
        QFile::encodeName(QString::fromUtf16(a_path.data(), static_cast<qsizetype>(a_path.size())));
    // Without a slash dlopen would search the library path instead of opening the file.
    if (!path.contains('/')) {
        path.prepend("./");
    }
    library_handle handle = dlopen(path.constData(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        return nullptr;
    }
    std::lock_guard lock(counts().m_mutex);
    ++counts().m_counts[handle];
    return handle;
}

library_function get_function_address(library_handle a_instance_handle, const char* a_name) {
    QIRO_ASSERT(a_instance_handle);
    if (a_name == nullptr) {
        return nullptr;
    }
    return reinterpret_cast<library_function>(dlsym(a_instance_handle, a_name));
}

int free_library(library_handle a_instance_handle) {
    QIRO_ASSERT(a_instance_handle);
    std::lock_guard lock(counts().m_mutex);
    auto found = counts().m_counts.find(a_instance_handle);
    if (found != counts().m_counts.end() && found->second > 1) {
        --found->second;
        dlclose(a_instance_handle);
    }
    return 1;
}

} // namespace qiro_plugin::utility

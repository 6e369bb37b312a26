#include "platform/error_log.hpp"

#include "platform/data_folder.hpp"
#include "platform/folder_access.hpp"
#include "text/string_encode.hpp"

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace qiro_plugin::utility {

namespace {

constexpr mode_t log_folder_mode = 0700;
constexpr mode_t log_file_mode = 0600;
// A file has room while it is below this size; the test comes before the append, so a file
// may end one line past it.
constexpr off_t log_size_limit = 1048576;

struct log_file {
    std::string path;
    detail::entry_kind kind;
};

std::optional<off_t> file_size(const std::string& a_path) {
    struct stat status {};
    if (::stat(a_path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return status.st_size;
}

std::optional<timespec> modification_time(const std::string& a_path) {
    struct stat status {};
    if (::stat(a_path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return status.st_mtim;
}

bool is_later(const timespec& a_first, const timespec& a_second) {
    return a_first.tv_sec != a_second.tv_sec ? a_first.tv_sec > a_second.tv_sec
                                             : a_first.tv_nsec > a_second.tv_nsec;
}

bool has_room(off_t a_size) {
    return a_size < log_size_limit;
}

bool remove_file(const std::string& a_path) {
    return ::unlink(a_path.c_str()) == 0;
}

// One existing file, the other missing: keep writing into it while it has room, else start
// the other one. A file whose size cannot be read is started afresh.
std::optional<std::string> choose_single(const std::string& a_existing,
                                         const std::string& a_other) {
    if (const auto size = file_size(a_existing)) {
        return has_room(*size) ? a_existing : a_other;
    }
    return remove_file(a_existing) ? a_existing : a_other;
}

std::optional<std::string> choose_between(const std::string& a_first, const std::string& a_second) {
    const auto first_time = modification_time(a_first);
    if (!first_time) {
        return remove_file(a_first) ? std::optional(a_first) : std::nullopt;
    }
    const auto second_time = modification_time(a_second);
    if (!second_time) {
        return remove_file(a_second) ? std::optional(a_second) : std::nullopt;
    }
    // A tie goes to the second file.
    const bool first_newer = is_later(*first_time, *second_time);
    const std::string& newer = first_newer ? a_first : a_second;
    const std::string& older = first_newer ? a_second : a_first;
    if (const auto size = file_size(newer); size && has_room(*size)) {
        return newer;
    }
    if (const auto size = file_size(older); size && has_room(*size)) {
        return older;
    }
    return remove_file(older) ? std::optional(older) : std::nullopt;
}

std::optional<std::string> choose_target(const log_file& a_first, const log_file& a_second) {
    if (!a_first.kind.exists && !a_second.kind.exists) {
        return a_first.path;
    }
    if (!a_first.kind.exists) {
        return choose_single(a_second.path, a_first.path);
    }
    if (!a_second.kind.exists) {
        return choose_single(a_first.path, a_second.path);
    }
    return choose_between(a_first.path, a_second.path);
}

std::string time_stamp() {
    // The stamp is digits only, so the locale plays no part; only the time zone does.
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    if (::localtime_r(&now, &local) == nullptr) {
        return {};
    }
    char text[80];
    std::snprintf(text, sizeof text, "%04d/%02d/%02d %02d:%02d:%02d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    return text;
}

std::string log_line(const utf16_string& a_message) {
    std::string message;
    try {
        message = string_encode::WideCharToMultiByteShiftJis(a_message.c_str());
    } catch (...) {
        message.clear();
    }
    return time_stamp() + "\t[" + message + "]\r\n";
}

bool append_line(const std::string& a_path, const std::string& a_line) {
    const int created =
        ::open(a_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, log_file_mode);
    if (created != -1) {
        ::fchmod(created, log_file_mode);
        ::close(created);
    }
    const int fd = ::open(a_path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (fd == -1) {
        return false;
    }
    std::size_t written = 0;
    while (written < a_line.size()) {
        const ssize_t count = ::write(fd, a_line.data() + written, a_line.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        written += static_cast<std::size_t>(count);
    }
    ::close(fd);
    return written == a_line.size();
}

void write_log(const utf16_string& a_message) {
    const std::string line = log_line(a_message);
    const std::string folder = get_qiro_user_folder() + "Logs";
    const auto kind = detail::find_entry(folder);
    if (!kind.exists) {
        // A folder made just now is taken as a folder and the line goes into it.
        if (!detail::create_folder(folder, log_folder_mode)) {
            return;
        }
    } else if (!kind.is_folder) {
        return;
    }
    const log_file first{folder + "/qirolumen_0.txt",
                         detail::find_entry(folder + "/qirolumen_0.txt")};
    const log_file second{folder + "/qirolumen_1.txt",
                          detail::find_entry(folder + "/qirolumen_1.txt")};
    if (first.kind.is_folder || second.kind.is_folder) {
        return;
    }
    if (const auto target = choose_target(first, second)) {
        append_line(*target, line);
    }
}

} // namespace

void output_error_log(const utf16_string& a_message) {
    try {
        write_log(a_message);
    } catch (...) {
        // The log is best effort: a missing home or a full disk must not reach the caller.
    }
}

} // namespace qiro_plugin::utility

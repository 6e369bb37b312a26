#include "platform/command_runner.hpp"

#include "platform/child_process.hpp"
#include "platform/command_environment.hpp"
#include "platform/command_executor.hpp"
#include "platform/output_stream.hpp"
#include "platform/running_commands.hpp"
#include "platform/sandbox.hpp"
#include "platform/std_error_watch.hpp"
#include "text/string_encode.hpp"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <memory>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

namespace qiro_plugin::utility {

namespace {

// A chatty child cannot exhaust the host's memory: past this the stream is drained and dropped.
constexpr std::size_t stream_limit = 64 * 1024 * 1024;
constexpr std::chrono::milliseconds pass_length{100};
// The counter counts passes of 100, not elapsed time; the child is abandoned after the pass
// that starts at 30000.
constexpr std::int32_t pass_step = 100;
constexpr std::int32_t timeout_counter = 29999;

std::atomic<std::uint64_t> started_commands{0};

std::mutex hook_mutex;
std::shared_ptr<const std::function<void()>> wait_hook;

std::shared_ptr<const std::function<void()>> current_wait_hook() {
    std::lock_guard lock(hook_mutex);
    return wait_hook;
}

// The shell cannot start in a folder that is not there; say so where the author looks for
// errors, as a command that failed would.
int report_missing_folder(const utf16_string& a_folder, const std::string& a_path, int a_error,
                          std::vector<char>& a_std_output, std::vector<char>& a_std_error,
                          run_command_report* a_report) {
    std::string shown = a_path;
    if (shown.empty()) {
        try {
            shown = string_encode::WideCharToMultiByteUTF8(a_folder.c_str());
        } catch (...) {
            shown.clear();
        }
    }
    const std::string message = "run_command: cannot enter the working folder \"" + shown +
                                "\": " + std::strerror(a_error) + "\n";
    a_std_output.clear();
    a_std_error.assign(message.begin(), message.end());
    a_std_error.push_back('\0');
    if (a_report != nullptr) {
        *a_report = run_command_report{};
    }
    return 0;
}

// The error a chdir into the folder would meet, or 0 when it would succeed.
int folder_error(const std::string& a_path) {
    if (a_path.empty()) {
        return EILSEQ;
    }
    struct stat status {};
    if (::stat(a_path.c_str(), &status) != 0) {
        return errno;
    }
    if (!S_ISDIR(status.st_mode)) {
        return ENOTDIR;
    }
    return ::access(a_path.c_str(), X_OK) == 0 ? 0 : errno;
}

// Where a confined command starts when the caller names no folder: where the host is.
std::string current_folder() {
    std::vector<char> buffer(4096);
    while (::getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (errno != ERANGE) {
            return "/";
        }
        buffer.resize(buffer.size() * 2);
    }
    return buffer.data();
}

} // namespace

command_executor* offered_command_executor() {
    if (current_sandbox() != nullptr || commands_with_variables() || commands_without_timeout()) {
        return nullptr;
    }
    return current_command_executor();
}

int run_command(const std::string& a_command_line, const utf16_string& a_working_folder,
                std::vector<char>& a_std_output, std::vector<char>& a_std_error, bool a_is_timeout,
                run_command_report* a_report) {
    std::string folder;
    if (!a_working_folder.empty()) {
        folder = string_encode::WideCharToMultiByteFilePath(a_working_folder.c_str());
        if (const int error = folder_error(folder); error != 0) {
            return report_missing_folder(a_working_folder, folder, error, a_std_output, a_std_error,
                                         a_report);
        }
    }
    int std_output_fd = -1;
    int std_error_fd = -1;
    std::vector<std::string> command{"/bin/sh", "-c", a_command_line};
    const sandbox_layout* sandbox = current_sandbox();
    if (sandbox != nullptr) {
        command = sandbox_command(*sandbox, folder.empty() ? current_folder() : folder, command);
    }
    const bool with_timeout = a_is_timeout && !commands_without_timeout();
    auto environment = command_environment_block(environ);
    if (command_executor* executor = offered_command_executor();
        executor != nullptr && !folder.empty()) {
        if (auto result = executor->execute(a_command_line, folder, a_std_output, a_std_error,
                                            a_is_timeout, a_report)) {
            return *result;
        }
    }
    // A stop either comes before the child starts (and is not this command's) or reaches its
    // recorded group and changes the count read here.
    std::unique_ptr<detail::child_process> child;
    std::uint64_t stops_before = 0;
    {
        const auto hold = detail::hold_stops();
        child =
            detail::child_process::start(command, folder, std_output_fd, std_error_fd, environment);
        stops_before = detail::stop_count();
    }
    if (!child) {
        return 1;
    }
    started_commands.fetch_add(1, std::memory_order_relaxed);
    const auto started = std::chrono::steady_clock::now();
    const auto elapsed_ms = [started] {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started)
            .count();
    };
    detail::output_stream std_output(std_output_fd, stream_limit);
    detail::output_stream std_error(std_error_fd, stream_limit);
    const auto hook = current_wait_hook();
    const std_error_watcher* watcher = current_std_error_watcher();
    std::size_t watched_size = 0;

    // A stop ends the command as the time-out does.
    const auto stopped = [stops_before] { return detail::stop_count() != stops_before; };
    const auto end_early = [&](bool a_stopped) {
        if (a_report != nullptr) {
            const auto& kept = std_error.result().data;
            *a_report = run_command_report{};
            a_report->timed_out = true;
            a_report->stopped = a_stopped;
            a_report->partial_std_error.assign(kept.begin(), kept.end());
            a_report->std_error_cut = std_error.cut();
            a_report->std_output_cut = std_output.cut();
            a_report->elapsed_ms = elapsed_ms();
        }
        child->terminate(std_output, std_error);
        return 2;
    };
    for (std::int32_t counter = 0;; counter += pass_step) {
        // A pass lasts its full length unless both streams end within it.
        detail::wait_for_streams(std_output, std_error,
                                 std::chrono::steady_clock::now() + pass_length, true);
        const bool closed = std_output.finished() && std_error.finished();
        // The stop's kill closes the streams of the group, which ends the loop: the check after
        // it decides then. Here only a stop whose streams stay open (something outside the
        // group holds them, or the group went unrecorded).
        if (!closed && stopped()) {
            return end_early(true);
        }
        if (watcher != nullptr && std_error.result().data.size() != watched_size) {
            const auto& kept = std_error.result().data;
            watched_size = kept.size();
            try {
                (*watcher)(std::string_view(kept.data(), kept.size()));
            } catch (...) {
                // Only a view of the run: its failure must not end the command.
            }
        }
        if (hook && *hook) {
            (*hook)();
        }
        if (with_timeout && counter > timeout_counter) {
            return end_early(stopped());
        }
        if (closed) {
            break;
        }
    }
    if (stopped()) {
        return end_early(true);
    }
    child->reap_after_end_of_file();

    std_output.terminate_data();
    std_error.terminate_data();
    a_std_output = std::move(std_output.result().data);
    a_std_error = std::move(std_error.result().data);
    if (a_report != nullptr) {
        a_report->std_output_cut = std_output.cut();
        a_report->std_error_cut = std_error.cut();
        a_report->timed_out = false;
        a_report->partial_std_error.clear();
        a_report->exit_status = child->exit_status();
        a_report->cpu_ms = child->cpu_ms();
        a_report->elapsed_ms = elapsed_ms();
    }
    return 0;
}

std::uint64_t started_command_count() noexcept {
    return started_commands.load(std::memory_order_relaxed);
}

void set_run_command_wait_hook(std::function<void()> a_hook) {
    auto hook = a_hook ? std::make_shared<const std::function<void()>>(std::move(a_hook))
                       : std::shared_ptr<const std::function<void()>>();
    std::lock_guard lock(hook_mutex);
    wait_hook = std::move(hook);
}

} // namespace qiro_plugin::utility

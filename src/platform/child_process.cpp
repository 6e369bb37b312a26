#include "platform/child_process.hpp"

#include "platform/running_commands.hpp"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace qiro_plugin::utility::detail {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kill_grace{2000};
// How long a finished shell may take to become reapable before a background waiter takes over.
constexpr milliseconds exit_grace{50};

void close_fd(int& a_fd) {
    if (a_fd != -1) {
        ::close(a_fd);
        a_fd = -1;
    }
}

// Moves a descriptor above the standard three, so that the child's dup2 onto 1 or 2 never
// finds source and target equal (which would keep close-on-exec set).
bool lift_fd(int& a_fd) {
    if (a_fd > STDERR_FILENO) {
        return true;
    }
    const int lifted = ::fcntl(a_fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(a_fd);
    a_fd = lifted;
    return lifted != -1;
}

struct pipe_pair {
    std::array<int, 2> ends{-1, -1};
    ~pipe_pair() {
        close_fd(ends[0]);
        close_fd(ends[1]);
    }
    bool open() {
        return ::pipe2(ends.data(), O_CLOEXEC) == 0 && lift_fd(ends[0]) && lift_fd(ends[1]) &&
               ::fcntl(ends[0], F_SETFL, O_NONBLOCK) == 0;
    }
    int release_read_end() {
        const int fd = ends[0];
        ends[0] = -1;
        return fd;
    }
};

struct spawn_setup {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    bool actions_ready = false;
    bool attributes_ready = false;
    ~spawn_setup() {
        if (actions_ready) {
            posix_spawn_file_actions_destroy(&actions);
        }
        if (attributes_ready) {
            posix_spawnattr_destroy(&attributes);
        }
    }
    bool prepare(int a_std_output, int a_std_error, const std::string& a_working_folder) {
        actions_ready = posix_spawn_file_actions_init(&actions) == 0;
        attributes_ready = actions_ready && posix_spawnattr_init(&attributes) == 0;
        if (!attributes_ready) {
            return false;
        }
        if (posix_spawn_file_actions_adddup2(&actions, a_std_output, STDOUT_FILENO) != 0 ||
            posix_spawn_file_actions_adddup2(&actions, a_std_error, STDERR_FILENO) != 0) {
            return false;
        }
        if (!a_working_folder.empty() &&
            posix_spawn_file_actions_addchdir_np(&actions, a_working_folder.c_str()) != 0) {
            return false;
        }
        // The child gets a clean signal state: dispositions the host ignores (SIGPIPE, say)
        // and signals it blocks are not inherited by the interpreter.
        sigset_t defaults;
        sigfillset(&defaults);
        sigdelset(&defaults, SIGKILL);
        sigdelset(&defaults, SIGSTOP);
        sigset_t mask;
        sigemptyset(&mask);
        const short flags = POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK;
        return posix_spawnattr_setflags(&attributes, flags) == 0 &&
               posix_spawnattr_setpgroup(&attributes, 0) == 0 &&
               posix_spawnattr_setsigdefault(&attributes, &defaults) == 0 &&
               posix_spawnattr_setsigmask(&attributes, &mask) == 0;
    }
};

int open_exit_fd(pid_t a_pid) {
#ifdef SYS_pidfd_open
    const long fd = ::syscall(SYS_pidfd_open, a_pid, 0);
    // A pidfd is always close-on-exec, so no other thread's child inherits it.
    if (fd >= 0) {
        return static_cast<int>(fd);
    }
#endif
    static_cast<void>(a_pid);
    return -1;
}

// Waits for a child, retrying on signals; ECHILD (a host that auto-reaps) counts as reaped and
// gives no status.
std::optional<int> wait_blocking(pid_t a_pid, std::optional<double>* a_cpu_ms = nullptr) {
    int status = 0;
    pid_t waited = -1;
    struct rusage usage {};
    while ((waited = ::wait4(a_pid, &status, 0, &usage)) == -1 && errno == EINTR) {
    }
    if (waited != a_pid) {
        return std::nullopt;
    }
    if (a_cpu_ms != nullptr) {
        const auto milliseconds_of = [](const timeval& a_time) {
            return static_cast<double>(a_time.tv_sec) * 1000.0 +
                   static_cast<double>(a_time.tv_usec) / 1000.0;
        };
        *a_cpu_ms = milliseconds_of(usage.ru_utime) + milliseconds_of(usage.ru_stime);
    }
    if (WIFEXITED(status)) {
        return WEXITSTATUS(status);
    }
    return WIFSIGNALED(status) ? std::optional<int>(128 + WTERMSIG(status)) : std::nullopt;
}

} // namespace

std::unique_ptr<child_process> child_process::start(const std::string& a_command_line,
                                                    const std::string& a_working_folder,
                                                    int& a_std_output_fd, int& a_std_error_fd) {
    return start({"/bin/sh", "-c", a_command_line}, a_working_folder, a_std_output_fd,
                 a_std_error_fd);
}

std::unique_ptr<child_process> child_process::start(const std::vector<std::string>& a_arguments,
                                                    const std::string& a_working_folder,
                                                    int& a_std_output_fd, int& a_std_error_fd,
                                                    const std::vector<std::string>& a_environment) {
    if (a_arguments.empty()) {
        return nullptr;
    }
    pipe_pair std_output;
    pipe_pair std_error;
    if (!std_output.open() || !std_error.open()) {
        return nullptr;
    }
    spawn_setup setup;
    if (!setup.prepare(std_output.ends[1], std_error.ends[1], a_working_folder)) {
        return nullptr;
    }
    std::vector<std::string> owned = a_arguments;
    std::vector<char*> arguments;
    for (auto& argument : owned) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    std::vector<std::string> owned_environment = a_environment;
    std::vector<char*> environment;
    for (auto& entry : owned_environment) {
        environment.push_back(entry.data());
    }
    environment.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawn(&pid, owned.front().c_str(), &setup.actions, &setup.attributes,
                    arguments.data(), a_environment.empty() ? environ : environment.data()) != 0) {
        return nullptr;
    }
    add_running_group(pid);
    const int exit_fd = open_exit_fd(pid);
    std::unique_ptr<child_process> child(new child_process(pid, exit_fd));
    a_std_output_fd = std_output.release_read_end();
    a_std_error_fd = std_error.release_read_end();
    return child;
}

child_process::child_process(pid_t a_pid, int a_exit_fd) : m_pid(a_pid), m_exit_fd(a_exit_fd) {}

child_process::~child_process() {
    if (!m_reaped) {
        ::kill(-m_pid, SIGKILL);
        remove_running_group(m_pid);
        wait_blocking(m_pid);
    }
    close_fd(m_exit_fd);
}

bool child_process::has_exited() const {
    // WNOWAIT leaves the shell a zombie: while it is unreaped its process group id cannot be
    // reused, so signals to the group never reach a stranger.
    siginfo_t info{};
    const int state = ::waitid(P_PID, static_cast<id_t>(m_pid), &info, WEXITED | WNOHANG | WNOWAIT);
    return (state == 0 && info.si_pid == m_pid) || (state == -1 && errno == ECHILD);
}

void child_process::reap_after_end_of_file() {
    if (m_exit_fd != -1) {
        pollfd exit_poll{m_exit_fd, POLLIN, 0};
        const auto deadline = steady_clock::now() + exit_grace;
        while (!has_exited()) {
            const auto left =
                std::chrono::duration_cast<milliseconds>(deadline - steady_clock::now()).count();
            if (left <= 0 ||
                (::poll(&exit_poll, 1, static_cast<int>(left)) == -1 && errno != EINTR)) {
                break;
            }
        }
    } else {
        const auto deadline = steady_clock::now() + exit_grace;
        while (!has_exited() && steady_clock::now() < deadline) {
            std::this_thread::sleep_for(milliseconds(1));
        }
    }
    if (has_exited()) {
        remove_running_group(m_pid);
        m_exit_status = wait_blocking(m_pid, &m_cpu_ms);
        m_reaped = true;
        return;
    }
    try {
        // Forgotten before the waiter can reap it, so a reused id is never signalled.
        remove_running_group(m_pid);
        std::thread([pid = m_pid] { wait_blocking(pid); }).detach();
        m_reaped = true;
    } catch (...) {
        // Without a thread to wait, the destructor ends the shell rather than leave a zombie.
    }
}

void child_process::terminate(output_stream& a_std_output, output_stream& a_std_error) {
    ::kill(-m_pid, SIGTERM);
    // A stopped member would hold the TERM pending until the KILL; let it act on it now.
    ::kill(-m_pid, SIGCONT);
    const auto deadline = steady_clock::now() + kill_grace;
    for (auto now = steady_clock::now(); now < deadline; now = steady_clock::now()) {
        const bool exited = has_exited();
        const bool ended = a_std_output.finished() && a_std_error.finished();
        if (exited && ended) {
            break;
        }
        const auto slice_end = std::min(deadline, now + milliseconds(10));
        if (!ended) {
            // Keep draining so that a child writing while it shuts down is not stuck on a
            // full pipe.
            wait_for_streams(a_std_output, a_std_error, slice_end, false, exited ? -1 : m_exit_fd);
        } else if (m_exit_fd != -1) {
            pollfd exit_poll{m_exit_fd, POLLIN, 0};
            ::poll(&exit_poll, 1, 10);
        } else {
            std::this_thread::sleep_for(milliseconds(1));
        }
    }
    // Whatever of the group is still there, the shell included, ignored the polite request.
    ::kill(-m_pid, SIGKILL);
    remove_running_group(m_pid);
    wait_blocking(m_pid);
    m_reaped = true;
}

} // namespace qiro_plugin::utility::detail

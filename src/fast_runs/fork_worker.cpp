#include "fast_runs/fork_worker.hpp"

#include "bridges/bridge_scripts.hpp"
#include "fast_runs/stored_workers.hpp"
#include "platform/output_stream.hpp"
#include "platform/running_commands.hpp"
#include "runtime/unique_file_name.hpp"
#include "text/url_xml_escape.hpp"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

extern char** environ;

namespace qiro_plugin::fast_runs {

namespace {

using clock_type = std::chrono::steady_clock;
using std::chrono::milliseconds;

// The limits of run_command (platform/command_runner.cpp), which a served command keeps.
constexpr std::size_t stream_limit = 64 * 1024 * 1024;
constexpr milliseconds pass_length{100};
constexpr std::int32_t pass_step = 100;
constexpr std::int32_t timeout_counter = 29999;
constexpr milliseconds kill_grace{2000};
constexpr milliseconds exit_grace{50};
// Loading may take as long as one run may.
constexpr milliseconds load_limit{30000};

struct language {
    const char* interpreter;
    const char* extension;
    const std::string& (*bridge)();
    const char* worker;
    const std::size_t* worker_size;
};

const language languages[] = {
    {"perl", ".pl", &bridge::perl_script, bridge::stored::worker_perl,
     &bridge::stored::worker_perl_size},
    {"ruby", ".rb", &bridge::ruby_script, bridge::stored::worker_ruby,
     &bridge::stored::worker_ruby_size},
    {"python", ".py", &bridge::python_script, bridge::stored::worker_python,
     &bridge::stored::worker_python_size},
};

const language* language_of(const std::string& a_interpreter) {
    for (const auto& entry : languages) {
        if (a_interpreter == entry.interpreter) {
            return &entry;
        }
    }
    return nullptr;
}

std::string read_file(const std::string& a_path) {
    std::ifstream file(a_path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

bool write_file(const std::string& a_path, const std::string& a_text) {
    const int fd =
        ::open(a_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd == -1) {
        return false;
    }
    std::size_t done = 0;
    while (done < a_text.size()) {
        const ssize_t count = ::write(fd, a_text.data() + done, a_text.size() - done);
        if (count <= 0) {
            ::close(fd);
            return false;
        }
        done += static_cast<std::size_t>(count);
    }
    return ::close(fd) == 0;
}

// Values go to the worker tab-separated on one line.
bool fits_on_control_line(const std::string& a_text) {
    return a_text.find_first_of("\t\n") == std::string::npos;
}

// Where this process's descriptors show as files that another process of its user may open.
std::string proc_fd_folder() {
    std::string folder = "/proc/";
    folder += std::to_string(::getpid());
    folder += "/fd";
    return folder;
}

constexpr int no_descriptors[2] = {-1, -1};

double milliseconds_since(clock_type::time_point a_start) {
    return std::chrono::duration<double, std::milli>(clock_type::now() - a_start).count();
}

} // namespace

std::optional<bridge_command> parse_bridge_command(const std::string& a_command_line) {
    const auto blank = a_command_line.find(' ');
    if (blank == std::string::npos || blank == 0) {
        return std::nullopt;
    }
    bridge_command command;
    command.interpreter = a_command_line.substr(0, blank);
    std::size_t at = blank;
    while (at < a_command_line.size()) {
        if (a_command_line.compare(at, 2, " \"") != 0) {
            return std::nullopt;
        }
        const auto end = a_command_line.find('"', at + 2);
        if (end == std::string::npos) {
            return std::nullopt;
        }
        command.values.push_back(a_command_line.substr(at + 2, end - at - 2));
        at = end + 1;
    }
    if (command.values.size() < 2) {
        return std::nullopt;
    }
    return command;
}

std::string worker_script(const std::string& a_interpreter) {
    const language* entry = language_of(a_interpreter);
    return entry == nullptr ? std::string()
                            : utility::url_decode(std::string(entry->worker, *entry->worker_size));
}

struct fork_worker::impl {
    enum class state { idle, serving, fallen_back };
    state m_state = state::idle;
    std::string m_reason;
    std::string m_interpreter;
    std::string m_plugin_value;
    // Decoded once: every command's bridge file is compared with it.
    std::string m_bridge_text;
    std::string m_bridge_language;
    std::string m_folder; // private: the worker script, its bridge copy, the FIFOs
    pid_t m_pid = -1;
    int m_control = -1;
    std::string m_buffered;
    pid_t m_exit_pending = -1; // a child that closed its outputs and had not ended yet
    std::uint64_t m_served = 0;
    std::uint64_t m_fifo_count = 0;
    bool m_pipes_by_proc = true;
    // The worker's children take their outputs with the request (descriptors passed on the
    // control socket) and name themselves while they wait, so the host waits for nothing
    // between sending a request and reading the run's outputs.
    bool m_passes_outputs = false;
    pid_t m_waiting_child = -1;
    // The syntax check never loads the plug-in: its first answer stands for all.
    std::optional<std::pair<std::vector<char>, std::vector<char>>> m_syntax_check;
    std::optional<int> m_syntax_check_status;
    // The command whose answer answers_without_script_file promised for the next execute.
    std::string m_promised;

    ~impl() { stop(); }

    void fall_back(std::string a_reason) {
        m_state = state::fallen_back;
        m_reason = std::move(a_reason);
        stop();
    }

    void stop() {
        if (m_control != -1) {
            ::close(m_control);
            m_control = -1;
        }
        if (m_pid > 0) {
            // The worker ends at the end of its input; one that does not is killed.
            const auto deadline = clock_type::now() + kill_grace;
            int status = 0;
            while (::waitpid(m_pid, &status, WNOHANG) == 0) {
                if (clock_type::now() >= deadline) {
                    ::kill(-m_pid, SIGKILL);
                    ::waitpid(m_pid, &status, 0);
                    break;
                }
                ::usleep(1000);
            }
            utility::detail::remove_running_group(m_pid);
            m_pid = -1;
        }
        if (!m_folder.empty()) {
            std::error_code ignored;
            std::filesystem::remove_all(m_folder, ignored);
            m_folder.clear();
        }
    }

    // One line from the worker, without its end; nothing at its end or past the deadline.
    std::optional<std::string> read_line(clock_type::time_point a_deadline) {
        for (;;) {
            if (const auto end = m_buffered.find('\n'); end != std::string::npos) {
                std::string line = m_buffered.substr(0, end);
                m_buffered.erase(0, end + 1);
                return line;
            }
            const auto left =
                std::chrono::duration_cast<milliseconds>(a_deadline - clock_type::now()).count();
            if (m_control == -1 || left < 0) {
                return std::nullopt;
            }
            pollfd ready{m_control, POLLIN, 0};
            const int polled = ::poll(&ready, 1, static_cast<int>(left));
            if (polled == -1 && errno == EINTR) {
                continue;
            }
            if (polled <= 0) {
                return std::nullopt;
            }
            char chunk[4096];
            const ssize_t count = ::recv(m_control, chunk, sizeof chunk, 0);
            if (count == -1 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                return std::nullopt;
            }
            m_buffered.append(chunk, static_cast<std::size_t>(count));
        }
    }

    // Sends a line, with the descriptors (when given) attached to its first byte.
    bool send_line(const std::string& a_line, const int (&a_descriptors)[2] = no_descriptors) {
        const std::string text = a_line + "\n";
        std::size_t done = 0;
        if (a_descriptors[0] != -1) {
            alignas(cmsghdr) char control[CMSG_SPACE(sizeof a_descriptors)] = {};
            iovec part{const_cast<char*>(text.data()), text.size()};
            msghdr message{};
            message.msg_iov = &part;
            message.msg_iovlen = 1;
            message.msg_control = control;
            message.msg_controllen = sizeof control;
            cmsghdr* header = CMSG_FIRSTHDR(&message);
            header->cmsg_level = SOL_SOCKET;
            header->cmsg_type = SCM_RIGHTS;
            header->cmsg_len = CMSG_LEN(sizeof a_descriptors);
            std::memcpy(CMSG_DATA(header), a_descriptors, sizeof a_descriptors);
            ssize_t count = -1;
            do {
                count = ::sendmsg(m_control, &message, MSG_NOSIGNAL);
            } while (count == -1 && errno == EINTR);
            if (count <= 0) {
                return false;
            }
            done = static_cast<std::size_t>(count);
        }
        while (done < text.size()) {
            const ssize_t count =
                ::send(m_control, text.data() + done, text.size() - done, MSG_NOSIGNAL);
            if (count == -1 && errno == EINTR) {
                continue;
            }
            if (count <= 0) {
                return false;
            }
            done += static_cast<std::size_t>(count);
        }
        return true;
    }

    std::string worker_log() const {
        std::string log = read_file(m_folder + "/worker.log");
        if (log.size() > 2000) {
            log = log.substr(log.size() - 2000);
        }
        return log;
    }

    // Starts the worker for the command's interpreter and plug-in; false when it fell back.
    bool start(const language& a_language, const std::string& a_bridge_text,
               const std::string& a_plugin_value, const std::string& a_working_folder) {
        m_interpreter = a_language.interpreter;
        m_plugin_value = a_plugin_value;
        std::string pattern = (std::getenv("TMPDIR") != nullptr && *std::getenv("TMPDIR") != '\0'
                                   ? std::string(std::getenv("TMPDIR"))
                                   : std::string("/tmp")) +
                              "/qiro-lumen-fast.XXXXXX";
        if (::mkdtemp(pattern.data()) == nullptr) {
            fall_back("no private folder for the worker");
            return false;
        }
        m_folder = pattern;
        const std::string worker_path = m_folder + "/worker" + a_language.extension;
        // Named as a bridge file is, so that tracebacks through it read as the bridge's.
        const std::string bridge_name = get_unique_file_name(m_folder, a_language.extension);
        const std::string bridge_path = m_folder + "/" + bridge_name;
        if (bridge_name.empty() ||
            !write_file(worker_path, worker_script(a_language.interpreter)) ||
            !write_file(bridge_path, a_bridge_text)) {
            fall_back("the worker's files could not be written");
            return false;
        }
        if (!fits_on_control_line(a_working_folder) || !fits_on_control_line(m_folder)) {
            fall_back("a folder name holds a tab or a line end");
            return false;
        }
        int ends[2] = {-1, -1};
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
            fall_back("no control channel for the worker");
            return false;
        }
        const int log = ::open((m_folder + "/worker.log").c_str(),
                               O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        // The interpreter is found on PATH by the shell, as for the bridge's own command.
        const std::string command_line = "exec " + m_interpreter + " \"" + worker_path + "\" \"" +
                                         bridge_path + "\" \"" + a_plugin_value + "\"";
        posix_spawn_file_actions_t actions;
        posix_spawnattr_t attributes;
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        posix_spawn_file_actions_adddup2(&actions, ends[1], 3);
        posix_spawn_file_actions_adddup2(&actions, ends[1], 4);
        if (log != -1) {
            posix_spawn_file_actions_adddup2(&actions, log, STDOUT_FILENO);
            posix_spawn_file_actions_adddup2(&actions, log, STDERR_FILENO);
        }
        posix_spawn_file_actions_addchdir_np(&actions, a_working_folder.c_str());
        sigset_t defaults;
        sigfillset(&defaults);
        sigdelset(&defaults, SIGKILL);
        sigdelset(&defaults, SIGSTOP);
        sigset_t mask;
        sigemptyset(&mask);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF |
                                                  POSIX_SPAWN_SETSIGMASK);
        posix_spawnattr_setpgroup(&attributes, 0);
        posix_spawnattr_setsigdefault(&attributes, &defaults);
        posix_spawnattr_setsigmask(&attributes, &mask);
        std::string shell = "/bin/sh";
        std::string dash_c = "-c";
        std::string line = command_line;
        char* arguments[] = {shell.data(), dash_c.data(), line.data(), nullptr};
        pid_t pid = -1;
        const int spawned =
            ::posix_spawn(&pid, shell.c_str(), &actions, &attributes, arguments, environ);
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
        ::close(ends[1]);
        if (log != -1) {
            ::close(log);
        }
        m_control = ends[0];
        if (spawned != 0) {
            fall_back("the worker could not be started");
            return false;
        }
        m_pid = pid;
        utility::detail::add_running_group(pid);
        m_pipes_by_proc = ::access(proc_fd_folder().c_str(), X_OK) == 0;
        const auto answer = read_line(clock_type::now() + load_limit);
        if (answer && (*answer == "ready" || *answer == "ready\toutputs")) {
            m_passes_outputs = *answer != "ready";
            m_state = state::serving;
            return true;
        }
        if (answer && answer->rfind("fallback\t", 0) == 0) {
            fall_back(answer->substr(9));
        } else {
            const std::string log_text = worker_log();
            fall_back("the worker ended before it was ready" +
                      (log_text.empty() ? std::string() : ": " + log_text));
        }
        return false;
    }

    // The two outputs of the next child: the host's reading ends and the names by which the
    // child opens the writing ends. Pipes named through /proc/PID/fd cost no file on disk
    // (two FIFOs per input did: creating and removing inodes at that rate is dear on ext4);
    // FIFOs in the private folder serve where /proc does not show this process's pipes.
    struct child_outputs {
        int read_ends[2] = {-1, -1};
        int write_ends[2] = {-1, -1};
        std::string names[2];
        bool fifos = false;
        // Closes the host's writing ends and removes the FIFOs; the reading ends belong to the
        // output streams.
        void release() {
            for (int& fd : write_ends) {
                if (fd != -1) {
                    ::close(fd);
                    fd = -1;
                }
            }
            if (fifos) {
                for (const auto& name : names) {
                    ::unlink(name.c_str());
                }
                fifos = false;
            }
        }
        // A failure before the output streams took the reading ends: closes them too.
        void discard() {
            for (int& fd : read_ends) {
                if (fd != -1) {
                    ::close(fd);
                    fd = -1;
                }
            }
            release();
        }
        ~child_outputs() { release(); }
    };

    bool open_outputs(child_outputs& a_outputs) {
        if (m_pipes_by_proc || m_passes_outputs) {
            const std::string prefix = proc_fd_folder() + "/";
            for (int index = 0; index < 2; ++index) {
                int ends[2] = {-1, -1};
                if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
                    a_outputs.discard();
                    return false;
                }
                a_outputs.read_ends[index] = ends[0];
                a_outputs.write_ends[index] = ends[1];
                a_outputs.names[index] = prefix;
                a_outputs.names[index] += std::to_string(ends[1]);
            }
            return true;
        }
        const std::string number = std::to_string(++m_fifo_count);
        a_outputs.names[0] = m_folder + "/out." + number;
        a_outputs.names[1] = m_folder + "/err." + number;
        if (::mkfifo(a_outputs.names[0].c_str(), 0600) != 0) {
            return false;
        }
        a_outputs.fifos = true;
        if (::mkfifo(a_outputs.names[1].c_str(), 0600) != 0) {
            ::unlink(a_outputs.names[0].c_str());
            a_outputs.fifos = false;
            return false;
        }
        for (int index = 0; index < 2; ++index) {
            a_outputs.read_ends[index] =
                ::open(a_outputs.names[index].c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        }
        if (a_outputs.read_ends[0] == -1 || a_outputs.read_ends[1] == -1) {
            a_outputs.discard();
            return false;
        }
        return true;
    }

    // The next line that is not a second report of an earlier child's exit (a child reports
    // its exit, then the worker once it has reaped it) nor a waiting child naming itself (kept
    // for the next request).
    std::optional<std::string> read_answer(pid_t a_child, clock_type::time_point a_deadline) {
        for (;;) {
            auto line = read_line(a_deadline);
            if (line && note_waiting_child(*line)) {
                continue;
            }
            if (!line || line->rfind("exit\t", 0) != 0 || std::atoi(line->c_str() + 5) == a_child) {
                return line;
            }
        }
    }

    // Reads until a waiting child has named itself (passing over earlier children's exits).
    bool wait_for_waiting_child(clock_type::time_point a_deadline) {
        while (m_waiting_child == -1) {
            const auto line = read_line(a_deadline);
            if (!line) {
                return false;
            }
            note_waiting_child(*line);
        }
        return true;
    }

    // Keeps the pid of a waiting child that names itself in the line.
    bool note_waiting_child(const std::string& a_line) {
        if (a_line.rfind("child\t", 0) != 0) {
            return false;
        }
        m_waiting_child = static_cast<pid_t>(std::atoi(a_line.c_str() + 6));
        return true;
    }

    // The exit status of the child; nothing when it was not reported in time.
    std::optional<int> read_exit(pid_t a_child, clock_type::time_point a_deadline) {
        const auto line = read_answer(a_child, a_deadline);
        if (!line || line->rfind("exit\t", 0) != 0) {
            return std::nullopt;
        }
        const auto status = line->find('\t', 5);
        return status == std::string::npos
                   ? std::nullopt
                   : std::optional<int>(std::atoi(line->c_str() + status + 1));
    }

    std::optional<int> serve(const std::vector<std::string>& a_values,
                             const std::string& a_working_folder, std::vector<char>& a_std_output,
                             std::vector<char>& a_std_error, bool a_is_timeout,
                             utility::run_command_report* a_report) {
        if (m_exit_pending != -1) {
            // The last child closed its outputs early; the worker takes nothing before it ends.
            read_exit(m_exit_pending, clock_type::time_point::max());
            m_exit_pending = -1;
        }
        if (m_passes_outputs && !wait_for_waiting_child(clock_type::now() + load_limit)) {
            fall_back("the worker ended: " + worker_log());
            return std::nullopt;
        }
        child_outputs outputs;
        if (!open_outputs(outputs)) {
            return std::nullopt;
        }
        utility::detail::output_stream std_output(outputs.read_ends[0], stream_limit);
        utility::detail::output_stream std_error(outputs.read_ends[1], stream_limit);
        // Appended piece by piece: GCC 12 at -O3 warns falsely on a literal + std::string.
        std::string request = "run";
        const std::string passed = "-";
        for (const std::string* part : std::initializer_list<const std::string*>{
                 m_passes_outputs ? &passed : &outputs.names[0],
                 m_passes_outputs ? &passed : &outputs.names[1], &a_working_folder}) {
            request += '\t';
            request += *part;
        }
        for (const auto& value : a_values) {
            request += '\t';
            request += value;
        }
        pid_t child = -1;
        if (m_passes_outputs) {
            child = std::exchange(m_waiting_child, -1);
            const bool sent = send_line(request, outputs.write_ends);
            // In flight, the descriptors keep the pipes open until the child holds them.
            outputs.release();
            if (!sent) {
                fall_back("the worker ended: " + worker_log());
                return std::nullopt;
            }
        } else {
            const bool sent = send_line(request);
            const auto answer =
                sent ? read_answer(-1, clock_type::now() + load_limit) : std::nullopt;
            // The child has opened its ends by now, or never will.
            outputs.release();
            if (!answer || answer->rfind("pid\t", 0) != 0) {
                if (!answer || answer->rfind("error\t", 0) != 0) {
                    fall_back("the worker ended: " + worker_log());
                } else {
                    // The next command's child gets FIFOs, which need nothing of /proc.
                    m_pipes_by_proc = false;
                }
                return std::nullopt;
            }
            child = static_cast<pid_t>(std::atoi(answer->c_str() + 4));
        }
        utility::detail::add_running_group(child);
        ++m_served;

        const auto started = clock_type::now();
        const std::uint64_t stops_before = utility::detail::stop_count();
        const auto stopped = [stops_before] {
            return utility::detail::stop_count() != stops_before;
        };
        std::int32_t counter = 0;
        bool ended_early = false;
        bool was_stopped = false;
        while (!std_output.finished() || !std_error.finished()) {
            utility::detail::wait_for_streams(std_output, std_error,
                                              clock_type::now() + pass_length, true);
            if (stopped()) {
                ended_early = was_stopped = true;
                break;
            }
            if (a_is_timeout && counter > timeout_counter) {
                ended_early = true;
                break;
            }
            counter += pass_step;
        }
        if (!ended_early && stopped()) {
            ended_early = was_stopped = true;
        }
        if (ended_early) {
            if (a_report != nullptr) {
                const auto& kept = std_error.result().data;
                *a_report = utility::run_command_report{};
                a_report->timed_out = true;
                a_report->stopped = was_stopped;
                a_report->partial_std_error.assign(kept.begin(), kept.end());
                a_report->std_error_cut = std_error.cut();
                a_report->std_output_cut = std_output.cut();
                a_report->elapsed_ms = milliseconds_since(started);
            }
            terminate(child, std_output, std_error);
            return 2;
        }
        std::optional<int> status = read_exit(child, clock_type::now() + exit_grace);
        if (status) {
            utility::detail::remove_running_group(child);
        } else {
            m_exit_pending = child;
        }
        std_output.terminate_data();
        std_error.terminate_data();
        a_std_output = std::move(std_output.result().data);
        a_std_error = std::move(std_error.result().data);
        if (a_report != nullptr) {
            *a_report = utility::run_command_report{};
            a_report->std_output_cut = std_output.cut();
            a_report->std_error_cut = std_error.cut();
            a_report->exit_status = status;
            a_report->elapsed_ms = milliseconds_since(started);
        }
        return 0;
    }

    // As child_process::terminate: SIGTERM to the group, outputs drained for 2 s, SIGKILL.
    void terminate(pid_t a_child, utility::detail::output_stream& a_std_output,
                   utility::detail::output_stream& a_std_error) {
        ::kill(-a_child, SIGTERM);
        ::kill(-a_child, SIGCONT);
        const auto deadline = clock_type::now() + kill_grace;
        std::optional<int> status;
        while (clock_type::now() < deadline && !status) {
            const auto slice = clock_type::now() + milliseconds(10);
            if (!a_std_output.finished() || !a_std_error.finished()) {
                utility::detail::wait_for_streams(a_std_output, a_std_error, slice, false,
                                                  m_control);
            }
            status = read_exit(a_child, slice);
        }
        ::kill(-a_child, SIGKILL);
        if (!status) {
            status = read_exit(a_child, clock_type::now() + kill_grace);
        }
        utility::detail::remove_running_group(a_child);
        if (!status) {
            fall_back("the worker did not report its child's end");
        }
    }
};

fork_worker::fork_worker() : p_impl(std::make_unique<impl>()) {}

fork_worker::~fork_worker() = default;

std::optional<int> fork_worker::execute(const std::string& a_command_line,
                                        const std::string& a_working_folder,
                                        std::vector<char>& a_std_output,
                                        std::vector<char>& a_std_error, bool a_is_timeout,
                                        utility::run_command_report* a_report) {
    auto& self = *p_impl;
    if (self.m_state == impl::state::fallen_back) {
        return std::nullopt;
    }
    if (std::exchange(self.m_promised, {}) == a_command_line && self.m_syntax_check) {
        a_std_output = self.m_syntax_check->first;
        a_std_error = self.m_syntax_check->second;
        if (a_report != nullptr) {
            *a_report = utility::run_command_report{};
            a_report->exit_status = self.m_syntax_check_status;
        }
        return 0;
    }
    const auto command = parse_bridge_command(a_command_line);
    if (!command || command->values.size() < 3) {
        return std::nullopt;
    }
    const language* entry = language_of(command->interpreter);
    if (entry == nullptr) {
        return std::nullopt;
    }
    for (const auto& value : command->values) {
        if (!fits_on_control_line(value)) {
            return std::nullopt;
        }
    }
    // Only the bridge itself is served, never a probe or another script.
    const std::string& script_name = command->values[0];
    const std::string script_path =
        script_name.front() == '/' ? script_name : a_working_folder + "/" + script_name;
    if (self.m_bridge_language != entry->interpreter) {
        self.m_bridge_text = utility::url_decode(entry->bridge());
        self.m_bridge_language = entry->interpreter;
    }
    const std::string& bridge_text = self.m_bridge_text;
    if (read_file(script_path) != bridge_text) {
        return std::nullopt;
    }
    if (self.m_state == impl::state::idle) {
        if (!self.start(*entry, bridge_text, command->values[1], a_working_folder)) {
            return std::nullopt;
        }
    } else if (command->interpreter != self.m_interpreter ||
               command->values[1] != self.m_plugin_value) {
        return std::nullopt;
    }
    const bool syntax_check = command->values[2] == "syntax_check";
    auto result = self.serve(command->values, a_working_folder, a_std_output, a_std_error,
                             a_is_timeout, a_report);
    if (syntax_check && !self.m_syntax_check && result && *result == 0) {
        self.m_syntax_check.emplace(a_std_output, a_std_error);
        self.m_syntax_check_status = a_report != nullptr ? a_report->exit_status : std::nullopt;
    }
    return result;
}

bool fork_worker::answers_without_script_file(const std::string& a_command_line,
                                              const std::string& a_encoded_script) {
    auto& self = *p_impl;
    self.m_promised.clear();
    if (self.m_state != impl::state::serving || !self.m_syntax_check) {
        return false;
    }
    const auto command = parse_bridge_command(a_command_line);
    if (!command || command->values.size() < 3 || command->values[2] != "syntax_check" ||
        command->interpreter != self.m_interpreter || command->values[1] != self.m_plugin_value) {
        return false;
    }
    const language* entry = language_of(command->interpreter);
    if (entry == nullptr || a_encoded_script != entry->bridge()) {
        return false;
    }
    self.m_promised = a_command_line;
    return true;
}

std::string fork_worker::fallback_reason() const {
    return p_impl->m_reason;
}

std::uint64_t fork_worker::served_count() const {
    return p_impl->m_served;
}

} // namespace qiro_plugin::fast_runs

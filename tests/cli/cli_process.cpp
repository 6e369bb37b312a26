#include "cli_process.hpp"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace qiro_plugin::cli::testing {

namespace fs = std::filesystem;

namespace {

void close_quietly(int& a_descriptor) {
    if (a_descriptor >= 0) {
        ::close(a_descriptor);
        a_descriptor = -1;
    }
}

} // namespace

pid_t spawn_process(const std::vector<std::string>& a_arguments,
                    const std::map<std::string, std::string>& a_environment,
                    const posix_spawn_file_actions_t* a_actions) {
    std::vector<char*> argv;
    for (const auto& argument : a_arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    std::vector<std::string> environment_text;
    for (const auto& [name, value] : a_environment) {
        environment_text.push_back(name + "=" + value);
    }
    std::vector<char*> envp;
    for (auto& entry : environment_text) {
        envp.push_back(entry.data());
    }
    envp.push_back(nullptr);
    pid_t child = 0;
    if (posix_spawn(&child, argv[0], a_actions, nullptr, argv.data(), envp.data()) != 0) {
        throw std::runtime_error("cannot start " + a_arguments.front());
    }
    return child;
}

process_result run_process(const std::vector<std::string>& a_arguments,
                           const std::map<std::string, std::string>& a_environment,
                           const std::string& a_input) {
    int input[2], output[2], error[2];
    if (::pipe2(input, O_CLOEXEC) != 0 || ::pipe2(output, O_CLOEXEC) != 0 ||
        ::pipe2(error, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], 0);
    posix_spawn_file_actions_adddup2(&actions, output[1], 1);
    posix_spawn_file_actions_adddup2(&actions, error[1], 2);

    pid_t child = 0;
    int spawned = 0;
    try {
        child = spawn_process(a_arguments, a_environment, &actions);
    } catch (const std::runtime_error&) {
        spawned = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(output[1]);
    ::close(error[1]);
    if (spawned != 0) {
        ::close(input[1]);
        ::close(output[0]);
        ::close(error[0]);
        throw std::runtime_error("cannot start " + a_arguments.front());
    }
    // The input is small: it fits the pipe, so writing it at once cannot block.
    if (!a_input.empty() && ::write(input[1], a_input.data(), a_input.size()) < 0) {
        throw std::runtime_error("cannot write the input");
    }
    ::close(input[1]);

    process_result result;
    int out_fd = output[0];
    int err_fd = error[0];
    while (out_fd >= 0 || err_fd >= 0) {
        pollfd fds[2] = {{out_fd, POLLIN, 0}, {err_fd, POLLIN, 0}};
        if (::poll(fds, 2, 60000) <= 0) {
            break;
        }
        char buffer[65536];
        for (int i = 0; i < 2; ++i) {
            int& fd = i == 0 ? out_fd : err_fd;
            if (fd >= 0 && (fds[i].revents & (POLLIN | POLLHUP | POLLERR)) != 0) {
                const auto count = ::read(fd, buffer, sizeof buffer);
                if (count > 0) {
                    (i == 0 ? result.out : result.err)
                        .append(buffer, static_cast<std::size_t>(count));
                } else if (count == 0 || errno != EINTR) {
                    close_quietly(fd);
                }
            }
        }
    }
    close_quietly(out_fd);
    close_quietly(err_fd);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

std::string qiro_lumen_path() {
    return std::string(QIRO_BINARY_DIR) + "/bin/qiro-lumen";
}

cli_sandbox::cli_sandbox() {
    std::string pattern = (fs::temp_directory_path() / "qiro-cli-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
    m_root = pattern;
    fs::create_directories(home());
    fs::create_directories(m_root / "machine");
    fs::copy(fs::path(QIRO_TEST_DATA_DIR) / "cli", plugins(), fs::copy_options::recursive);
    environment = {{"HOME", home().string()},
                   {"QIRO_MACHINE_PREFERENCES_DIR", (m_root / "machine").string()},
                   {"PATH", "/usr/bin:/bin"},
                   {"LC_ALL", "C.UTF-8"}};
}

cli_sandbox::~cli_sandbox() {
    std::error_code ignored;
    fs::permissions(m_root, fs::perms::owner_all, fs::perm_options::add, ignored);
    fs::remove_all(m_root, ignored);
}

process_result cli_sandbox::run(const std::vector<std::string>& a_arguments,
                                const std::string& a_input) const {
    std::vector<std::string> arguments{qiro_lumen_path()};
    arguments.insert(arguments.end(), a_arguments.begin(), a_arguments.end());
    return run_process(arguments, environment, a_input);
}

} // namespace qiro_plugin::cli::testing

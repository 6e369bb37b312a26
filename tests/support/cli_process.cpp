#include "support/cli_process.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace qiro_plugin::cli::testing {

namespace fs = std::filesystem;

namespace {

// Starts a program with exactly the given environment; -1 when it cannot be started.
pid_t spawn_process(const std::vector<std::string>& a_arguments,
                    const std::map<std::string, std::string>& a_environment,
                    const posix_spawn_file_actions_t* a_actions) {
    // env -i runs the program with exactly these variables, under the same process id.
    std::vector<std::string> command{"/usr/bin/env", "-i"};
    for (const auto& [name, value] : a_environment) {
        command.push_back(name + "=" + value);
    }
    command.insert(command.end(), a_arguments.begin(), a_arguments.end());
    std::vector<char*> argv;
    for (auto& argument : command) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    pid_t child = -1;
    return posix_spawn(&child, argv[0], a_actions, nullptr, argv.data(), environ) == 0 ? child : -1;
}

const std::string qiro_lumen = std::string(QIRO_BINARY_DIR) + "/bin/qiro-lumen";

} // namespace

nlohmann::ordered_json parse_json(const process_result& a_result) {
    auto parsed = nlohmann::ordered_json::parse(a_result.out, nullptr, false);
    EXPECT_FALSE(parsed.is_discarded())
        << "not JSON: " << a_result.out << "\nstderr: " << a_result.err;
    return parsed;
}

int signal_and_reap(pid_t a_pid, int a_signal) {
    int status = -1;
    return ::kill(a_pid, a_signal) == 0 && ::waitpid(a_pid, &status, 0) == a_pid ? status : -1;
}

cli_sandbox::cli_sandbox() {
    fs::create_directories(home());
    fs::create_directories(m_root / "machine");
    fs::copy(fs::path(QIRO_TEST_DATA_DIR) / "cli", plugins(), fs::copy_options::recursive);
    environment = {{"HOME", home().string()},
                   {"QIRO_MACHINE_PREFERENCES_DIR", (m_root / "machine").string()},
                   {"PATH", "/usr/bin:/bin"},
                   {"LC_ALL", "C.UTF-8"}};
}

// The standard streams are files, not pipes: nothing can block on a full pipe, and a plug-in
// process left behind cannot keep the reading open.
process_result cli_sandbox::run_program(const std::vector<std::string>& a_arguments,
                                        const std::string& a_input) const {
    const std::string streams[] = {(m_root / "stdin").string(), (m_root / "stdout").string(),
                                   (m_root / "stderr").string()};
    test_support::write_file(streams[0], a_input);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int fd = 0; fd < 3; ++fd) {
        posix_spawn_file_actions_addopen(&actions, fd, streams[fd].c_str(),
                                         fd == 0 ? O_RDONLY : O_WRONLY | O_CREAT | O_TRUNC, 0600);
    }
    const pid_t child = spawn_process(a_arguments, environment, &actions);
    posix_spawn_file_actions_destroy(&actions);
    if (child < 0) {
        return {-1, "", "cannot start " + a_arguments.front()};
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, test_support::read_file(streams[1]),
            test_support::read_file(streams[2])};
}

process_result cli_sandbox::run(std::vector<std::string> a_arguments,
                                const std::string& a_input) const {
    a_arguments.insert(a_arguments.begin(), qiro_lumen);
    return run_program(a_arguments, a_input);
}

pid_t cli_sandbox::start(std::vector<std::string> a_arguments, const fs::path& a_output) const {
    a_arguments.insert(a_arguments.begin(), qiro_lumen);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, a_output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    const pid_t child = spawn_process(a_arguments, environment, &actions);
    posix_spawn_file_actions_destroy(&actions);
    return child;
}

} // namespace qiro_plugin::cli::testing

#include "cli_process.hpp"

#include <cerrno>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace qiro_plugin::cli::testing {

namespace fs = std::filesystem;

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

std::string qiro_lumen_path() {
    return std::string(QIRO_BINARY_DIR) + "/bin/qiro-lumen";
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
    a_arguments.insert(a_arguments.begin(), qiro_lumen_path());
    return run_program(a_arguments, a_input);
}

} // namespace qiro_plugin::cli::testing

#include "debugger_support/tool_check.hpp"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace qiro_plugin::debugger_support {

namespace {

constexpr std::chrono::seconds answer_limit{10};

} // namespace

std::optional<std::string> command_output(const std::vector<std::string>& a_arguments) {
    if (a_arguments.empty()) {
        return std::nullopt;
    }
    std::array<int, 2> ends{-1, -1};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<std::string> owned = a_arguments;
    std::vector<char*> arguments;
    for (auto& argument : owned) {
        arguments.push_back(argument.data());
    }
    arguments.push_back(nullptr);
    pid_t pid = 0;
    const int spawned =
        ::posix_spawnp(&pid, owned.front().c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    if (spawned != 0) {
        ::close(ends[0]);
        return std::nullopt;
    }
    std::string output;
    bool in_time = true;
    const auto deadline = std::chrono::steady_clock::now() + answer_limit;
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                              deadline - std::chrono::steady_clock::now())
                              .count();
        pollfd wait{ends[0], POLLIN, 0};
        if (left <= 0 || (::poll(&wait, 1, static_cast<int>(left)) == 0)) {
            in_time = false;
            break;
        }
        std::array<char, 512> buffer{};
        const ssize_t got = ::read(ends[0], buffer.data(), buffer.size());
        if (got == -1 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            break;
        }
        output.append(buffer.data(), static_cast<std::size_t>(got));
    }
    ::close(ends[0]);
    if (!in_time) {
        ::kill(pid, SIGKILL);
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) == -1 && errno == EINTR) {
    }
    if (!in_time || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return std::nullopt;
    }
    return output;
}

bool version_at_least(const std::string& a_version, int a_major, int a_minor) {
    int major = 0;
    int minor = 0;
    std::size_t position = 0;
    const auto number = [&](int& a_value) {
        const std::size_t start = position;
        while (position < a_version.size() && a_version[position] >= '0' &&
               a_version[position] <= '9' && position - start < 6) {
            a_value = a_value * 10 + (a_version[position] - '0');
            ++position;
        }
        return position > start;
    };
    if (!number(major)) {
        return false;
    }
    if (position < a_version.size() && a_version[position] == '.') {
        ++position;
        number(minor);
    }
    return major > a_major || (major == a_major && minor >= a_minor);
}

std::optional<std::string> missing_debugger(const std::string& a_interpreter) {
    if (a_interpreter == "python") {
        if (!command_output({"python", "-c",
                             "import importlib.util, sys\n"
                             "sys.exit(importlib.util.find_spec('debugpy') is None)"})) {
            return "debugging a Python plug-in needs debugpy, which this Python cannot import; "
                   "install the Debian package python3-debugpy";
        }
        return std::nullopt;
    }
    if (a_interpreter == "ruby") {
        const auto version =
            command_output({"ruby", "-rdebug/version", "-e", "print DEBUGGER__::VERSION"});
        if (!version || !version_at_least(*version, 1, 4)) {
            return "debugging a Ruby plug-in needs Ruby's debug library 1.4 or later (found: " +
                   (version ? *version : std::string("none")) +
                   "); it comes with Ruby 3.1: install the Debian package libruby3.1 (or the "
                   "libruby package of a later Ruby)";
        }
        return std::nullopt;
    }
    if (a_interpreter == "perl") {
        if (!command_output(
                {"perl", "-e", "for (@INC) { exit 0 if -e \"$_/perl5db.pl\" } exit 1"})) {
            return "debugging a Perl plug-in needs perl5db.pl; install the Debian package "
                   "perl-modules-5.36 (or the perl-modules package of your Perl)";
        }
        return std::nullopt;
    }
    return "no debugger is known for " + a_interpreter;
}

} // namespace qiro_plugin::debugger_support

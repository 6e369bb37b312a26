#pragma once
// Runs the built qiro-lumen as a child process in a private home and collects what it wrote.

#include "support/process_scan.hpp"

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <sys/types.h>
#include <vector>

namespace qiro_plugin::cli::testing {

struct process_result {
    int status = -1; // exit status, or -1 when the process did not exit normally
    std::string out;
    std::string err;
};

// The standard output read as JSON; a test failure when it is not.
nlohmann::ordered_json parse_json(const process_result& a_result);
using test_support::is_ended;
using test_support::wait_for;
// Sends the signal to the process and reaps it: its wait status, -1 when either fails.
int signal_and_reap(pid_t a_pid, int a_signal);

// A fresh home, machine preferences folder and plug-in folder (a copy of the fixtures), all
// removed at the end; every program started through it sees only these.
class cli_sandbox {
public:
    cli_sandbox();

    const std::filesystem::path& root() const { return m_root; }
    std::filesystem::path home() const { return m_root / "home"; }
    std::filesystem::path plugins() const { return m_root / "plugins"; }

    // Runs a program to its end, a_input on its standard input.
    process_result run_program(const std::vector<std::string>& a_arguments,
                               const std::string& a_input = {}) const;
    // qiro-lumen with these arguments.
    process_result run(std::vector<std::string> a_arguments, const std::string& a_input = {}) const;
    // Starts qiro-lumen with these arguments and goes on, its standard output written to
    // a_output, its standard error dropped; -1 when it cannot be started.
    pid_t start(std::vector<std::string> a_arguments,
                const std::filesystem::path& a_output = "/dev/null") const;

    std::map<std::string, std::string> environment;

private:
    test_support::scratch_folder m_scratch{"qiro-cli"};
    const std::filesystem::path m_root = m_scratch.path();
};

} // namespace qiro_plugin::cli::testing

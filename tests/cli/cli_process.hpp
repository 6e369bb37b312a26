#pragma once
// Runs the built qiro-lumen as a child process in a private home and collects what it wrote.

#include "support/scratch_folder.hpp"

#include <filesystem>
#include <map>
#include <spawn.h>
#include <string>
#include <vector>

namespace qiro_plugin::cli::testing {

struct process_result {
    int status = -1; // exit status, or -1 when the process did not exit normally
    std::string out;
    std::string err;
};

// Starts a program with exactly the given environment; -1 when it cannot be started.
pid_t spawn_process(const std::vector<std::string>& a_arguments,
                    const std::map<std::string, std::string>& a_environment,
                    const posix_spawn_file_actions_t* a_actions = nullptr);

// The path of the built program.
std::string qiro_lumen_path();

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

    std::map<std::string, std::string> environment;

private:
    test_support::scratch_folder m_scratch{"qiro-cli"};
    const std::filesystem::path m_root = m_scratch.path();
};

} // namespace qiro_plugin::cli::testing

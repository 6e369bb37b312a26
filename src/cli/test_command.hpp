#pragma once
// qiro-lumen test: runs the cases kept beside plug-ins and says which still pass.

#include "cli/cli_command.hpp"

#include <string>
#include <vector>

namespace qiro_plugin::cli {

struct test_options {
    std::vector<std::string> paths; // plug-ins, cases files or folders; none: the plug-in folder
    std::vector<std::string> case_names; // only these cases; none: all
    std::string plugin_folder;
    std::string junit_file;
    unsigned jobs = 0; // 0: one per core
    bool update = false;
    bool fast = false;   // fork workers instead of a new interpreter per command
    std::string sandbox; // empty, "on" or "nonet"
    std::string debug;   // empty, "on", "console" or a port: debug the one case named
    // Where the coverage of the cases goes (lcov.info, cobertura.xml); empty: not measured.
    std::string coverage_folder;
    double fail_under = 0.0; // with coverage: below this line percentage a plug-in fails
};

// 0 every case passed; 1 a case failed, or a plug-in's line coverage is below fail_under;
// 2 bad usage or a bad cases file.
int command_test(const test_options& a_options);
cli_command add_test_command(CLI::App& a_app);

} // namespace qiro_plugin::cli

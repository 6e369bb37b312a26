#include "cli/sandbox_option.hpp"

#include "cli/cli_support.hpp"

#include <CLI/CLI.hpp>

#include <iostream>

namespace qiro_plugin::cli {

void add_sandbox_option(CLI::App& a_command, std::string& a_value) {
    a_command
        .add_flag("--sandbox{on}", a_value,
                  "run the plug-in inside bubblewrap: the system and the plug-in's folder "
                  "read-only, the data folder writable, the rest of the home folder absent; "
                  "--sandbox=nonet also cuts the network")
        ->check(CLI::IsMember({"on", "nonet"}))
        ->option_text("[=nonet]");
}

utility::sandbox_mode sandbox_mode_of(const std::string& a_value) {
    return utility::sandbox_mode_from_name(a_value).value_or(utility::sandbox_mode::off);
}

bool report_sandbox_refusal(const debugger::run_report& a_report) {
    if (!a_report.sandbox_unavailable) {
        return false;
    }
    print_error("not run: " + a_report.refusal);
    return true;
}

void print_sandbox_status(const debugger::run_report& a_report) {
    if (a_report.sandbox == utility::sandbox_mode::off) {
        return;
    }
    std::cerr << "-- ran in the sandbox (bubblewrap, network "
              << (a_report.sandbox == utility::sandbox_mode::nonet ? "off" : "on") << ")\n";
}

} // namespace qiro_plugin::cli

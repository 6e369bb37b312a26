#pragma once
// qiro-lumen soak: a plug-in against a corpus of written forms, with a report of what failed.

#include "cli/cli_command.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qiro_plugin::cli {

struct soak_command_options {
    std::string plugin;
    std::string plugin_folder;
    std::vector<std::string> corpora; // names (edge, skk) or files; none: edge
    unsigned jobs = 0;                // 0: one per core
    std::optional<std::size_t> limit;
    std::uint64_t seed = 1;
    std::optional<double> budget_ms;
    std::string save_cases; // append a case per distinct failure to this file
    bool json = false;
};

// 0 no input failed; 1 an input failed or a fast run differed from its faithful one; 2 bad
// usage. Interrupted, it ends by the same signal once nothing of the soak is left.
int command_soak(const soak_command_options& a_options);
cli_command add_soak_command(CLI::App& a_app);

} // namespace qiro_plugin::cli

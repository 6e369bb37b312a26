#pragma once
// One subcommand of qiro-lumen: its parsed options live in the function that runs it.

#include <functional>

namespace CLI {
class App;
}

namespace qiro_plugin::cli {

struct cli_command {
    CLI::App* command = nullptr;
    std::function<int()> run; // the exit status
};

} // namespace qiro_plugin::cli

#include "cli/debug_option.hpp"

#include "cli/cli_support.hpp"
#include "platform/command_runner.hpp"
#include "text/utf8_text.hpp"

#include <CLI/CLI.hpp>

#include <array>
#include <atomic>
#include <csignal>
#include <iostream>

namespace qiro_plugin::cli {

namespace {

constexpr std::uint16_t default_config_port = 5678;
constexpr std::array<int, 4> deferred_signals{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

std::atomic<int> g_deferred_signal{0};
std::array<struct sigaction, deferred_signals.size()> g_previous{};

void defer_termination(int a_signal) {
    g_deferred_signal = a_signal;
    utility::kill_running_commands();
}

std::string port_error(const std::string& a_value) {
    if (a_value == "on" || a_value == "console") {
        return {};
    }
    if (a_value.empty() || a_value.size() > 5 ||
        a_value.find_first_not_of("0123456789") != std::string::npos || std::stoul(a_value) == 0 ||
        std::stoul(a_value) > 65535) {
        return "--debug takes a port (1 to 65535) or console, not " + a_value;
    }
    return {};
}

// The language a plug-in file is run in, by its extension.
std::string language_of(const std::string& a_file) {
    const auto dot = a_file.rfind('.');
    std::string extension = dot == std::string::npos ? "" : a_file.substr(dot + 1);
    for (auto& character : extension) {
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    }
    return extension == "py"   ? "python"
           : extension == "rb" ? "ruby"
           : extension == "pl" ? "perl"
                               : "";
}

} // namespace

void add_debug_option(CLI::App& a_command, std::string& a_value) {
    a_command
        .add_flag("--debug{on}", a_value,
                  "wait for a debugger before the plug-in is loaded: an editor attaches over the "
                  "Debug Adapter Protocol on 127.0.0.1 (Python, Ruby), or to Perl's console; "
                  "=PORT picks the port (a free one otherwise); =console puts the debugger on "
                  "this terminal. No time-out applies while debugging")
        ->check(port_error, "PORT|console")
        ->option_text("[=PORT|console]");
}

std::shared_ptr<debugger::debug_companion> debug_companion_of(const std::string& a_value) {
    if (a_value.empty()) {
        return nullptr;
    }
    debugger::debug_options options;
    options.console = a_value == "console";
    if (!options.console && a_value != "on") {
        options.port = static_cast<std::uint16_t>(std::stoul(a_value));
    }
    return std::make_shared<debugger::debug_companion>(
        options, [](const debugger::debug_endpoint& a_endpoint) {
            std::cerr << debugger::waiting_line(a_endpoint) << std::endl;
        });
}

nlohmann::ordered_json debug_json(const debugger::debug_endpoint& a_endpoint) {
    return {{"language", a_endpoint.language},
            {"host", a_endpoint.host},
            {"port", a_endpoint.port},
            {"protocol", a_endpoint.protocol}};
}

deferred_termination::deferred_termination() {
    g_deferred_signal = 0;
    struct sigaction action {};
    action.sa_handler = defer_termination;
    sigemptyset(&action.sa_mask);
    for (std::size_t index = 0; index < deferred_signals.size(); ++index) {
        sigaction(deferred_signals[index], nullptr, &g_previous[index]);
        if (g_previous[index].sa_handler != SIG_IGN) {
            sigaction(deferred_signals[index], &action, nullptr);
        }
    }
}

bool deferred_termination::signalled() const {
    return g_deferred_signal != 0;
}

deferred_termination::~deferred_termination() {
    for (std::size_t index = 0; index < deferred_signals.size(); ++index) {
        sigaction(deferred_signals[index], &g_previous[index], nullptr);
    }
    if (const int signal_number = g_deferred_signal.exchange(0); signal_number != 0) {
        std::raise(signal_number);
    }
}

cli_command add_debug_config_command(CLI::App& a_app) {
    struct options_type {
        std::string editor;
        std::string plugin;
        std::string plugin_folder;
        std::uint16_t port = default_config_port;
    };
    auto options = std::make_shared<options_type>();
    auto* command = a_app.add_subcommand(
        "debug-config",
        "Print an editor's attach configuration for a plug-in: a launch.json entry (vscode), "
        "an nvim-dap table (nvim) or a dap-mode template (emacs). Then run the plug-in with "
        "--debug=PORT and start the "
        "configuration.\nExit status: 0 printed; 2 bad usage or a Perl plug-in (Perl offers its "
        "console: --debug, then connect with nc 127.0.0.1 PORT).");
    command->add_option("EDITOR", options->editor, "vscode, nvim or emacs")
        ->required()
        ->check(CLI::IsMember({"vscode", "nvim", "emacs"}));
    command
        ->add_option("PLUGIN", options->plugin,
                     "the plug-in: a path to its file, or a file name in the plug-in folder")
        ->required();
    command->add_option("--port", options->port, "the port of --debug=PORT (default 5678)")
        ->check(CLI::Range(1, 65535));
    command->add_option("--plugin-folder", options->plugin_folder, plugin_folder_help);
    return {command, [options] {
                const auto plugin = resolve_plugin(options->plugin, options->plugin_folder);
                if (!plugin) {
                    return static_cast<int>(exit_bad_usage);
                }
                const std::string name = string_encode::to_utf8_marked(plugin->second);
                const std::string text = debugger::attach_configuration(
                    options->editor, language_of(name), name, options->port);
                if (text.empty()) {
                    print_error(name +
                                ": only Python and Ruby plug-ins speak the Debug Adapter "
                                "Protocol; Perl offers its console: run with --debug=" +
                                std::to_string(options->port) + " and connect with nc 127.0.0.1 " +
                                std::to_string(options->port));
                    return static_cast<int>(exit_bad_usage);
                }
                std::cout << text;
                std::cerr << "then: qiro-lumen run --debug=" << options->port << " " << name
                          << " WRITTEN_FORM, and start \"QIRO Lumen: " << name << "\"\n";
                return static_cast<int>(exit_success);
            }};
}

} // namespace qiro_plugin::cli

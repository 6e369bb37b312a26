#pragma once
// Joins the interpreter's own debugger to the entry's command: debugpy (Python) and Ruby's debug
// library speak the Debug Adapter Protocol to an editor; Perl's debugger offers its console.
// Only the command's environment changes; the time-out is lifted while the run is debugged.

#include "core/entry_companion.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace qiro_plugin::debugger {

// Where a debugger meets the run.
struct debug_endpoint {
    std::string language; // "python", "ruby" or "perl"
    std::string host = "127.0.0.1";
    std::uint16_t port = 0;
    // "dap": the Debug Adapter Protocol (Python, Ruby); "console": the debugger's own text
    // console over TCP (Perl); "terminal": the console on the terminal the tool runs in.
    std::string protocol;
};

// "debug: waiting for a debugger on 127.0.0.1:PORT (LANGUAGE)", the one line a front end shows
// before the plug-in is loaded (the terminal's console says so in place of the port).
std::string waiting_line(const debug_endpoint& a_endpoint);

// The attach configuration for an editor ("vscode": a launch.json entry, "nvim": an nvim-dap
// table, "emacs": a dap-mode template) and a language, or an empty text when the language
// offers no Debug Adapter Protocol.
std::string attach_configuration(const std::string& a_editor, const std::string& a_language,
                                 const std::string& a_name, std::uint16_t a_port);

struct debug_options {
    // The port an editor attaches to; 0 picks a free one.
    std::uint16_t port = 0;
    // The debugger talks to the terminal instead of an editor.
    bool console = false;
    // The terminal's descriptors for the console; -1 opens /dev/tty. Owned by the companion
    // once given.
    int terminal_in = -1;
    int terminal_out = -1;
};

class debug_companion : public entry_companion {
public:
    using waiting_notice = std::function<void(const debug_endpoint&)>;

    // a_waiting is called once per run, after everything is ready and before the plug-in's
    // command starts.
    debug_companion(debug_options a_options, waiting_notice a_waiting);
    ~debug_companion() override;

    std::optional<std::string> prepare(const entry_context& a_context,
                                       utility::command_environment& a_environment) override;
    void finish(const run_report& a_report) noexcept override;

    // Where the last run that prepare accepted was awaited.
    std::optional<debug_endpoint> endpoint() const;

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

} // namespace qiro_plugin::debugger

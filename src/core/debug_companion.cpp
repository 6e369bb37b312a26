#include "core/debug_companion.hpp"

#include "debugger_support/console_relay.hpp"
#include "debugger_support/debugger_processes.hpp"
#include "debugger_support/helper_files.hpp"
#include "debugger_support/loopback.hpp"
#include "debugger_support/tool_check.hpp"
#include "platform/sandbox.hpp"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace qiro_plugin::debugger {

namespace {

namespace support = debugger_support;

// How long debugpy's adapter may take to notice that its debuggee ended before it is killed.
constexpr std::chrono::milliseconds adapter_grace{2000};

const char* const adapter_mark = "QIRO_LUMEN_DEBUG_ADAPTER";

// The variable set to a_value, its earlier value kept in QIRO_LUMEN_DEBUG_<NAME> for the helper
// to put back, so that the plug-in and its own commands see the environment they would see.
void set_keeping_original(utility::command_environment& a_environment, const std::string& a_name,
                          const std::string& a_value, const std::string& a_separator) {
    const char* original = std::getenv(a_name.c_str());
    std::string value = a_value;
    if (original != nullptr) {
        if (*original != '\0') {
            value += a_separator + original;
        }
        a_environment.variables.emplace_back("QIRO_LUMEN_DEBUG_" + a_name, original);
    }
    a_environment.variables.emplace_back(a_name, value);
}

// Perl code naming a file, in single quotes.
std::string perl_quoted(const std::string& a_text) {
    std::string quoted = "'";
    for (const char character : a_text) {
        if (character == '\'' || character == '\\') {
            quoted += '\\';
        }
        quoted += character;
    }
    return quoted + "'";
}

int open_terminal(int a_flags) {
    const int fd = ::open("/dev/tty", a_flags | O_CLOEXEC | O_NOCTTY);
    if (fd == -1) {
        throw std::runtime_error(std::string("the console needs a terminal: /dev/tty: ") +
                                 std::strerror(errno));
    }
    return fd;
}

// A dap-mode template: the provider of its own type hands the template over unchanged, so
// dap-mode connects to the port (:debugServer) instead of starting an adapter, and one a
// language package registered (dap-python's "python") is left alone.
std::string emacs_template(const std::string& a_language, const std::string& a_title,
                           const std::string& a_port) {
    std::string type_name = "qiro-lumen-";
    type_name += a_language;
    const std::string type = nlohmann::json(type_name).dump();
    const std::string title = nlohmann::json(a_title).dump();
    std::string form = ";; Evaluate this form or put it in your init file; then M-x dap-debug, ";
    form += title;
    form += ".\n(progn\n  (require 'dap-mode)\n  (dap-register-debug-provider ";
    form += type;
    form += " #'identity)\n  (dap-register-debug-template\n   ";
    form += title;
    form += "\n   (list :type ";
    form += type;
    form += "\n         :request \"attach\"\n         :name ";
    form += title;
    form += "\n         :host \"127.0.0.1\"\n         :debugServer ";
    form += a_port;
    if (a_language == "python") {
        form += "\n         :justMyCode :json-false";
    }
    form += ")))\n";
    return form;
}

} // namespace

std::string waiting_line(const debug_endpoint& a_endpoint) {
    if (a_endpoint.protocol == "terminal") {
        return "debug: the " + a_endpoint.language + " debugger is on this terminal";
    }
    return "debug: waiting for a debugger on " + a_endpoint.host + ":" +
           std::to_string(a_endpoint.port) + " (" + a_endpoint.language + ")";
}

std::string attach_configuration(const std::string& a_editor, const std::string& a_language,
                                 const std::string& a_name, std::uint16_t a_port) {
    if (a_language != "python" && a_language != "ruby") {
        return {};
    }
    const std::string port = std::to_string(a_port);
    const std::string title = "QIRO Lumen: " + a_name;
    if (a_editor == "vscode") {
        nlohmann::ordered_json entry;
        entry["name"] = title;
        if (a_language == "python") {
            entry["type"] = "debugpy";
            entry["request"] = "attach";
            entry["connect"] = {{"host", "127.0.0.1"}, {"port", a_port}};
            entry["justMyCode"] = false;
        } else {
            entry["type"] = "rdbg";
            entry["request"] = "attach";
            entry["debugPort"] = "127.0.0.1:" + port;
        }
        return entry.dump(4) + "\n";
    }
    if (a_editor == "emacs") {
        return emacs_template(a_language, title, port);
    }
    const std::string adapter = "qiro_lumen_" + a_language;
    return "local dap = require('dap')\n"
           "dap.adapters." +
           adapter + " = { type = 'server', host = '127.0.0.1', port = " + port +
           " }\n"
           "dap.configurations." +
           a_language + " = dap.configurations." + a_language +
           " or {}\n"
           "table.insert(dap.configurations." +
           a_language +
           ", {\n"
           "  type = '" +
           adapter +
           "',\n"
           "  request = 'attach',\n"
           "  name = " +
           nlohmann::json(title).dump() + ",\n" +
           (a_language == "python" ? "  justMyCode = false,\n" : "") + "})\n";
}

struct debug_companion::impl {
    debug_options m_options;
    waiting_notice m_waiting;
    std::optional<debug_endpoint> m_endpoint;
    // What one run holds, released in this order: the relay, then the helper's folder.
    std::unique_ptr<support::private_folder> m_folder;
    std::unique_ptr<support::console_relay> m_relay;
    std::string m_adapter_entry;

    impl(debug_options a_options, waiting_notice a_waiting)
        : m_options(a_options), m_waiting(std::move(a_waiting)) {}

    ~impl() {
        release();
        for (const int fd : {m_options.terminal_in, m_options.terminal_out}) {
            if (fd != -1) {
                ::close(fd);
            }
        }
    }

    void release() noexcept {
        m_relay.reset();
        if (!m_adapter_entry.empty()) {
            try {
                support::end_processes_with_environment(m_adapter_entry, adapter_grace);
            } catch (...) {
            }
            m_adapter_entry.clear();
        }
        m_folder.reset();
    }

    // The console relayed to the terminal, or to whoever connects to the author's port.
    std::uint16_t start_console(bool a_terminal, std::uint16_t& a_interpreter_port) {
        support::loopback_listener interpreter(0);
        a_interpreter_port = interpreter.port();
        if (a_terminal) {
            const int in = m_options.terminal_in != -1 ? ::dup(m_options.terminal_in)
                                                       : open_terminal(O_RDONLY);
            const int out = m_options.terminal_out != -1 ? ::dup(m_options.terminal_out)
                                                         : open_terminal(O_WRONLY);
            m_relay = std::make_unique<support::console_relay>(std::move(interpreter), in, out);
            return 0;
        }
        support::loopback_listener author(m_options.port);
        const std::uint16_t port = author.port();
        m_relay =
            std::make_unique<support::console_relay>(std::move(interpreter), std::move(author));
        return port;
    }

    // What the helper of a language with a terminal console and DAP is told: "console PORT
    // PLUGIN" (the relay to the terminal is listening) or "dap PORT" (the port the editor uses).
    std::string console_or_dap_trigger(const entry_context& a_context, debug_endpoint& a_endpoint) {
        if (m_options.console) {
            std::uint16_t interpreter_port = 0;
            start_console(true, interpreter_port);
            return "console " + std::to_string(interpreter_port) + " " + a_context.plugin_path;
        }
        a_endpoint.port = support::available_loopback_port(m_options.port);
        return "dap " + std::to_string(a_endpoint.port);
    }

    void prepare_python(const entry_context& a_context, debug_endpoint& a_endpoint,
                        utility::command_environment& a_environment) {
        m_folder->write_file("sitecustomize.py", support::helper_script("python"));
        const std::string trigger = console_or_dap_trigger(a_context, a_endpoint);
        if (!m_options.console) {
            m_adapter_entry = std::string(adapter_mark) + "=" + m_folder->path();
            a_environment.variables.emplace_back(adapter_mark, m_folder->path());
        }
        set_keeping_original(a_environment, "PYTHONPATH", m_folder->path(), ":");
        a_environment.variables.emplace_back("QIRO_LUMEN_DEBUG_PYTHON", trigger);
    }

    void prepare_ruby(const entry_context& a_context, debug_endpoint& a_endpoint,
                      utility::command_environment& a_environment) {
        m_folder->write_file("qiro_lumen_debug.rb", support::helper_script("ruby"));
        const std::string trigger = console_or_dap_trigger(a_context, a_endpoint);
        // RUBYOPT is split at blanks, RUBYLIB is not: the folder goes on RUBYLIB.
        set_keeping_original(a_environment, "RUBYLIB", m_folder->path(), ":");
        set_keeping_original(a_environment, "RUBYOPT", "-rqiro_lumen_debug", " ");
        a_environment.variables.emplace_back("QIRO_LUMEN_DEBUG_RUBY", trigger);
    }

    void prepare_perl(const entry_context& a_context, debug_endpoint& a_endpoint,
                      utility::command_environment& a_environment) {
        const std::string helper =
            m_folder->write_file("qiro_lumen_debug.pl", support::helper_script("perl"));
        std::uint16_t interpreter_port = 0;
        a_endpoint.port = start_console(m_options.console, interpreter_port);
        set_keeping_original(a_environment, "PERL5OPT", "-d", " ");
        a_environment.variables.emplace_back("PERL5DB",
                                             "BEGIN { require " + perl_quoted(helper) + " }");
        a_environment.variables.emplace_back(
            "PERLDB_OPTS",
            "RemotePort=127.0.0.1:" + std::to_string(interpreter_port) + " inhibit_exit=0");
        a_environment.variables.emplace_back("QIRO_LUMEN_DEBUG_PERL",
                                             diagnosis::method_name(a_context.entry));
    }

    std::optional<std::string> prepare(const entry_context& a_context,
                                       utility::command_environment& a_environment) {
        release();
        m_endpoint.reset();
        const std::string& language = a_context.language;
        if (language != "python" && language != "ruby" && language != "perl") {
            return "no debugger is known for the language " + language;
        }
        if (const auto* sandbox = utility::current_sandbox();
            sandbox != nullptr && sandbox->mode == utility::sandbox_mode::nonet) {
            return "--sandbox=nonet gives the plug-in no network, not even the loopback a "
                   "debugger talks over; debug with --sandbox=on or without a sandbox";
        }
        if (auto missing = support::missing_debugger(language)) {
            return missing;
        }
        debug_endpoint endpoint;
        endpoint.language = language;
        endpoint.protocol = m_options.console ? "terminal" : language == "perl" ? "console" : "dap";
        try {
            // Beside the bridge file: a sandboxed command sees the data folder, not /tmp.
            m_folder = std::make_unique<support::private_folder>(a_context.data_folder);
            if (language == "python") {
                prepare_python(a_context, endpoint, a_environment);
            } else if (language == "ruby") {
                prepare_ruby(a_context, endpoint, a_environment);
            } else {
                prepare_perl(a_context, endpoint, a_environment);
            }
        } catch (const std::system_error& error) {
            release();
            return "no debugger can listen on 127.0.0.1:" + std::to_string(m_options.port) + ": " +
                   error.code().message();
        } catch (const std::exception& error) {
            release();
            return error.what();
        }
        a_environment.without_timeout = true;
        m_endpoint = endpoint;
        if (m_waiting) {
            m_waiting(endpoint);
        }
        return std::nullopt;
    }
};

debug_companion::debug_companion(debug_options a_options, waiting_notice a_waiting)
    : p_impl(std::make_unique<impl>(a_options, std::move(a_waiting))) {}

debug_companion::~debug_companion() = default;

std::optional<std::string> debug_companion::prepare(const entry_context& a_context,
                                                    utility::command_environment& a_environment) {
    return p_impl->prepare(a_context, a_environment);
}

void debug_companion::finish(const run_report& a_report) noexcept {
    static_cast<void>(a_report);
    p_impl->release();
}

std::optional<debug_endpoint> debug_companion::endpoint() const {
    return p_impl->m_endpoint;
}

} // namespace qiro_plugin::debugger

#include "core/debug_companion.hpp"
#include "core/debug_runner.hpp"
#include "core/pane_text_sink.hpp"
#include "platform/command_runner.hpp"
#include "platform/data_folder.hpp"
#include "support/loopback_client.hpp"
#include "support/process_scan.hpp"
#include "support/run_fakes.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <arpa/inet.h>
#include <future>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace qiro_plugin::debugger {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;
namespace fs = std::filesystem;

// Only a safety net: every wait below ends on something observable long before.
constexpr auto patience = 60s;

int connect_when_listening(std::uint16_t a_port) {
    return test_support::connect_when_listening(a_port, patience);
}

// Appends what the peer sends next; false when it closed (or the safety net ran out).
bool read_more(int a_fd, std::string& a_buffer) {
    pollfd wait{a_fd, POLLIN, 0};
    char chunk[4096];
    ssize_t got = 0;
    if (::poll(&wait, 1, 60000) != 1 || (got = ::read(a_fd, chunk, sizeof(chunk))) <= 0) {
        return false;
    }
    a_buffer.append(chunk, static_cast<std::size_t>(got));
    return true;
}

// The bytes the peer sent until a_text arrived (or it closed).
std::string read_until(int a_fd, std::string& a_buffer, const std::string& a_text) {
    while (a_buffer.find(a_text) == std::string::npos) {
        if (!read_more(a_fd, a_buffer)) {
            return std::exchange(a_buffer, "");
        }
    }
    const std::size_t end = a_buffer.find(a_text) + a_text.size();
    std::string head = a_buffer.substr(0, end);
    a_buffer.erase(0, end);
    return head;
}

// A Debug Adapter Protocol client, as an editor would speak it.
class dap_client {
public:
    explicit dap_client(std::uint16_t a_port) : m_fd(connect_when_listening(a_port)) {}
    ~dap_client() { ::close(m_fd); }

    // Sends a request and returns the first message a_until accepts.
    json request(const std::string& a_command, json a_arguments,
                 const std::function<bool(const json&)>& a_until = {}) {
        const std::string body = json{
            {"seq", ++m_seq},
            {"type", "request"},
            {"command", a_command},
            {"arguments",
             std::move(a_arguments)}}.dump();
        const std::string frame =
            "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
        static_cast<void>(::send(m_fd, frame.data(), frame.size(), MSG_NOSIGNAL));
        return next(a_until ? a_until : [&](const json& a_message) {
            return a_message.value("command", "") == a_command;
        });
    }
    json next(const std::function<bool(const json&)>& a_accept) {
        while (true) {
            const std::string header = read_until(m_fd, m_buffer, "\r\n\r\n");
            const auto length = header.find("Content-Length: ");
            if (length == std::string::npos) {
                return json{};
            }
            const std::size_t size = std::stoul(header.substr(length + 16));
            while (m_buffer.size() < size && read_more(m_fd, m_buffer)) {
            }
            json message = json::parse(m_buffer.substr(0, size), nullptr, false);
            m_buffer.erase(0, size);
            if (a_accept(message)) {
                return message;
            }
        }
    }

private:
    int m_fd;
    int m_seq = 0;
    std::string m_buffer;
};

bool is_event(const json& a_message, const char* a_event) {
    return a_message.value("event", "") == a_event;
}

class debug_companion_test : public ::testing::Test {
protected:
    debug_companion_test() : runner(panes, alerts) {
        ::setenv("HOME", home.path().c_str(), 1);
        ::setenv("PATH", ("/usr/bin:/bin:" + original_path).c_str(), 1);
        for (const char* name : {"candidates.py", "candidates.rb", "candidates.pl"}) {
            fs::copy_file(fs::path(QIRO_TEST_DATA_DIR) / "runtime" / name, folder() / name);
        }
        fs::create_directories(utility::get_qiro_lumen_data_folder());
    }
    // A test that failed halfway leaves no run waiting for a debugger.
    ~debug_companion_test() override {
        utility::stop_running_commands();
        runs.clear();
        ::setenv("PATH", original_path.c_str(), 1);
    }
    fs::path folder() const { return home.path(); }
    plugin_entry plugin(const std::string& a_name) const {
        const std::string text = folder().string() + "/";
        return {utf16_string(text.begin(), text.end()), utf16_string(a_name.begin(), a_name.end())};
    }

    // Starts a debugged run of a_name on its own thread; the port is known once it waits.
    std::shared_future<run_report> debug(const std::string& a_name, debug_options a_options = {}) {
        port = {};
        companion =
            std::make_shared<debug_companion>(a_options, [this](const debug_endpoint& a_at) {
                lines.push_back(waiting_line(a_at));
                port.set_value(a_at.port);
            });
        auto request = processing_request(plugin(a_name), u"変換");
        request.options.companions.push_back(companion);
        runs.push_back(std::async(std::launch::async, [this, request] {
                           return runner.run(request);
                       }).share());
        return runs.back();
    }
    std::uint16_t waiting_port() {
        auto known = port.get_future();
        return known.wait_for(patience) == std::future_status::ready ? known.get() : 0;
    }
    // The candidate-list document of a plain run.
    std::string plain_candidates(const std::string& a_name) {
        return runner.run(processing_request(plugin(a_name), u"変換")).candidate_list;
    }
    // debugpy adapters started for this test's runs (their environment names its home).
    int adapters() const {
        int found = 0;
        for (const auto& entry : fs::directory_iterator("/proc")) {
            const std::string pid = entry.path().filename();
            found += std::isdigit(static_cast<unsigned char>(pid[0])) &&
                     !test_support::is_ended(pid) &&
                     test_support::read_file(entry.path() / "cmdline").find("debugpy/adapter") !=
                         std::string::npos &&
                     test_support::read_file(entry.path() / "environ").find(home.path()) !=
                         std::string::npos;
        }
        return found;
    }
    // What the runs left in the data folder (bridge files, the helpers' folders).
    std::set<std::string> left_files() const {
        return test_support::names_in(utility::get_qiro_lumen_data_folder());
    }

    const std::string original_path = std::getenv("PATH");
    test_support::scratch_folder home;
    pane_text_sink panes;
    testing::recording_sinks alerts;
    debug_runner runner;
    std::shared_ptr<debug_companion> companion;
    std::vector<std::shared_future<run_report>> runs;
    std::promise<std::uint16_t> port;
    std::vector<std::string> lines;
};

// Attaches, breaks at a_line of the plug-in file, reads a_expression there, and continues, or
// when not a_then_continue goes away as an editor closed at the stop would.
std::string break_read_continue(std::uint16_t a_port, const fs::path& a_file, int a_line,
                                const std::string& a_expression, bool a_then_continue = true) {
    dap_client client(a_port);
    client.request("initialize", {{"adapterID", "test"},
                                  {"linesStartAt1", true},
                                  {"columnsStartAt1", true},
                                  {"pathFormat", "path"}});
    client.request("attach", {{"justMyCode", false}}, [](const json& a_message) {
        return is_event(a_message, "initialized") || a_message.value("command", "") == "attach";
    });
    const json set =
        client.request("setBreakpoints", {{"source", {{"path", a_file.string()}}},
                                          {"breakpoints", json::array({{{"line", a_line}}})}});
    EXPECT_TRUE(set["body"]["breakpoints"][0].value("verified", false)) << set.dump();
    const json stopped = client.request("configurationDone", json::object(),
                                        [](const json& a_m) { return is_event(a_m, "stopped"); });
    EXPECT_EQ(stopped["body"].value("reason", ""), "breakpoint") << stopped.dump();
    const int thread = stopped["body"].value("threadId", 1);
    const json stack = client.request("stackTrace", {{"threadId", thread}});
    const json& top = stack["body"]["stackFrames"][0];
    EXPECT_EQ(top["source"].value("path", ""), a_file.string()) << stack.dump();
    EXPECT_EQ(top.value("line", 0), a_line);
    const json value = client.request(
        "evaluate", {{"expression", a_expression}, {"frameId", top["id"]}, {"context", "repl"}});
    if (a_then_continue) {
        client.request("continue", {{"threadId", thread}});
    }
    return value["body"].value("result", "");
}

TEST_F(debug_companion_test,
       an_editor_breaks_in_a_python_plugin_reads_request_and_the_run_ends_as_a_plain_one) {
    const auto expected = plain_candidates("candidates.py");
    auto run = debug("candidates.py");
    const std::uint16_t at = waiting_port();
    ASSERT_NE(at, 0);
    EXPECT_EQ(lines, std::vector<std::string>{"debug: waiting for a debugger on 127.0.0.1:" +
                                              std::to_string(at) + " (python)"});
    EXPECT_EQ(break_read_continue(at, folder() / "candidates.py", 11,
                                  "request['composition_string'] + first['info']"),
              "'変換名詞'");
    const auto report = run.get();
    EXPECT_EQ(report.result, run_report::outcome::completed);
    EXPECT_EQ(report.candidates.size(), 2U);
    EXPECT_EQ(report.candidate_list, expected);
    EXPECT_EQ(report.run_std_error, "");
    EXPECT_EQ(companion->endpoint()->protocol, "dap");
    EXPECT_EQ(adapters(), 0) << "the adapter ended with the run";
    EXPECT_EQ(left_files(), std::set<std::string>{});
}

TEST_F(debug_companion_test, an_editor_breaks_in_a_ruby_plugin_with_no_stop_of_its_own_first) {
    const auto expected = plain_candidates("candidates.rb");
    auto run = debug("candidates.rb");
    const std::uint16_t at = waiting_port();
    ASSERT_NE(at, 0);
    EXPECT_EQ(break_read_continue(at, folder() / "candidates.rb", 9, "request"),
              R"({"composition_string"=>"変換", "reading_string"=>"", "proxy_name"=>"", )"
              R"("proxy_port"=>0, "proxy_username"=>"", "proxy_password"=>""})");
    const auto report = run.get();
    EXPECT_EQ(report.result, run_report::outcome::completed);
    EXPECT_EQ(report.candidates.size(), 2U);
    EXPECT_EQ(report.candidate_list, expected);
    EXPECT_EQ(report.run_std_error, "") << "the library's notes stay out of the plug-in's output";
    EXPECT_EQ(left_files(), std::set<std::string>{});

    // An editor closed at the stop leaves the run to finish as a plain one, not killed.
    auto left = debug("candidates.rb");
    const std::uint16_t again = waiting_port();
    ASSERT_NE(again, 0);
    EXPECT_NE(break_read_continue(again, folder() / "candidates.rb", 9, "request", false), "");
    EXPECT_EQ(left.get().candidate_list, expected);
    EXPECT_EQ(left_files(), std::set<std::string>{});
}

TEST_F(debug_companion_test, the_perl_console_sets_a_breakpoint_continues_and_prints_a_variable) {
    const auto expected = plain_candidates("candidates.pl");
    auto run = debug("candidates.pl");
    const std::uint16_t at = waiting_port();
    ASSERT_NE(at, 0);
    EXPECT_EQ(companion->endpoint()->protocol, "console");
    const int console = connect_when_listening(at);
    std::string buffer;
    const auto say = [&](const std::string& a_command) {
        const std::string line = a_command + "\n";
        static_cast<void>(::send(console, line.data(), line.size(), MSG_NOSIGNAL));
        return read_until(console, buffer, "DB<");
    };
    // The helper's own commands come first; then the first stop: the entry's first line.
    EXPECT_NE(read_until(console, buffer, "candidates.pl:7):"), "");
    read_until(console, buffer, "DB<");
    say("b 13");
    EXPECT_NE(say("c").find("candidates.pl:13"), std::string::npos);
    EXPECT_NE(say("p $first{alternative} . length($request->{composition_string})").find("a<b2"),
              std::string::npos);
    static_cast<void>(::send(console, "c\n", 2, MSG_NOSIGNAL));
    const auto report = run.get();
    ::close(console);
    EXPECT_EQ(report.result, run_report::outcome::completed);
    EXPECT_EQ(report.candidates.size(), 2U);
    EXPECT_EQ(report.candidate_list, expected);
    EXPECT_EQ(report.run_std_error, "");
    EXPECT_EQ(left_files(), std::set<std::string>{});
}

// The terminal consoles of Python and Ruby, driven through a socket pair in place of /dev/tty:
// the first stop is the plug-in's own first line, a breakpoint and a print work, and closing
// the terminal lets the run end as a plain one.
TEST_F(debug_companion_test, the_terminal_consoles_stop_in_the_plugin_and_end_when_closed) {
    struct language {
        const char* file;
        const char* first_stop;
        const char* breakpoint;
        const char* stopped_at;
        const char* print;
        const char* printed;
        const char* prompt;
    };
    for (const language& each :
         {language{"candidates.py", "candidates.py(5)", "b 11", "candidates.py(11)",
                   "p request['composition_string'] + first['info']", "'変換名詞'", "(Pdb) "},
          language{"candidates.rb", "candidates.rb:2", "break 9", "candidates.rb:9",
                   "p request[\"composition_string\"]", "=> \"変換\"", "(rdbg) "}}) {
        SCOPED_TRACE(each.file);
        const auto expected = plain_candidates(each.file);
        int terminal[2];
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, terminal), 0);
        port = {};
        auto run = debug(each.file, {0, true, terminal[1], ::dup(terminal[1])});
        std::string buffer;
        const auto say = [&](const std::string& a_command) {
            const std::string line = a_command + "\n";
            static_cast<void>(::send(terminal[0], line.data(), line.size(), MSG_NOSIGNAL));
            return read_until(terminal[0], buffer, each.prompt);
        };
        EXPECT_NE(read_until(terminal[0], buffer, each.prompt).find(each.first_stop),
                  std::string::npos);
        EXPECT_EQ(companion->endpoint()->protocol, "terminal");
        say(each.breakpoint);
        EXPECT_NE(say("c").find(each.stopped_at), std::string::npos);
        EXPECT_NE(say(each.print).find(each.printed), std::string::npos);
        ::close(terminal[0]);
        const auto report = run.get();
        EXPECT_EQ(report.result, run_report::outcome::completed);
        EXPECT_EQ(report.candidate_list, expected);
        EXPECT_EQ(report.run_std_error, "");
        EXPECT_EQ(left_files(), std::set<std::string>{});
    }
}

TEST_F(debug_companion_test, one_adapter_and_a_stop_with_no_client_leaves_no_process_and_no_file) {
    auto run = debug("candidates.py");
    ASSERT_NE(waiting_port(), 0);
    // The adapter is up once the plug-in's command waits for a client.
    ASSERT_TRUE(test_support::wait_for([&] { return adapters() > 0; }, patience));
    EXPECT_EQ(adapters(), 1);
    EXPECT_EQ(test_support::names_in(utility::get_qiro_lumen_data_folder()).size(), 2U)
        << "the bridge file and the helper's folder";
    utility::stop_running_commands();
    ASSERT_EQ(run.wait_for(patience), std::future_status::ready);
    EXPECT_TRUE(run.get().timed_out_after_s.has_value());
    EXPECT_EQ(adapters(), 0);
    EXPECT_EQ(test_support::processes_mentioning(home.path().string(), "environ"), 0);
    EXPECT_EQ(left_files(), std::set<std::string>{});
}

TEST_F(debug_companion_test, slow_a_debugged_run_outlives_the_time_out_until_stopped) {
    const auto started = std::chrono::steady_clock::now();
    auto run = debug("candidates.py");
    ASSERT_NE(waiting_port(), 0);
    // The runner gives up on a plain command after 30 s.
    std::this_thread::sleep_until(started + 32s);
    EXPECT_EQ(run.wait_for(0s), std::future_status::timeout);
    utility::stop_running_commands();
    ASSERT_EQ(run.wait_for(patience), std::future_status::ready);
    EXPECT_EQ(adapters(), 0);
    EXPECT_EQ(left_files(), std::set<std::string>{});
}

TEST_F(debug_companion_test, a_missing_or_old_debugger_or_a_taken_port_refuses_before_the_entry) {
    const fs::path bin = folder() / "bin";
    test_support::write_script(bin / "python", "exec /usr/bin/python3 -S \"$@\"\n");
    test_support::write_script(bin / "ruby", "[ \"$1\" = -rdebug/version ] && printf 1.3.9 && "
                                             "exit\nexec /usr/bin/ruby \"$@\"\n");
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", (bin.string() + ":" + path).c_str(), 1);
    for (const auto& [name, package] : {std::pair{"candidates.py", "python3-debugpy"},
                                        std::pair{"candidates.rb", "found: 1.3.9"}}) {
        const auto before = utility::started_command_count();
        const auto report = debug(name).get();
        EXPECT_EQ(report.result, run_report::outcome::refused);
        EXPECT_NE(report.refusal.find(package), std::string::npos) << report.refusal;
        EXPECT_EQ(utility::started_command_count() - before, 1U) << "the syntax check alone";
        port = {};
    }
    ::setenv("PATH", path.c_str(), 1);
    debug_options taken;
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address));
    ::listen(fd, 1);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    taken.port = ntohs(address.sin_port);
    const auto report = debug("candidates.pl", taken).get();
    ::close(fd);
    EXPECT_EQ(report.result, run_report::outcome::refused);
    EXPECT_NE(report.refusal.find("127.0.0.1:" + std::to_string(taken.port)), std::string::npos);
    EXPECT_TRUE(lines.empty());
    EXPECT_EQ(left_files(), std::set<std::string>{});
}

// What the plug-in sees of its command: the arguments and the environment, on standard error.
const char* const environment_plugin = R"(import json, os, sys
def qiro_plugin_run_process(request):
    sys.stderr.write(json.dumps([sys.argv[2:], dict(os.environ)]))
    return {"candidate": [{"hyoki": "x"}]}
)";

TEST_F(debug_companion_test,
       the_plugin_sees_the_same_command_and_environment_with_or_without_debugging) {
    test_support::write_file(folder() / "environment.py", environment_plugin);
    const auto plain = json::parse(
        runner.run(processing_request(plugin("environment.py"), u"変換")).run_std_error);
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const std::string name = text.substr(0, text.find('='));
        if (name != "PWD" && name != "SHLVL" && name != "_" && name != "OLDPWD") {
            EXPECT_EQ(plain[1].value(name, "(unset)"), text.substr(name.size() + 1)) << name;
        }
    }
    auto run = debug("environment.py");
    dap_client client(waiting_port());
    client.request("initialize", {{"adapterID", "test"}});
    client.request("attach", {{"justMyCode", false}}, [](const json& a_message) {
        return is_event(a_message, "initialized") || a_message.value("command", "") == "attach";
    });
    client.request("configurationDone", json::object());
    const auto debugged = json::parse(run.get().run_std_error);
    EXPECT_EQ(debugged[0], plain[0]) << "the same command line";
    EXPECT_EQ(debugged[1], plain[1]) << "the helper put the environment back";
}

} // namespace
} // namespace qiro_plugin::debugger

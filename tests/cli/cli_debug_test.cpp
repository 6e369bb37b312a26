#include "support/cli_process.hpp"
#include "support/loopback_client.hpp"
#include "support/process_scan.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <arpa/inet.h>
#include <csignal>
#include <fstream>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace qiro_plugin::cli::testing {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

TEST(cli_debug, an_interrupted_debugged_run_leaves_no_debugger_and_no_helper_file) {
    cli_sandbox sandbox;
    const fs::path data = sandbox.home() / "Library/Preferences/QIRO Lumen";
    const pid_t program = sandbox.start(
        {"run", "--debug", "--plugin-folder", sandbox.plugins().string(), "echo_request.py", "x"});
    ASSERT_GT(program, 0);
    // The adapter is up once the plug-in waits for an editor; it carries the sandbox's home.
    const auto adapters = [&] {
        int found = 0;
        for (const auto& entry : fs::directory_iterator("/proc")) {
            const std::string pid = entry.path().filename();
            found +=
                std::isdigit(static_cast<unsigned char>(pid[0])) && !is_ended(pid) &&
                test_support::read_file(entry.path() / "cmdline").find("debugpy/adapter") !=
                    std::string::npos &&
                test_support::read_file(entry.path() / "environ").find(sandbox.home().string()) !=
                    std::string::npos;
        }
        return found;
    };
    ASSERT_TRUE(wait_for([&] { return adapters() == 1; }, 60s));
    const int status = signal_and_reap(program, SIGINT);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_EQ(adapters(), 0);
    EXPECT_EQ(test_support::processes_mentioning(sandbox.root().string()), 0);
    EXPECT_EQ(test_support::names_in(data), std::set<std::string>{"echo request"})
        << "the plug-in's settings folder alone: no bridge file, no helper's folder";
}

// A loopback port nothing listens on right now.
std::uint16_t free_port() {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address));
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    ::close(fd);
    return ntohs(address.sin_port);
}

// Connects to the port once something listens there, and sends "c" to each console prompt
// until the debugger hangs up.
void continue_console_until_closed(std::uint16_t a_port) {
    const int fd = test_support::connect_when_listening(a_port, 60s);
    ASSERT_NE(fd, -1);
    std::string seen;
    char chunk[4096];
    for (ssize_t got = 0; (got = ::read(fd, chunk, sizeof(chunk))) > 0;) {
        seen.append(chunk, static_cast<std::size_t>(got));
        if (seen.find("DB<") != std::string::npos) {
            seen.clear();
            static_cast<void>(::send(fd, "c\n", 2, MSG_NOSIGNAL));
        }
    }
    ::close(fd);
}

TEST(cli_debug, json_names_where_the_debugger_was_awaited_beside_the_plain_report) {
    cli_sandbox sandbox;
    // It returns a hash reference where the bridge wants a list, so that there is a diagnosis
    // to compare too.
    test_support::write_file(sandbox.plugins() / "counts.pl",
                             "package Qiro_plugin;\n"
                             "sub run_process {\n"
                             "    my ($request) = @_;\n"
                             "    return { candidate => [ { hyoki => 'n' . length($request->{"
                             "composition_string}) } ] };\n"
                             "}\n"
                             "1;\n");
    const std::vector<std::string> plain = {
        "run", "--json", "--plugin-folder", sandbox.plugins().string(), "counts.pl", "abc"};
    auto expected = parse_json(sandbox.run(plain));
    const std::uint16_t port = free_port();
    auto debugged_arguments = plain;
    debugged_arguments.insert(debugged_arguments.begin() + 1, "--debug=" + std::to_string(port));
    const fs::path output = sandbox.root() / "debugged.json";
    const pid_t program = sandbox.start(debugged_arguments, output);
    ASSERT_GT(program, 0);
    continue_console_until_closed(port);
    int status = 0;
    ASSERT_EQ(::waitpid(program, &status, 0), program);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    std::ifstream file(output);
    auto debugged = nlohmann::ordered_json::parse(file, nullptr, false);
    ASSERT_TRUE(debugged.is_object());
    EXPECT_EQ(
        debugged["debug"],
        (nlohmann::ordered_json{
            {"language", "perl"}, {"host", "127.0.0.1"}, {"port", port}, {"protocol", "console"}}));
    for (auto* report : {&expected, &debugged}) {
        report->erase("debug");
        report->erase("timings_ms");
    }
    EXPECT_EQ(debugged, expected) << "the rest is the plain run's report";
}

TEST(cli_debug, bad_ports_and_a_test_session_of_more_than_one_case_are_bad_usage) {
    cli_sandbox sandbox;
    for (const char* value : {"--debug=0", "--debug=65536", "--debug=x"}) {
        EXPECT_EQ(sandbox.run({"run", value, "echo_request.py", "x"}).status, 2) << value;
    }
    test_support::write_file(sandbox.plugins() / "echo_request.cases.json",
                             R"({"cases": [{"name": "a", "written_form": "a"},
                                           {"name": "b", "written_form": "b"}]})");
    const auto session = sandbox.run({"test", "--debug", sandbox.plugins().string()});
    EXPECT_EQ(session.status, 2);
    EXPECT_NE(session.err.find("--case NAME"), std::string::npos) << session.err;
}

TEST(cli_debug, debug_config_prints_an_attach_entry_for_python_and_ruby_only) {
    cli_sandbox sandbox;
    const auto vscode = sandbox.run({"debug-config", "vscode", "--port", "6001", "--plugin-folder",
                                     sandbox.plugins().string(), "echo_request.py"});
    ASSERT_EQ(vscode.status, 0) << vscode.err;
    const auto entry = nlohmann::json::parse(vscode.out);
    EXPECT_EQ(entry["request"], "attach");
    EXPECT_EQ(entry["connect"]["port"], 6001);
    EXPECT_EQ(entry["connect"]["host"], "127.0.0.1");
    const auto nvim = sandbox.run(
        {"debug-config", "nvim", "--plugin-folder", sandbox.plugins().string(), "noisy_output.rb"});
    EXPECT_NE(nvim.out.find("dap.adapters.qiro_lumen_ruby = { type = 'server', host = "
                            "'127.0.0.1', port = 5678 }"),
              std::string::npos)
        << nvim.out;
    // dap-mode: a template that connects to the port itself, its title an Emacs string.
    test_support::write_file(sandbox.plugins() / "say \"hi\".py", "");
    const auto emacs = sandbox.run({"debug-config", "emacs", "--port", "6002", "--plugin-folder",
                                    sandbox.plugins().string(), "say \"hi\".py"});
    ASSERT_EQ(emacs.status, 0) << emacs.err;
    for (const char* part : {"(dap-register-debug-template\n   \"QIRO Lumen: say \\\"hi\\\".py\"",
                             ":request \"attach\"", ":host \"127.0.0.1\"", ":debugServer 6002",
                             ":justMyCode :json-false"}) {
        EXPECT_NE(emacs.out.find(part), std::string::npos) << part << "\n" << emacs.out;
    }
    test_support::write_file(sandbox.plugins() / "plain.pl", "1;\n");
    EXPECT_EQ(sandbox
                  .run({"debug-config", "vscode", "--plugin-folder", sandbox.plugins().string(),
                        "plain.pl"})
                  .status,
              2);
}

} // namespace
} // namespace qiro_plugin::cli::testing

#include "cli_process.hpp"
#include "support/process_scan.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <netinet/in.h>
#include <regex>
#include <sys/socket.h>
#include <unistd.h>

namespace qiro_plugin::cli::testing {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;
using ::testing::HasSubstr;

// A TCP listener on 127.0.0.1 at a port of the system's choice.
class local_listener {
public:
    local_listener() : m_fd(::socket(AF_INET, SOCK_STREAM, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(m_fd, generic, size) != 0 || ::listen(m_fd, SOMAXCONN) != 0 ||
            ::getsockname(m_fd, generic, &size) != 0) {
            throw std::runtime_error("no listener");
        }
        port = std::to_string(ntohs(address.sin_port));
    }
    ~local_listener() { ::close(m_fd); }
    std::string port;

private:
    int m_fd;
};

json report_of(const process_result& a_result) {
    return json::parse(a_result.out, nullptr, false);
}

std::string titles(const json& a_report) {
    std::string text;
    for (const auto& candidate : a_report["candidates"]) {
        text += (text.empty() ? "" : " ") + candidate["title"].get<std::string>();
    }
    return text;
}

TEST(cli_sandbox, a_confined_plugin_reaches_only_its_data_folder_and_the_network_it_was_given) {
    cli_sandbox box;
    const fs::path data_folder = box.home() / "Library/Preferences/QIRO Lumen";
    // A plug-in folder of its own, one inside the writable data folder, one holding it.
    const fs::path folders[] = {box.root() / "reach", data_folder / "reach",
                                box.home() / "Library"};
    for (const auto& folder : folders) {
        fs::create_directories(folder);
        fs::copy(fs::path(QIRO_TEST_DATA_DIR) / "sandbox", folder);
    }
    test_support::write_file(box.home() / "secret.txt", "secret");
    local_listener listener;
    // A confined write to the home folder lands in the sandbox's private /tmp (where this
    // home lies) and is gone with it; escaped.txt shows whether it reached the disk.
    const struct {
        const char* option;
        const char* seen;
    } rows[] = {
        {"--sandbox", "read:denied write:denied escape:ok data:ok connect:ok"},
        {"--sandbox=nonet", "read:denied write:denied escape:ok data:ok connect:denied"},
        {"--json", "read:ok write:ok escape:ok data:ok connect:ok"},
    };
    for (const auto& folder : folders) {
        for (const char* plugin : {"reach.py", "reach.rb", "reach.pl"}) {
            for (const auto& row : rows) {
                SCOPED_TRACE(folder.string() + " " + plugin + " " + row.option);
                const auto result = box.run(
                    {"run", "--json", row.option, (folder / plugin).string(), listener.port});
                ASSERT_EQ(result.status, 0) << result.err;
                const auto report = report_of(result);
                EXPECT_EQ(titles(report), row.seen);
                const std::string option = row.option;
                EXPECT_EQ(report["sandbox"], option == "--json"      ? "off"
                                             : option == "--sandbox" ? "on"
                                                                     : "nonet");
                EXPECT_EQ(fs::exists(box.home() / "escaped.txt"), option == "--json");
                fs::remove(box.home() / "escaped.txt");
            }
        }
    }
    // Nothing left behind: no bridge file, no process of the runs.
    const std::regex bridge_name("[0-9a-f]{40}\\.(py|rb|pl)");
    for (const auto& entry : fs::directory_iterator(data_folder)) {
        EXPECT_FALSE(std::regex_match(entry.path().filename().string(), bridge_name))
            << entry.path();
    }
    EXPECT_EQ(test_support::processes_mentioning(box.root().string()), 0);
}

TEST(cli_sandbox, the_samples_print_inside_exactly_what_they_print_outside) {
    cli_sandbox box;
    for (const char* sample : {"sample_perl.pl", "sample_python.py", "sample_ruby.rb"}) {
        const auto plain = box.run({"run", "--json", sample, "変換"});
        const auto confined = box.run({"run", "--json", "--sandbox=nonet", sample, "変換"});
        ASSERT_EQ(plain.status, 0) << plain.err;
        ASSERT_EQ(confined.status, 0) << confined.err;
        const auto expected = report_of(plain);
        const auto report = report_of(confined);
        EXPECT_FALSE(expected["candidates"].empty()) << sample;
        for (const char* member : {"candidates", "stdout_pane", "stderr_pane", "candidate_list"}) {
            EXPECT_EQ(report[member], expected[member]) << sample << " " << member;
        }
    }
    const auto text = box.run({"run", "--sandbox", "sample_perl.pl", "変換"});
    EXPECT_THAT(text.err, HasSubstr("-- ran in the sandbox (bubblewrap, network on)\n"));
}

TEST(cli_sandbox, without_bubblewrap_nothing_runs_and_a_missing_interpreter_shows_as_outside) {
    cli_sandbox box;
    const fs::path bin = box.root() / "bin";
    fs::create_directories(bin);
    box.environment["PATH"] = bin.string();
    const std::vector<std::string> plugin{"--plugin-folder", box.plugins().string(),
                                          "echo_request.py", "x"};
    for (const char* command : {"run", "callback", "preference"}) {
        std::vector<std::string> arguments{command, "--sandbox"};
        arguments.insert(arguments.end(), plugin.begin(),
                         plugin.end() - (std::string(command) == "preference" ? 1 : 0));
        if (std::string(command) == "callback") {
            arguments.emplace_back("x");
        }
        const auto refused = box.run(arguments);
        EXPECT_EQ(refused.status, 1) << command;
        EXPECT_EQ(refused.out, "") << command;
        EXPECT_THAT(refused.err, HasSubstr("install the package bubblewrap")) << command;
    }

    // A bwrap that the kernel refuses a user namespace: the run is refused, not failed.
    test_support::write_file(bin / "bwrap", "#!/bin/sh\necho 'bwrap: setting up uid map: "
                                            "Permission denied' >&2\nexit 1\n");
    fs::permissions(bin / "bwrap", fs::perms::owner_all);
    const auto broken = box.run(
        {"run", "--sandbox", "--plugin-folder", box.plugins().string(), "echo_request.py", "x"});
    EXPECT_EQ(broken.status, 1);
    EXPECT_THAT(broken.err, HasSubstr("user.max_user_namespaces above 0"));

    // With bwrap but no interpreter on PATH the confined run fails as the plain one does.
    fs::remove(bin / "bwrap");
    fs::create_symlink("/usr/bin/bwrap", bin / "bwrap");
    std::vector<std::string> arguments{"run", "--json"};
    arguments.insert(arguments.end(), plugin.begin(), plugin.end());
    const auto plain = box.run(arguments);
    arguments.push_back("--sandbox");
    const auto confined = box.run(arguments);
    EXPECT_EQ(plain.status, 1);
    EXPECT_EQ(confined.status, 1);
    auto expected = report_of(plain);
    auto report = report_of(confined);
    EXPECT_THAT(expected["stderr_pane"].get<std::string>(), HasSubstr("python: not found"));
    EXPECT_EQ(report["sandbox"], "on");
    report["sandbox"] = "off";
    report["timings_ms"] = expected["timings_ms"];
    EXPECT_EQ(report, expected);
}

} // namespace
} // namespace qiro_plugin::cli::testing

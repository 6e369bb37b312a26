#include "support/cli_process.hpp"
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

// A TCP listener on 127.0.0.1 at a port of the system's choice; it never accepts, but its
// backlog completes every connection the tests make.
struct local_listener {
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t size = sizeof(address);
    bool ready = ::bind(fd, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                 ::listen(fd, SOMAXCONN) == 0 &&
                 ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    ~local_listener() { ::close(fd); }
};

// The run's JSON report with the members that differ between a plain and a confined run set
// as in a plain one.
json plain_report(const process_result& a_result, const json& a_plain = {}) {
    auto report = json::parse(a_result.out, nullptr, false);
    if (!a_plain.is_null() && report.is_object()) {
        report["timings_ms"] = a_plain["timings_ms"];
        report["sandbox"] = "off";
    }
    return report;
}

TEST(cli_sandbox, a_confined_plugin_reaches_only_its_data_folder_and_the_network_it_was_given) {
    cli_sandbox box;
    const fs::path data_folder = box.home() / "Library/Preferences/QIRO Lumen";
    // A plug-in folder of its own, one inside the writable data folder, one holding it.
    const fs::path folders[] = {box.root() / "reach", data_folder / "reach",
                                box.home() / "Library"};
    test_support::write_file(box.home() / "secret.txt", "secret");
    local_listener listener;
    ASSERT_TRUE(listener.ready);
    const std::string port = std::to_string(ntohs(listener.address.sin_port));
    // A confined write to the home folder lands in the sandbox's private /tmp (where this
    // home lies) and is gone with it; escaped.txt shows whether it reached the disk.
    const struct {
        const char* option;
        const char* sandbox;
        const char* seen;
    } rows[] = {
        {"--sandbox", "on", "read:denied write:denied escape:ok data:ok connect:ok "},
        {"--sandbox=nonet", "nonet", "read:denied write:denied escape:ok data:ok connect:denied "},
        {"--json", "off", "read:ok write:ok escape:ok data:ok connect:ok "},
    };
    // The confinement is the same whatever the language, so one plug-in tries it.
    for (const auto& folder : folders) {
        fs::create_directories(folder);
        fs::copy(fs::path(QIRO_TEST_DATA_DIR) / "sandbox", folder);
        for (const auto& row : rows) {
            SCOPED_TRACE(folder.string() + " " + row.option);
            const auto result =
                box.run({"run", "--json", row.option, (folder / "reach.py").string(), port});
            ASSERT_EQ(result.status, 0) << result.err;
            const auto report = parse_json(result);
            std::string seen;
            for (const auto& candidate : report["candidates"]) {
                seen += candidate["title"].get<std::string>() + " ";
            }
            EXPECT_EQ(seen, row.seen);
            EXPECT_EQ(report["sandbox"], row.sandbox);
            EXPECT_EQ(fs::remove(box.home() / "escaped.txt"), row.sandbox == std::string("off"));
        }
    }
    // Nothing left behind: no bridge file, no process of the runs.
    for (const auto& name : test_support::names_in(data_folder)) {
        EXPECT_FALSE(std::regex_match(name, std::regex("[0-9A-F]{40}\\.(py|rb|pl)"))) << name;
    }
    EXPECT_EQ(test_support::processes_mentioning(box.root().string()), 0);
}

TEST(cli_sandbox, the_samples_print_inside_exactly_what_they_print_outside) {
    cli_sandbox box;
    for (const char* sample : {"sample_perl.pl", "sample_python.py", "sample_ruby.rb"}) {
        const auto plain = plain_report(box.run({"run", "--json", sample, "変換"}));
        const auto confined = box.run({"run", "--json", "--sandbox=nonet", sample, "変換"});
        EXPECT_FALSE(plain["candidates"].empty()) << sample;
        EXPECT_EQ(plain_report(confined, plain), plain) << sample;
    }
    const auto text = box.run({"run", "--sandbox", "sample_perl.pl", "変換"});
    EXPECT_THAT(text.err, HasSubstr("-- ran in the sandbox (bubblewrap, network on)\n"));
}

TEST(cli_sandbox, without_a_working_bwrap_nothing_runs_and_a_missing_interpreter_shows_as_outside) {
    cli_sandbox box;
    const fs::path bin = box.root() / "bin";
    fs::create_directories(bin);
    box.environment["PATH"] = bin.string();
    const std::string folder = box.plugins().string();
    const std::vector<std::vector<std::string>> commands{
        {"run", "--sandbox", "--plugin-folder", folder, "echo_request.py", "x"},
        {"callback", "--sandbox", "--plugin-folder", folder, "echo_request.py", "x", "x"},
        {"preference", "--sandbox", "--plugin-folder", folder, "echo_request.py"}};
    for (const auto& command : commands) {
        const auto refused = box.run(command);
        EXPECT_EQ(refused.status, 1) << command[0];
        EXPECT_EQ(refused.out, "") << command[0];
        EXPECT_THAT(refused.err, HasSubstr("install the package bubblewrap")) << command[0];
    }
    // A bwrap that the kernel refuses a user namespace: the run is refused, not failed.
    test_support::write_script(bin / "bwrap",
                               "echo 'bwrap: setting up uid map: Permission denied' >&2\nexit 1\n");
    const auto broken = box.run(commands[0]);
    EXPECT_EQ(broken.status, 1);
    EXPECT_THAT(broken.err, HasSubstr("could not set up a sandbox: bwrap: setting up uid map"));
    EXPECT_THAT(broken.err, HasSubstr("kernel.apparmor_restrict_unprivileged_userns=0"));

    // With bwrap but no interpreter on PATH the confined run fails as the plain one does.
    fs::remove(bin / "bwrap");
    fs::create_symlink("/usr/bin/bwrap", bin / "bwrap");
    const auto plain =
        box.run({"run", "--json", "--plugin-folder", folder, "echo_request.py", "x"});
    const auto confined =
        box.run({"run", "--json", "--sandbox", "--plugin-folder", folder, "echo_request.py", "x"});
    EXPECT_EQ(plain.status, 1);
    EXPECT_EQ(confined.status, 1);
    EXPECT_THAT(plain.out, HasSubstr("python: not found"));
    EXPECT_EQ(plain_report(confined, plain_report(plain)), plain_report(plain));
}

} // namespace
} // namespace qiro_plugin::cli::testing

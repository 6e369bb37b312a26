// Runs inside a private session bus with an unlocked keyring of its own.

#include "cli_process.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>

namespace qiro_plugin::cli::testing {
namespace {

using json = nlohmann::json;

TEST(cli_keyring, proxy_password_from_the_keyring_reaches_the_plugin_only_with_authentication) {
    const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    ASSERT_NE(bus, nullptr) << "run through tests/settings/run_in_keyring.sh";
    cli_sandbox sandbox;
    sandbox.environment["DBUS_SESSION_BUS_ADDRESS"] = bus;
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR")) {
        sandbox.environment["XDG_RUNTIME_DIR"] = runtime;
    }
    const std::string folder = sandbox.plugins().string();

    auto result = sandbox.run({"settings", "set", "enable_proxy=true", "proxy_address=proxy.jp",
                               "proxy_port=8080", "enable_authentication=true",
                               "proxy_username=alice", "--password-stdin"},
                              "pass word\"\n");
    ASSERT_EQ(result.status, 0) << result.err;
    result = sandbox.run({"settings", "show", "--json"});
    EXPECT_EQ(json::parse(result.out)["proxy_password"], "set");
    EXPECT_EQ(result.out.find("pass word"), std::string::npos) << "never printed";

    result = sandbox.run({"run", "--json", "--plugin-folder", folder, "echo_request.py", "a"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(json::parse(result.out)["candidates"][0]["comment"],
              "reading_string=;proxy_name=proxy.jp;proxy_port=8080;proxy_username=alice;"
              "proxy_password=pass word\";path=<absent>");

    result = sandbox.run({"settings", "set", "enable_authentication=false"});
    ASSERT_EQ(result.status, 0) << result.err;
    result = sandbox.run({"run", "--json", "--plugin-folder", folder, "echo_request.py", "a"});
    EXPECT_EQ(json::parse(result.out)["candidates"][0]["comment"],
              "reading_string=;proxy_name=proxy.jp;proxy_port=8080;proxy_username=;"
              "proxy_password=;path=<absent>");
}

} // namespace
} // namespace qiro_plugin::cli::testing

// Runs inside a private session bus with an unlocked keyring of its own.

#include "support/cli_process.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>

namespace qiro_plugin::cli::testing {
namespace {

// Proxy values reach the plug-in while proxy use is on, the password also needs authentication.
TEST(cli_keyring, proxy_values_and_the_keyring_password_reach_the_plugin_only_while_on) {
    const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
    ASSERT_NE(bus, nullptr) << "run through tests/settings/run_in_keyring.sh";
    cli_sandbox sandbox;
    sandbox.environment["DBUS_SESSION_BUS_ADDRESS"] = bus;
    if (const char* runtime = std::getenv("XDG_RUNTIME_DIR")) {
        sandbox.environment["XDG_RUNTIME_DIR"] = runtime;
    }
    const auto comment_seen = [&] {
        const auto result = sandbox.run({"run", "--json", "--plugin-folder",
                                         sandbox.plugins().string(), "echo_request.py", "a"});
        EXPECT_EQ(result.status, 0) << result.err;
        return parse_json(result)["candidates"][0]["comment"].get<std::string>();
    };

    auto result = sandbox.run({"settings", "set", "enable_proxy=true", "proxy_address=proxy.jp",
                               "proxy_port=8080", "enable_authentication=yes",
                               "proxy_username=太郎", "--password-stdin"},
                              "pass word\"\r\n"); // a file from another system: CR LF
    ASSERT_EQ(result.status, 0) << result.err;
    result = sandbox.run({"settings", "show", "--json"});
    EXPECT_EQ(parse_json(result)["proxy_password"], "set");
    EXPECT_EQ(result.out.find("pass word"), std::string::npos) << "never printed";
    EXPECT_EQ(comment_seen(), "reading_string=;proxy_name=proxy.jp;proxy_port=8080;"
                              "proxy_username=太郎;proxy_password=pass word\"");

    ASSERT_EQ(sandbox.run({"settings", "set", "enable_authentication=false"}).status, 0);
    EXPECT_EQ(comment_seen(), "reading_string=;proxy_name=proxy.jp;proxy_port=8080;"
                              "proxy_username=;proxy_password=");
    ASSERT_EQ(sandbox.run({"settings", "set", "enable_proxy=off"}).status, 0);
    EXPECT_EQ(comment_seen(),
              "reading_string=;proxy_name=;proxy_port=0;proxy_username=;proxy_password=");
}

} // namespace
} // namespace qiro_plugin::cli::testing

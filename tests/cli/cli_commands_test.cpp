#include "cli_process.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>

namespace qiro_plugin::cli::testing {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

class cli_commands : public ::testing::Test {
protected:
    process_result run_in_folder(const std::string& a_command,
                                 std::vector<std::string> a_arguments) {
        a_arguments.insert(a_arguments.begin(), {a_command, "--plugin-folder", folder()});
        return sandbox.run(a_arguments);
    }
    std::string folder() const { return sandbox.plugins().string(); }
    cli_sandbox sandbox;
};

TEST_F(cli_commands, callback_and_preference_run_only_when_the_plugin_offers_them) {
    auto result = run_in_folder("callback", {"echo_request.py", "候補", "こうほ"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "syntax ok\r\ncalled back: 候補 for こうほ\n\r\n");
    result = run_in_folder("callback", {"--json", "echo_request.py", "候補", "こうほ"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto report = json::parse(result.out);
    EXPECT_EQ(report["candidate"], "候補");
    EXPECT_EQ(report["run_stdout"], "called back: 候補 for こうほ\n");
    EXPECT_FALSE(report.contains("candidates"));

    result = run_in_folder("preference", {"echo_request.py"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto settings_folder =
        sandbox.home() / "Library" / "Preferences" / "QIRO Lumen" / "echo request";
    EXPECT_NE(result.err.find("settings folder: " + settings_folder.string() + "/"),
              std::string::npos)
        << result.err;
    EXPECT_TRUE(fs::is_directory(settings_folder));

    result = run_in_folder("callback", {"raises_error.py", "a", "b"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("raises_error.py offers no callback"), std::string::npos);
    EXPECT_NE(result.err.find("<callback>true</callback>"), std::string::npos) << result.err;
    result = run_in_folder("preference", {"raises_error.py"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("<preference>true</preference>"), std::string::npos) << result.err;
    result = run_in_folder("callback", {"echo_request.py", std::string(201, 'c'), "b"});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("longer than 200"), std::string::npos);
}

TEST_F(cli_commands, list_shows_the_menu_in_its_order) {
    std::ofstream(sandbox.plugins() / "Zeta.PY") << "";
    std::ofstream(sandbox.plugins() / "alpha.rb") << "";
    auto result = sandbox.run({"list", "--plugin-folder", folder()});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "alpha.rb\necho_request.py\nnoisy_output.rb\nraises_error.py\nZeta.PY\n");

    fs::create_directory(sandbox.root() / "empty");
    result = sandbox.run({"list", "--plugin-folder", (sandbox.root() / "empty").string()});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("No plug-in file (.pl, .py or .rb) was found"), std::string::npos);

    // Without the option: the folder beside the program, which holds the samples.
    result = sandbox.run({"list"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "sample_perl.pl\nsample_python.py\nsample_ruby.rb\n");
}

TEST_F(cli_commands, settings_show_and_set_round_trip_without_revealing_the_password) {
    auto result = sandbox.run({"settings", "show", "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    auto shown = json::parse(result.out);
    EXPECT_EQ(shown["automatically_displayed_candidate"], true);
    EXPECT_EQ(shown["key_plugin_candidate_change"], 265);
    EXPECT_EQ(shown["enable_proxy"], false);
    EXPECT_EQ(shown["proxy_password"], "empty");
    EXPECT_EQ(shown.size(), 13U);

    result = sandbox.run({"settings", "set", "key_1_plugin_name=辞書", "proxy_port=3128",
                          "automatically_displayed_candidate=false"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(fs::exists(sandbox.home() / "Library" / "Preferences" /
                           "org.qiro.Qiro22.PluginManager.plist"));
    result = sandbox.run({"settings", "show"});
    for (const char* line :
         {"key_1_plugin_name = 辞書\n", "proxy_port = 3128\n",
          "automatically_displayed_candidate = false\n", "proxy_password = (empty)\n"}) {
        EXPECT_NE(result.out.find(line), std::string::npos) << result.out;
    }

    for (const auto& bad : {"proxy_port=eighty", "enable_proxy=maybe", "no_such_key=1",
                            "proxy_password=x", "missing-equals"}) {
        result = sandbox.run({"settings", "set", bad});
        EXPECT_EQ(result.status, 2) << bad;
        EXPECT_FALSE(result.err.empty()) << bad;
    }
    result = sandbox.run({"settings", "show", "--json"});
    EXPECT_EQ(json::parse(result.out)["proxy_port"], 3128) << "a refused change writes nothing";

    // No Secret Service in the sandbox: the password cannot be kept, and the command says so.
    result = sandbox.run({"settings", "set", "proxy_username=u", "--password-stdin"}, "pw\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("keyring"), std::string::npos) << result.err;
}

TEST_F(cli_commands, bridge_prints_a_script_the_interpreter_runs_by_hand) {
    for (const auto& [language, interpreter] :
         {std::pair{"perl", "/usr/bin/perl"}, std::pair{"ruby", "/usr/bin/ruby"},
          std::pair{"python", "/usr/bin/python3"}}) {
        auto result = sandbox.run({"bridge", language});
        ASSERT_EQ(result.status, 0) << language;
        const auto file = sandbox.root() / (std::string("bridge.") + language);
        std::ofstream(file, std::ios::binary) << result.out;
        result = sandbox.run_program({interpreter, file.string(), "x", "syntax_check"});
        EXPECT_EQ(result.out, "syntax ok") << language << result.err;
    }
    EXPECT_EQ(sandbox.run({"bridge", "tcl"}).status, 2);
}

TEST_F(cli_commands, help_for_every_command_and_usage_errors) {
    for (const auto& command : {std::vector<std::string>{"--help"},
                                {"run", "--help"},
                                {"callback", "--help"},
                                {"preference", "--help"},
                                {"list", "--help"},
                                {"settings", "--help"},
                                {"settings", "set", "--help"},
                                {"bridge", "--help"}}) {
        const auto result = sandbox.run(command);
        EXPECT_EQ(result.status, 0) << command.front();
        EXPECT_NE(result.out.find("Usage:"), std::string::npos) << command.front();
    }
    for (const auto& command : {std::vector<std::string>{}, {"frobnicate"}, {"settings", "set"}}) {
        EXPECT_EQ(sandbox.run(command).status, 2);
    }
}

} // namespace
} // namespace qiro_plugin::cli::testing

#include "cli_process.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>

namespace qiro_plugin::cli::testing {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;

json parse_json(const process_result& a_result) {
    try {
        return json::parse(a_result.out);
    } catch (const json::parse_error&) {
        ADD_FAILURE() << "not JSON: " << a_result.out << "\nstderr: " << a_result.err;
        return json::object();
    }
}

// What echo_request.py reports seeing, for a request without reading.
const std::string no_proxy = "proxy_name=;proxy_port=0;proxy_username=;proxy_password=";

class cli_run : public ::testing::Test {
protected:
    // qiro-lumen COMMAND --plugin-folder <fixtures> ARGUMENTS...
    process_result run_in_folder(const std::string& a_command,
                                 std::vector<std::string> a_arguments) {
        a_arguments.insert(a_arguments.begin(),
                           {a_command, "--plugin-folder", sandbox.plugins().string()});
        return sandbox.run(a_arguments);
    }
    process_result run_json(const std::string& a_plugin, const std::string& a_form) {
        return run_in_folder("run", {"--json", a_plugin, a_form});
    }

    cli_sandbox sandbox;
};
using cli_commands = cli_run;

TEST_F(cli_run, json_report_of_a_successful_run_holds_exactly_the_documented_members) {
    auto result = sandbox.run({"run", "--json", "--reading", "よみ",
                               (sandbox.plugins() / "echo_request.py").string(), "変換"});
    ASSERT_EQ(result.status, 0) << result.err;
    auto report = parse_json(result);
    const std::string run_stdout = report["run_stdout"];
    EXPECT_EQ(run_stdout.rfind("<?xml", 0), 0U);
    EXPECT_NE(report["candidate_list"].get<std::string>().find("<target>alt&lt;変換&gt;</target>"),
              std::string::npos);
    EXPECT_GT(report["timings_ms"]["total"].get<double>(), 0.0);
    report["candidate_list"] = report["timings_ms"] = "checked above";
    // Every member, in the order printed.
    auto expected = json::parse(R"({"plugin_folder": "", "plugin_file": "echo_request.py",
        "written_form": "変換", "module_type": "Python", "load_error": "", "stdout_pane": "",
        "stderr_pane": "\r\n\r\n", "run_stdout": "", "run_stderr": "", "document_parsed": true,
        "candidates": [{"title": "変換", "comment": "", "alternative": "alt<変換>",
                        "alternative_alias": "alias", "alternative_type": "definite_string",
                        "info": "py"}],
        "return_type": 0, "candidate_list": "checked above", "timings_ms": "checked above",
        "error": ""})");
    expected["plugin_folder"] = sandbox.plugins().string() + "/";
    expected["stdout_pane"] = "syntax ok\r\n" + run_stdout + "\r\n";
    expected["run_stdout"] = run_stdout;
    expected["candidates"][0]["comment"] = "reading_string=よみ;" + no_proxy;
    EXPECT_EQ(report, expected);

    // Without --json: the panes on their streams, then the candidates one under another.
    result = run_in_folder("run", {"echo_request.py", "abc"});
    ASSERT_EQ(result.status, 0);
    EXPECT_EQ(result.out.rfind("syntax ok\r\n<?xml", 0), 0U);
    EXPECT_NE(
        result.out.find("-- 1 candidate\n1. abc\n   comment: reading_string=;" + no_proxy + "\n"),
        std::string::npos)
        << result.out;
    EXPECT_EQ(result.err, "\r\n\r\n");
}

TEST_F(cli_run, written_form_limits_count_utf16_code_units) {
    // U+2000B is one character of two units: 49 of them and two ASCII letters make exactly 100.
    std::string hundred;
    for (int i = 0; i < 49; ++i) {
        hundred += "\xF0\xA0\x80\x8B";
    }
    hundred += "ab";
    auto result = run_json("echo_request.py", hundred);
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(parse_json(result)["candidates"][0]["title"], hundred);

    for (const auto& refused : {hundred + "c", std::string(101, 'x')}) {
        result = run_json("echo_request.py", refused);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "") << "nothing runs and nothing is printed but the alert";
        EXPECT_EQ(result.err,
                  "qiro-lumen: The written form is too long: at most 100 UTF-16 code units.\n");
    }
    result = run_json("echo_request.py", "");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "qiro-lumen: Enter the written form (hyoki) to hand to the plug-in.\n");
    result = run_json("echo_request.py", "\xFF\xFE");
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("not valid UTF-8"), std::string::npos);
}

TEST_F(cli_run, proxy_settings_reach_the_plugin_only_while_proxy_use_is_on) {
    auto result =
        sandbox.run({"settings", "set", "enable_proxy=true", "proxy_address=proxy.example.jp",
                     "proxy_port=8080", "enable_authentication=yes", "proxy_username=太郎"});
    ASSERT_EQ(result.status, 0) << result.err;
    result = run_json("echo_request.py", "a");
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(parse_json(result)["candidates"][0]["comment"],
              "reading_string=;proxy_name=proxy.example.jp;proxy_port=8080;proxy_username=太郎;"
              "proxy_password=");

    ASSERT_EQ(sandbox.run({"settings", "set", "enable_proxy=off"}).status, 0);
    result = run_json("echo_request.py", "a");
    EXPECT_EQ(parse_json(result)["candidates"][0]["comment"], "reading_string=;" + no_proxy);
}

TEST_F(cli_run, plugins_that_cannot_run_or_whose_output_does_not_parse_exit_with_one) {
    // No language takes the file.
    auto result = run_json("notes.txt", "a");
    EXPECT_EQ(result.status, 1);
    auto report = parse_json(result);
    EXPECT_TRUE(report["module_type"].is_null());
    EXPECT_EQ(report["stdout_pane"], "");

    // The plug-in prints beside its result.
    result = run_json("noisy_output.rb", "a");
    EXPECT_EQ(result.status, 1);
    report = parse_json(result);
    EXPECT_EQ(report["module_type"], "Ruby");
    EXPECT_EQ(report["document_parsed"], false);
    EXPECT_EQ(report["return_type"], 2);
    EXPECT_EQ(report["run_stdout"].get<std::string>().rfind("debug: got a\n", 0), 0U);

    // The plug-in raises: the interpreter's report is on the standard-error pane.
    result = run_json("raises_error.py", "a");
    EXPECT_EQ(result.status, 1);
    report = parse_json(result);
    EXPECT_NE(report["stderr_pane"].get<std::string>().find("ValueError: fixture failure for a"),
              std::string::npos);

    // A failed syntax check, from an interpreter that warns before its answer ("syntax ok" must
    // open the output): its output is shown and nothing runs.
    const auto fake_bin = sandbox.root() / "fake-bin";
    fs::create_directory(fake_bin);
    std::ofstream(fake_bin / "ruby") << "#!/bin/sh\necho 'ruby: warning: odd set-up'\n"
                                        "printf 'syntax ok'\necho 'to stderr' >&2\n";
    fs::permissions(fake_bin / "ruby", fs::perms::owner_all);
    sandbox.environment["PATH"] = fake_bin.string() + ":/usr/bin:/bin";
    result = run_json("noisy_output.rb", "a");
    EXPECT_EQ(result.status, 1);
    report = parse_json(result);
    EXPECT_TRUE(report["module_type"].is_null());
    EXPECT_EQ(report["stdout_pane"], "ruby: warning: odd set-up\nsyntax ok\r\n");
    EXPECT_EQ(report["stderr_pane"], "to stderr\n\r\n");
    EXPECT_EQ(
        report["load_error"],
        "noisy_output.rb : [SCRIPT] スクリプトファイルのプラグインの文法チェックに失敗しました");
    EXPECT_EQ(report["run_stdout"], "");
}

TEST_F(cli_run, bad_usage_and_run_errors_have_their_own_statuses) {
    auto result = run_json("missing.py", "a");
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("no plug-in file \"missing.py\""), std::string::npos) << result.err;
    EXPECT_EQ(result.out, "");
    result = sandbox.run({"run", "echo_request.py"});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("WRITTEN_FORM"), std::string::npos) << result.err;

    // The data folder's place is taken by a file: writing the bridge fails with an exception.
    const auto data_folder = sandbox.home() / "Library" / "Preferences" / "QIRO Lumen";
    fs::create_directories(data_folder.parent_path());
    std::ofstream(data_folder) << "in the way";
    result = run_json("echo_request.py", "a");
    EXPECT_EQ(result.status, 3);
    EXPECT_NE(parse_json(result)["error"], "");
    EXPECT_NE(result.err.find("The plug-in run ended with an error."), std::string::npos);
    fs::remove(data_folder);

    // Output in a legacy encoding ends the run; the author is told what it means.
    std::ofstream(sandbox.plugins() / "prints_shift_jis.py")
        << "import sys\n"
           "def qiro_plugin_run_process(request):\n"
           "    sys.stdout.buffer.write(b'\\x82\\xa0\\n')\n"
           "    sys.stdout.flush()\n"
           "    return {'candidate': [{'hyoki': 'x'}]}\n";
    result = run_in_folder("run", {"prints_shift_jis.py", "a"});
    EXPECT_EQ(result.status, 3);
    EXPECT_NE(result.err.find("::MultiByteUTF8ToWideChar() : failed"), std::string::npos);
    EXPECT_NE(result.err.find("not UTF-8"), std::string::npos) << result.err;
}

TEST_F(cli_commands, callback_and_preference_run_only_when_the_plugin_offers_them) {
    auto result = run_in_folder("callback", {"echo_request.py", "候補", "こうほ"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "syntax ok\r\ncalled back: 候補 for こうほ\n\r\n");

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
    auto result = run_in_folder("list", {});
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
    const auto shown = json::parse(result.out);
    EXPECT_EQ(shown["automatically_displayed_candidate"], true);
    EXPECT_EQ(shown["proxy_password"], "empty");
    EXPECT_EQ(shown.size(), 13U);

    result = sandbox.run({"settings", "set", "key_1_plugin_name=辞書", "proxy_port=3128",
                          "automatically_displayed_candidate=false"});
    ASSERT_EQ(result.status, 0) << result.err;
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
    for (const std::string command :
         {"", "run", "callback", "preference", "list", "settings", "bridge"}) {
        const auto result =
            sandbox.run(command.empty() ? std::vector<std::string>{"--help"}
                                        : std::vector<std::string>{command, "--help"});
        EXPECT_EQ(result.status, 0) << command.front();
        EXPECT_NE(result.out.find("Usage:"), std::string::npos) << command.front();
    }
    for (const auto& command : {std::vector<std::string>{}, {"frobnicate"}, {"settings", "set"}}) {
        EXPECT_EQ(sandbox.run(command).status, 2);
    }
}

} // namespace
} // namespace qiro_plugin::cli::testing

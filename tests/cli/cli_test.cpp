#include "support/cli_process.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

namespace qiro_plugin::cli::testing {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::ordered_json;
using ::testing::HasSubstr;
using ::testing::StartsWith;

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
    EXPECT_THAT(run_stdout, StartsWith("<?xml"));
    EXPECT_THAT(report["candidate_list"].get<std::string>(),
                HasSubstr("<target>alt&lt;変換&gt;</target>"));
    EXPECT_GT(report["timings_ms"]["total"].get<double>(), 0.0);
    for (auto& timing : report["timings_ms"]) {
        EXPECT_TRUE(timing.is_number_float());
        timing = 0;
    }
    report["candidate_list"] = "checked above";
    // Every member, in the order printed.
    auto expected = json::parse(R"({"plugin_folder": "", "plugin_file": "echo_request.py",
        "written_form": "変換", "module_type": "Python", "load_error": "", "stdout_pane": "",
        "stderr_pane": "\r\n\r\n", "run_stdout": "", "run_stderr": "", "document_parsed": true,
        "candidates": [{"title": "変換", "comment": "", "alternative": "alt<変換>",
                        "alternative_alias": "alias", "alternative_type": "definite_string",
                        "info": "py"}],
        "return_type": 0, "candidate_list": "checked above",
        "timings_ms": {"syntax_check": 0, "run": 0, "total": 0}, "error": "", "diagnosis": [],
        "sandbox": "off"})");
    expected["plugin_folder"] = sandbox.plugins().string() + "/";
    expected["stdout_pane"] = "syntax ok\r\n" + run_stdout + "\r\n";
    expected["run_stdout"] = run_stdout;
    expected["candidates"][0]["comment"] = "reading_string=よみ;" + no_proxy;
    EXPECT_EQ(report, expected);

    // Without --json: the panes on their streams, then the candidates one under another.
    result = run_in_folder("run", {"echo_request.py", "abc"});
    ASSERT_EQ(result.status, 0);
    EXPECT_THAT(result.out, StartsWith("syntax ok\r\n<?xml"));
    EXPECT_THAT(result.out, HasSubstr("-- 1 candidate\n1. abc\n   comment: reading_string=;" +
                                      no_proxy + "\n"));
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

    const std::string too_long = "The written form is too long: at most 100 UTF-16 code units.";
    const std::string empty = "Enter the written form (hyoki) to hand to the plug-in.";
    for (const auto& [refused, alert] : std::vector<std::pair<std::string, std::string>>{
             {hundred + "c", too_long},
             {"", empty},
             {"\xFF\xFE", "the written form is not valid UTF-8 text"}}) {
        result = run_json("echo_request.py", refused);
        EXPECT_EQ(result.status, 2) << alert;
        EXPECT_EQ(result.out, "") << "nothing runs and nothing is printed but the alert";
        EXPECT_EQ(result.err, "qiro-lumen: " + alert + "\n");
    }

    // The reading is counted the same way, with its own limit of 200 units.
    const std::string reading = hundred + hundred;
    result = run_in_folder("run", {"--json", "--reading", reading, "echo_request.py", "a"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(parse_json(result)["candidates"][0]["comment"].get<std::string>(),
                StartsWith("reading_string=" + reading + ";"));
    result = run_in_folder("run", {"--reading", reading + "c", "echo_request.py", "a"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "qiro-lumen: the reading is longer than 200 UTF-16 code units\n");
}

TEST_F(cli_run, plugins_that_cannot_run_or_whose_output_does_not_parse_exit_with_one) {
    const auto report_of = [this](const std::string& a_plugin) {
        const auto result = run_json(a_plugin, "a");
        EXPECT_EQ(result.status, 1) << a_plugin;
        return parse_json(result);
    };
    // No language takes the file.
    auto report = report_of("notes.txt");
    EXPECT_TRUE(report["module_type"].is_null());
    EXPECT_EQ(report["stdout_pane"], "");

    // The plug-in prints beside its result.
    report = report_of("noisy_output.rb");
    EXPECT_EQ(report["module_type"], "Ruby");
    EXPECT_EQ(report["document_parsed"], false);
    EXPECT_EQ(report["return_type"], 2);
    EXPECT_THAT(report["run_stdout"].get<std::string>(), StartsWith("debug: got a\n"));
    // The stray line is named, with exactly the documented members.
    EXPECT_EQ(report["diagnosis"], json::parse(R"json([{"code": "stray_output", "severity": "error",
        "message": "Line 1 of standard output came from the plug-in: \"debug: got a\"",
        "hint": "What the plug-in prints lands in the result document and breaks it. Write debug output to standard error: $stderr.puts(...) or warn(...)",
        "file": null, "line": null, "column": null, "offset": 0
}])json"));

    // The plug-in raises: the interpreter's report is on the standard-error pane, the place
    // in the plug-in in the compilers' form after it.
    EXPECT_THAT(report_of("raises_error.py")["stderr_pane"].get<std::string>(),
                HasSubstr("ValueError: fixture failure for a"));
    const auto raised = run_in_folder("run", {"raises_error.py", "a"});
    const std::string raised_file = (sandbox.plugins() / "raises_error.py").string();
    EXPECT_THAT(raised.err, HasSubstr(std::string("\n").append(raised_file) +
                                      ":5: error: The entry stopped with an error: ValueError: "
                                      "fixture failure for a\n  The traceback, the plug-in's own "
                                      "frames first:\n    raises_error.py:5 in "
                                      "qiro_plugin_run_process\n    [bridge]\n"));

    // A failed syntax check, from an interpreter that warns before its answer ("syntax ok" must
    // open the output): its output is shown and nothing runs.
    const auto fake_bin = sandbox.root() / "fake-bin";
    test_support::write_script(fake_bin / "ruby", "echo 'ruby: warning: odd set-up'\n"
                                                  "printf 'syntax ok'\necho 'to stderr' >&2\n");
    sandbox.environment["PATH"] = fake_bin.string() + ":/usr/bin:/bin";
    report = report_of("noisy_output.rb");
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
    EXPECT_THAT(result.err, HasSubstr("no plug-in file \"missing.py\""));
    EXPECT_EQ(result.out, "");

    // The data folder's place is taken by a file: looking it up ends the run with an exception.
    const auto data_folder = sandbox.home() / "Library" / "Preferences" / "QIRO Lumen";
    test_support::write_file(data_folder, "in the way");
    result = run_json("echo_request.py", "a");
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(parse_json(result)["error"], "utility::get_qiro_user_folder() call error2");
    EXPECT_EQ(result.err, "qiro-lumen: The plug-in run ended with an error.\n") << "one alert";
    fs::remove(data_folder);

    // A result longer than the document reader takes, or a companion document over the same
    // limit, ends the run: the alert, and nothing of the run in the panes.
    test_support::write_file(sandbox.plugins() / "floods.py",
                             "import sys\ndef qiro_plugin_run_process(request):\n"
                             "    sys.stdout.write('x' * 10485761)\n    return {}\n");
    test_support::write_file(sandbox.plugins() / "heavy.py",
                             "def qiro_plugin_run_process(request):\n    return {}\n");
    test_support::write_file(sandbox.plugins() / "heavy.xml",
                             "<a>" + std::string(10485761, 'x') + "</a>");
    for (const auto& [plugin, stdout_pane] :
         {std::pair{"floods.py", "syntax ok\r\n"}, std::pair{"heavy.py", ""}}) {
        result = run_json(plugin, "a");
        EXPECT_EQ(result.status, 3) << plugin;
        const auto report = parse_json(result);
        EXPECT_EQ(report["error"], "xml_access_utility_impl::xml_access_utility_impl() : failed");
        EXPECT_EQ(report["stdout_pane"], stdout_pane) << plugin;
        EXPECT_EQ(result.err, "qiro-lumen: The plug-in run ended with an error.\n") << plugin;
    }

    // Output in a legacy encoding ends the run; the author is told what it means.
    result = run_in_folder("run", {"prints_shift_jis.py", "a"});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.err, HasSubstr("with an error: ::MultiByteUTF8ToWideChar() : failed\n"));
    EXPECT_THAT(result.err, HasSubstr("not UTF-8"));
}

TEST_F(cli_commands, callback_and_preference_run_only_when_the_plugin_offers_them) {
    // A candidate of exactly 200 units is taken, one more is refused.
    const std::string candidate = std::string(199, 'c') + "候";
    auto result = run_in_folder("callback", {"echo_request.py", candidate, "こうほ"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "syntax ok\r\ncalled back: " + candidate + " for こうほ\n\r\n");
    result = run_in_folder("callback", {"echo_request.py", candidate + "c", "b"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("longer than 200"));

    result = run_in_folder("preference", {"echo_request.py"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto settings_folder =
        sandbox.home() / "Library" / "Preferences" / "QIRO Lumen" / "echo request";
    EXPECT_THAT(result.err, HasSubstr("settings folder: " + settings_folder.string() + "/"));
    EXPECT_TRUE(fs::is_directory(settings_folder));

    // raises_error.py has no preference document.
    result = run_in_folder("callback", {"raises_error.py", "a", "b"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("raises_error.py offers no callback"));
    EXPECT_THAT(result.err, HasSubstr("<callback>true</callback>"));
    result = run_in_folder("preference", {"raises_error.py"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("<preference>true</preference>"));
}

// The menu's order itself is checked where the folder is read.
TEST_F(cli_commands, list_shows_the_menu_one_file_a_line) {
    auto result = run_in_folder("list", {});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out,
              "echo_request.py\nhangs.py\nnoisy_output.rb\nprints_shift_jis.py\nraises_error.py\n");

    result = sandbox.run({"list", "--plugin-folder", sandbox.home().string()});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("No plug-in file (.pl, .py or .rb) was found"));

    // Without the option: the folder beside the program, which holds the samples.
    result = sandbox.run({"list"});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "sample_perl.pl\nsample_python.py\nsample_ruby.rb\n");
}

TEST_F(cli_commands, settings_show_and_set_round_trip_without_revealing_the_password) {
    auto result = sandbox.run({"settings", "show", "--json"});
    ASSERT_EQ(result.status, 0) << result.err;
    const auto shown = parse_json(result);
    EXPECT_EQ(shown["automatically_displayed_candidate"], true);
    EXPECT_EQ(shown["proxy_password"], "empty");

    result = sandbox.run({"settings", "set", "key_1_plugin_name=辞書", "proxy_port=3128",
                          "automatically_displayed_candidate=false"});
    ASSERT_EQ(result.status, 0) << result.err;
    result = sandbox.run({"settings", "show"});
    for (const char* line :
         {"key_1_plugin_name = 辞書\n", "proxy_port = 3128\n",
          "automatically_displayed_candidate = false\n", "proxy_password = (empty)\n"}) {
        EXPECT_THAT(result.out, HasSubstr(line));
    }

    for (const auto& bad : {"proxy_port=eighty", "enable_proxy=maybe", "no_such_key=1",
                            "proxy_password=x", "missing-equals"}) {
        result = sandbox.run({"settings", "set", "proxy_port=80", bad});
        EXPECT_EQ(result.status, 2) << bad;
        EXPECT_FALSE(result.err.empty()) << bad;
    }
    result = sandbox.run({"settings", "show", "--json"});
    EXPECT_EQ(parse_json(result)["proxy_port"], 3128) << "a refused set writes nothing";

    // A key code the plug-in manager cannot assign is replaced by the default, with a warning.
    result = sandbox.run({"settings", "set", "key_plugin_candidate_change=7"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.err, HasSubstr("warning: key_plugin_candidate_change 7 is not a key"));
    EXPECT_EQ(sandbox.run({"settings", "set", "key_plugin_candidate_change=265"}).err, "");

    // A damaged settings file is named, and neither it nor anything else is changed.
    const auto file =
        sandbox.home() / "Library" / "Preferences" / "org.qiro.Qiro22.PluginManager.plist";
    const std::string kept = test_support::read_file(file);
    test_support::write_file(file, "<plist><dict><key>damaged");
    result = sandbox.run({"settings", "set", "proxy_port=81"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("the settings file " + file.string() + " is damaged"));
    EXPECT_EQ(test_support::read_file(file), "<plist><dict><key>damaged");
    test_support::write_file(file, kept);

    // No Secret Service in the sandbox: the password cannot be kept, and the command says so.
    result = sandbox.run({"settings", "set", "proxy_username=u", "--password-stdin"}, "pw\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("keyring"));
}

TEST_F(cli_commands, bridge_prints_a_script_the_interpreter_runs_by_hand) {
    for (const auto& [language, interpreter] :
         {std::pair{"perl", "/usr/bin/perl"}, std::pair{"ruby", "/usr/bin/ruby"},
          std::pair{"python", "/usr/bin/python3"}}) {
        auto result = sandbox.run({"bridge", language});
        ASSERT_EQ(result.status, 0) << language;
        const auto file = sandbox.root() / (std::string("bridge.") + language);
        test_support::write_file(file, result.out);
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
        EXPECT_EQ(result.status, 0) << command;
        EXPECT_THAT(result.out, HasSubstr("Usage:")) << command;
    }
    for (const auto& command : {std::vector<std::string>{},
                                {"frobnicate"},
                                {"settings", "set"},
                                {"run", "echo_request.py"}}) {
        EXPECT_EQ(sandbox.run(command).status, 2);
    }
}

} // namespace
} // namespace qiro_plugin::cli::testing

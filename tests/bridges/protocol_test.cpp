#include "bridge_runner.hpp"

namespace qiro_plugin::test {
namespace {

struct run_case {
    std::vector<std::string> values;
    std::string out;
    std::string err_part; // what standard error must hold; empty: nothing for a reply
};

class bridge_protocol : public bridge_test {
protected:
    // Values after the method: empty proxy settings, the port as plain digits.
    static std::vector<std::string> with_values(std::vector<std::string> a_head,
                                                std::size_t a_count) {
        const std::vector<std::string> tail{encoded("w"), encoded("r"),  "",     "0", "",
                                            "",           encoded("/p"), "extra"};
        a_head.insert(a_head.end(), tail.begin(), tail.begin() + static_cast<long>(a_count));
        return a_head;
    }
};

TEST_P(bridge_protocol, fixed_replies_end_with_status_zero) {
    const std::string echo = plugin("plugin");
    const std::string missing = plugin("does_not_exist");
    const std::string no_entries = plugin("no_entries");
    const std::string process_error = "[loaded]error : run_process() argument error.";
    const std::string preference_error = "[loaded]error : run_preference() argument error.";
    const std::string callback_error = "[loaded]error : run_callback() argument error.";
    std::vector<run_case> cases{
        {{}, "error : argument error.", ""},
        // Method names are compared exactly, after decoding; nothing is loaded for a wrong one.
        {with_values({echo, "Run_Process"}, 6), "error : plugin method load error.", ""},
        {with_values({echo, "run_processes"}, 6), "error : plugin method load error.", ""},
        {with_values({echo, "syntax"}, 6), "error : plugin method load error.", ""},
        {{echo, "syntax%5Fcheck"}, "syntax ok", ""},
        // The syntax check never loads the plug-in, whatever follows.
        {{missing, "syntax_check"}, "syntax ok", ""},
        {with_values({echo, "syntax_check"}, 8), "syntax ok", ""},
        // The plug-in is loaded before the values are counted.
        {with_values({echo, "run_process"}, 0), process_error, ""},
        {with_values({echo, "run_process"}, 5), process_error, ""},
        {with_values({echo, "run_process"}, 8), process_error, ""},
        {with_values({echo, "run_preference"}, 0), preference_error, ""},
        {with_values({echo, "run_preference"}, 2), preference_error, ""},
        {with_values({echo, "run_callback"}, 5), callback_error, ""},
        {with_values({echo, "run_callback"}, 8), callback_error, ""},
    };
    if (is("perl")) {
        // The require's own message goes to standard error first.
        cases.push_back({with_values({missing, "run_process"}, 6),
                         "error : plugin module load error.", "does_not_exist.PL"});
        for (const std::string method : {"run_process", "run_preference", "run_callback"}) {
            cases.push_back({with_values({no_entries, method}, method == "run_preference" ? 1 : 6),
                             "error : plugin method [" + method + "] not found.", ""});
        }
    } else if (is("python")) {
        cases.push_back({with_values({no_entries, "run_process"}, 6),
                         "error : plugin module load error2.", ""});
    } else {
        // A library the bridge itself has already required is not loaded again.
        const auto where = run_line(
            "ruby -e 'require \"cgi\"; print $LOADED_FEATURES.grep(%r{/cgi[.]rb\\z}).first'");
        ASSERT_TRUE(where.out.ends_with("/cgi.rb")) << where.out << where.err;
        cases.push_back({with_values({encoded(where.out), "run_process"}, 6),
                         "error : plugin module load error.", ""});
    }
    for (const auto& each : cases) {
        const auto output = run(each.values);
        const std::string label = each.values.size() > 1 ? each.values[1] + " " + each.out : "";
        EXPECT_EQ(output.out, each.out) << label;
        EXPECT_EQ(output.exit_status, 0) << label;
        if (each.err_part.empty()) {
            EXPECT_EQ(output.err, "") << label;
        } else {
            EXPECT_NE(output.err.find(each.err_part), std::string::npos) << label << output.err;
        }
    }
}

TEST_P(bridge_protocol, other_failures_are_the_interpreter_s_report) {
    const std::string echo = plugin("plugin");
    const std::string no_entries = plugin("no_entries");
    // The plug-in cannot read this as JSON and fails while building its result.
    std::vector<run_case> cases{
        {{echo, "run_process", encoded("{oops"), "", "", "0", "", ""}, k_marks, ""}};
    if (is("python")) {
        // Its count includes the script name, so a missing method fails in the interpreter.
        cases.push_back({{echo}, "", "IndexError"});
        cases.push_back({{echo, "run_process", encoded("{\"other\":[]}"), "", "", "0", "", ""},
                         k_marks,
                         "KeyError"});
    }
    if (!is("perl")) {
        cases.push_back(
            {with_values({plugin("does_not_exist"), "run_process"}, 6), "", "does_not_exist"});
        for (const std::string method : {"run_process", "run_preference", "run_callback"}) {
            if (is("ruby") || method != "run_process") {
                cases.push_back(
                    {with_values({no_entries, method}, method == "run_preference" ? 1 : 6), "",
                     is("python") ? "AttributeError" : "NameError"});
            }
        }
    }
    for (const auto& each : cases) {
        const auto output = run(each.values);
        const std::string label = each.values.size() > 1 ? each.values[1] : "";
        EXPECT_EQ(output.out, each.out) << label;
        EXPECT_FALSE(output.err.empty()) << label;
        EXPECT_NE(output.err.find(each.err_part), std::string::npos) << label << output.err;
        EXPECT_NE(output.exit_status, 0) << label;
    }
}

// Values with blanks, plus signs, quotes and an invalid byte; the port goes as plain digits.
TEST_P(bridge_protocol, every_request_value_arrives_decoded) {
    std::vector<std::string> values{plugin("plugin"),
                                    "run_process",
                                    encoded("a b+c"),
                                    encoded("\xE3\x82\x88\xE3\x81\xBF\"'"), // よみ"'
                                    encoded("proxy.example"),
                                    "8080",
                                    encoded("\xFFok"),
                                    encoded("p&ss\"word")};
    const auto document = [](const std::string& a_path, const std::string& a_port) {
        return k_marks + k_header + item("composition_string=a b+c") + a_path +
               item("proxy_name=proxy.example") + item("proxy_password=p&amp;ss&quot;word") +
               item("proxy_port=" + a_port, "\t\t<info>integer</info>\n") +
               // An invalid byte arrives as U+FFFD.
               item("proxy_username=\xEF\xBF\xBDok") +
               item("reading_string=\xE3\x82\x88\xE3\x81\xBF&quot;&apos;") + k_footer;
    };
    const auto expect_reply = [&](const std::string& a_out) {
        const auto output = run(values);
        EXPECT_EQ(output.out, a_out) << values[1];
        EXPECT_EQ(output.err, "") << values[1];
    };
    expect_reply(document("", "8080"));
    values.push_back(encoded("/tmp/settings folder/+plus"));
    expect_reply(document(item("path=/tmp/settings folder/+plus"), "8080"));
    // Present but empty still counts as present.
    values.back() = "";
    expect_reply(document(item("path="), "8080"));

    // %38%30 is what url_encode makes of "80"; only Perl decodes the port.
    values[5] = "%38%30";
    if (is("python")) {
        const auto encoded_port = run(values);
        EXPECT_EQ(encoded_port.out, "[loaded]");
        EXPECT_NE(encoded_port.err.find("ValueError"), std::string::npos) << encoded_port.err;
    } else {
        expect_reply(document(item("path="), is("perl") ? "80" : "0"));
    }

    values[1] = "run_callback";
    values[2] = encoded("\xE5\x80\x99\xE8\xA3\x9C 1"); // 候補 1
    values[3] = encoded("a+b");
    values[5] = "8080";
    // Ruby hands the plug-in the bytes as they came; the others decode them as UTF-8.
    const std::string callback = "[loaded]run_callback:candidate_string=\xE5\x80\x99\xE8\xA3\x9C 1;"
                                 "composition_string=a+b;path=;proxy_name=proxy.example;"
                                 "proxy_password=p&ss\"word;proxy_port=8080;proxy_username=" +
                                 std::string(is("ruby") ? "\xFFok" : "\xEF\xBF\xBDok");
    expect_reply(callback);
    values.pop_back();
    expect_reply(callback.substr(0, callback.find("path=")) +
                 callback.substr(callback.find("proxy_name")));
    values = {values[0], "run_preference", encoded("/home/u/\xE8\xA8\xAD\xE5\xAE\x9A x")};
    expect_reply("[loaded]run_preference:path=/home/u/\xE8\xA8\xAD\xE5\xAE\x9A x");

    // Loading leaves nothing beside the plug-in (no compiled cache).
    const auto entries = std::distance(std::filesystem::directory_iterator(plugin_folder()),
                                       std::filesystem::directory_iterator());
    EXPECT_EQ(entries, 1);
}

INSTANTIATE_TEST_SUITE_P(bridges, bridge_protocol, ::testing::ValuesIn(all_languages()),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

} // namespace
} // namespace qiro_plugin::test

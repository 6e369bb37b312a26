#include "bridge_runner.hpp"

namespace qiro_plugin::test {
namespace {

struct run_case {
    std::vector<std::string> values;
    std::string out;
    std::string err_part; // what standard error must hold; empty: nothing for a reply
    bool fails = false;   // a failure the interpreter reports, not one of the bridge's replies
};

class bridge_protocol : public bridge_test {
protected:
    // Values after the method: empty proxy settings, the port as plain digits.
    static std::vector<std::string> with_values(std::vector<std::string> a_head,
                                                std::size_t a_count) {
        const std::vector<std::string> tail{url_encode("w"),  url_encode("r"), "", "0", "", "",
                                            url_encode("/p"), "extra"};
        a_head.insert(a_head.end(), tail.begin(), tail.begin() + static_cast<long>(a_count));
        return a_head;
    }
};

TEST_P(bridge_protocol, fixed_replies_end_with_status_zero_other_failures_do_not) {
    const std::string echo = plugin("plugin");
    const std::string missing = plugin("does_not_exist");
    const std::string no_entries = plugin("no_entries");
    const auto argument_error = [](const std::string& a_method) {
        return "[loaded]error : " + a_method + "() argument error.";
    };
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
        {with_values({echo, "run_process"}, 5), argument_error("run_process"), ""},
        {with_values({echo, "run_process"}, 8), argument_error("run_process"), ""},
        {with_values({echo, "run_preference"}, 0), argument_error("run_preference"), ""},
        {with_values({echo, "run_preference"}, 2), argument_error("run_preference"), ""},
        {with_values({echo, "run_callback"}, 5), argument_error("run_callback"), ""},
        {with_values({echo, "run_callback"}, 8), argument_error("run_callback"), ""},
        // The plug-in cannot read this as JSON and fails while building its result.
        {processing("{oops"), k_marks, "plugin.", true},
        // Perl's require reports to standard error first, then the bridge replies.
        {with_values({missing, "run_process"}, 6),
         is("perl") ? "error : plugin module load error." : "", "does_not_exist", !is("perl")},
    };
    for (const std::string method : {"run_process", "run_preference", "run_callback"}) {
        const auto values = with_values({no_entries, method}, method == "run_preference" ? 1 : 6);
        if (is("perl")) {
            cases.push_back({values, "error : plugin method [" + method + "] not found.", ""});
        } else if (is("python") && method == "run_process") {
            cases.push_back({values, "error : plugin module load error2.", ""});
        } else {
            cases.push_back({values, "", is("python") ? "AttributeError" : "NameError", true});
        }
    }
    if (is("python")) {
        // Its count includes the script name, so a missing method fails in the interpreter.
        cases.push_back({{echo}, "", "IndexError", true});
        cases.push_back({processing("{\"other\":[]}"), k_marks, "KeyError", true});
    } else if (is("ruby")) {
        // A library the bridge itself has already required is not loaded again.
        const auto where = run_line(
            "ruby -e 'require \"cgi\"; print $LOADED_FEATURES.grep(%r{/cgi[.]rb\\z}).first'");
        ASSERT_TRUE(where.out.ends_with("/cgi.rb")) << where.out << where.err;
        cases.push_back({with_values({url_encode(where.out), "run_process"}, 6),
                         "error : plugin module load error.", ""});
    }
    for (const auto& each : cases) {
        const auto output = run(each.values);
        const std::string label = each.values.size() > 1 ? each.values[1] + " " + each.out : "";
        EXPECT_EQ(output.out, each.out) << label;
        EXPECT_EQ(output.exit_status != 0, each.fails) << label << " " << output.exit_status;
        EXPECT_EQ(output.err.empty(), each.err_part.empty()) << label << output.err;
        EXPECT_NE(output.err.find(each.err_part), std::string::npos) << label << output.err;
    }
}

// Values with blanks, plus signs, quotes and an invalid byte; the port goes as plain digits.
TEST_P(bridge_protocol, every_request_value_arrives_decoded) {
    std::vector<std::string> values{plugin("plugin"),
                                    "run_process",
                                    url_encode("a b+c"),
                                    url_encode("\xE3\x82\x88\xE3\x81\xBF\"'"), // よみ"'
                                    url_encode("proxy.example"),
                                    "8080",
                                    url_encode("\xFFok"),
                                    url_encode("p&ss\"word")};
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
    values.push_back(url_encode("/tmp/settings folder/+plus"));
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

    // The callback's request is built as the processing one is, under other names.
    values[1] = "run_callback";
    values[2] = url_encode("\xE5\x80\x99\xE8\xA3\x9C 1"); // 候補 1
    values[3] = url_encode("a+b");
    values[5] = "8080";
    // Ruby hands the plug-in the bytes as they came; the others decode them as UTF-8.
    expect_reply("[loaded]run_callback:candidate_string=\xE5\x80\x99\xE8\xA3\x9C 1;"
                 "composition_string=a+b;path=;proxy_name=proxy.example;"
                 "proxy_password=p&ss\"word;proxy_port=8080;proxy_username=" +
                 std::string(is("ruby") ? "\xFFok" : "\xEF\xBF\xBDok"));
    values = {values[0], "run_preference", url_encode("/home/u/\xE8\xA8\xAD\xE5\xAE\x9A x")};
    expect_reply("[loaded]run_preference:path=/home/u/\xE8\xA8\xAD\xE5\xAE\x9A x");

    // Loading leaves nothing beside the plug-in (no compiled cache).
    EXPECT_EQ(test_support::names_in(m_plugins).size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(bridges, bridge_protocol, ::testing::ValuesIn(k_languages),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

} // namespace
} // namespace qiro_plugin::test

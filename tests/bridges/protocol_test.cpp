#include "bridge_runner.hpp"

#include "bridges/protocol.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qiro_plugin::test {
namespace {

using ::testing::HasSubstr;

class bridge_protocol : public ::testing::TestWithParam<language> {
protected:
    bridge_protocol() : m_bridge(GetParam()) {}

    bool is(const char* a_name) const { return std::string(GetParam().name) == a_name; }
    std::string plugin(const std::string& a_stem) const {
        return encoded(fixture(GetParam(), a_stem).string());
    }
    // Values after the method: empty proxy settings, the port as plain digits.
    static std::vector<std::string> with_values(std::vector<std::string> a_head,
                                                std::size_t a_count) {
        static const std::vector<std::string> tail{
            encoded("word"), encoded("reading"), "", "0", "", "", encoded("/tmp/settings"),
            "extra"};
        for (std::size_t i = 0; i < a_count; ++i) {
            a_head.push_back(tail.at(i));
        }
        return a_head;
    }

    bridge_folder m_bridge;
};

TEST_P(bridge_protocol, answers_its_own_errors_with_fixed_texts_and_status_zero) {
    const auto none = m_bridge.run({});
    EXPECT_EQ(none.out, "error : argument error.");
    EXPECT_EQ(none.exit_status, 0);

    for (const char* method : {"Run_Process", "RUN_PROCESS", "syntax", "run_processes"}) {
        const auto unknown = m_bridge.run(with_values({plugin("request_echo"), method}, 6));
        EXPECT_EQ(unknown.out, "error : plugin method load error.") << method;
        EXPECT_EQ(unknown.err, "") << method;
        EXPECT_EQ(unknown.exit_status, 0) << method;
    }
    // An encoded method name is decoded before it is compared.
    const auto encoded_method = m_bridge.run({plugin("broken"), encoded("syntax_check")});
    EXPECT_EQ(encoded_method.out, QIRO_PLUGIN_SCRIPT_SYNTAX_OK_MESSAGE);
}

TEST_P(bridge_protocol, syntax_check_never_loads_the_plugin) {
    for (const char* stem : {"broken", "does_not_exist", "load_noise"}) {
        const auto bare = m_bridge.run({plugin(stem), QIRO_PLUGIN_SCRIPT_METHOD_NAME_SYNTAX_CHECK});
        EXPECT_EQ(bare.out, "syntax ok") << stem;
        EXPECT_EQ(bare.err, "") << stem;
        EXPECT_EQ(bare.exit_status, 0) << stem;
        const auto extra = m_bridge.run(
            with_values({plugin(stem), QIRO_PLUGIN_SCRIPT_METHOD_NAME_SYNTAX_CHECK}, 8));
        EXPECT_EQ(extra.out, "syntax ok") << stem;
    }
}

TEST_P(bridge_protocol, one_argument_is_an_argument_error_except_in_python) {
    const auto output = m_bridge.run({plugin("request_echo")});
    if (is("python")) {
        // The test counts the script name, so the missing method fails in the interpreter.
        EXPECT_EQ(output.out, "");
        EXPECT_THAT(output.err, HasSubstr("IndexError"));
        EXPECT_NE(output.exit_status, 0);
    } else {
        EXPECT_EQ(output.out, "error : argument error.");
        EXPECT_EQ(output.exit_status, 0);
    }
}

TEST_P(bridge_protocol, loads_the_plugin_before_counting_the_arguments) {
    const std::string run_process = QIRO_PLUGIN_SCRIPT_METHOD_NAME_RUN_PROCESS;
    const std::string run_preference = QIRO_PLUGIN_SCRIPT_METHOD_NAME_RUN_PREFERENCE;
    const std::string run_callback = QIRO_PLUGIN_SCRIPT_METHOD_NAME_RUN_CALLBACK;
    const std::string noise = plugin("load_noise");
    struct call {
        std::string method;
        std::size_t values;
        std::string out;
    };
    const std::vector<call> calls{
        {run_process, 0, "[loading]error : run_process() argument error."},
        {run_process, 5, "[loading]error : run_process() argument error."},
        {run_process, 8, "[loading]error : run_process() argument error."},
        {run_preference, 0, "[loading]error : run_preference() argument error."},
        {run_preference, 2, "[loading]error : run_preference() argument error."},
        {run_preference, 1, "[loading][preference]"},
        {run_callback, 5, "[loading]error : run_callback() argument error."},
        {run_callback, 8, "[loading]error : run_callback() argument error."},
        {run_callback, 6, "[loading][callback]"},
        {run_callback, 7, "[loading][callback]"},
    };
    for (const auto& each : calls) {
        const auto output = m_bridge.run(with_values({noise, each.method}, each.values));
        EXPECT_EQ(output.out, each.out) << each.method << " " << each.values;
        EXPECT_EQ(output.err, "") << each.method << " " << each.values;
        EXPECT_EQ(output.exit_status, 0) << each.method << " " << each.values;
    }
}

TEST_P(bridge_protocol, plugin_that_fails_to_load) {
    for (const char* stem : {"broken", "does_not_exist"}) {
        const auto output = m_bridge.run(with_values({plugin(stem), "run_process"}, 6));
        EXPECT_FALSE(output.err.empty()) << stem;
        if (is("perl")) {
            // The require's own message goes first, to standard error.
            EXPECT_EQ(output.out, "error : plugin module load error.") << stem;
            EXPECT_EQ(output.exit_status, 0) << stem;
        } else {
            EXPECT_EQ(output.out, "") << stem;
            EXPECT_NE(output.exit_status, 0) << stem;
        }
    }
    const auto missing = m_bridge.run(with_values({plugin("does_not_exist"), "run_callback"}, 6));
    if (is("perl")) {
        EXPECT_THAT(missing.err, HasSubstr("does_not_exist.pl"));
    }
}

TEST_P(bridge_protocol, plugin_without_the_entry) {
    for (const char* method : {"run_process", "run_preference", "run_callback"}) {
        const auto output = m_bridge.run(with_values(
            {plugin("no_entries"), method}, std::string(method) == "run_preference" ? 1 : 6));
        if (is("perl")) {
            EXPECT_EQ(output.out, "error : plugin method [" + std::string(method) + "] not found.");
            EXPECT_EQ(output.err, "");
            EXPECT_EQ(output.exit_status, 0);
        } else {
            EXPECT_EQ(output.out, "");
            EXPECT_THAT(output.err, HasSubstr(is("python") ? "AttributeError" : "NameError"));
            EXPECT_NE(output.exit_status, 0);
        }
    }
}

TEST_P(bridge_protocol, exception_inside_the_plugin_is_the_interpreter_s_report) {
    // field_rules knows no group of this name and fails while building its result.
    const auto output = m_bridge.run(
        {plugin("field_rules"), "run_process", encoded("no such group"), "", "", "0", "", ""});
    EXPECT_EQ(output.out, "");
    EXPECT_FALSE(output.err.empty());
    EXPECT_NE(output.exit_status, 0);
}

TEST_P(bridge_protocol, plugin_output_comes_before_the_document) {
    const auto output = m_bridge.run(with_values({plugin("load_noise"), "run_process"}, 6));
    EXPECT_EQ(output.out, "[loading][running]\n"
                          "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
                          "\n"
                          "<itemlist>\n"
                          "\t<item type=\"script_candidate\">\n"
                          "\t\t<title>noise</title>\n"
                          "\t</item>\n"
                          "</itemlist>\n");
    EXPECT_EQ(output.err, "");
    EXPECT_EQ(output.exit_status, 0);
}

INSTANTIATE_TEST_SUITE_P(bridges, bridge_protocol, ::testing::ValuesIn(all_languages()),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

TEST(python_bridge, entry_that_is_not_callable) {
    bridge_folder bridge(python_language());
    const auto output = bridge.run({encoded(fixture(python_language(), "not_callable").string()),
                                    "run_process", "", "", "", "0", "", ""});
    EXPECT_EQ(output.out, "error : plugin module load error2.");
    EXPECT_EQ(output.exit_status, 0);
}

TEST(ruby_bridge, require_that_returns_false) {
    // A library the bridge itself has already required is not loaded again.
    bridge_folder bridge(ruby_language());
    const auto where =
        run_shell("ruby -e 'require \"cgi\"; print $LOADED_FEATURES.grep(%r{/cgi[.]rb\\z}).first'",
                  bridge.path(), bridge.path() / "home");
    ASSERT_TRUE(where.out.ends_with("/cgi.rb")) << where.out << where.err;
    const auto output = bridge.run({encoded(where.out), "run_process", "", "", "", "0", "", ""});
    EXPECT_EQ(output.out, "error : plugin module load error.");
    EXPECT_EQ(output.exit_status, 0);
}

} // namespace
} // namespace qiro_plugin::test

#include "runtime/message_script.hpp"
#include "runtime/runtime_fixture.hpp"
#include "text/url_xml_escape.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

namespace fs = std::filesystem;
using namespace qiro_plugin;
using qiro_test::language_row;
using qiro_test::read_file;
using qiro_test::read_lines;
using qiro_test::utf16;
using qiro_test::utf8;

namespace {

// Text that a shell would act on if it ever reached one unquoted.
const std::string HOSTILE_TEXT = "a \"b\" $(touch MARK1) `touch MARK2` 'c' \\ 日本語";

class script_run : public qiro_test::runtime_fixture {
protected:
    struct run_outcome {
        std::shared_ptr<abstract_qiro_plugin_message> message;
        std::vector<message_script::candidate> candidates;
    };

    run_outcome run(qiro_plugin_instance_script& a_instance, const utf16_string& a_written_form) {
        qiro_plugin_request request{};
        set_record_text(request.composition_string, request.composition_string_length,
                        a_written_form);
        return run(a_instance, request);
    }

    run_outcome run(qiro_plugin_instance_script& a_instance, const qiro_plugin_request& a_request) {
        run_outcome outcome;
        outcome.message = a_instance.alloc_qiro_plugin_message(nullptr, 0);
        a_instance.run_processing(outcome.message, a_request, qiro_plugin_message_quit_flag());
        outcome.candidates = dynamic_cast<message_script&>(*outcome.message).get_candidates();
        return outcome;
    }

    // The lines an echo plug-in wrote that start with a_prefix, without it.
    std::vector<std::string> echoed(const std::string& a_prefix) const {
        std::vector<std::string> values;
        for (const std::string& line : read_lines(m_echo_file)) {
            if (line.starts_with(a_prefix)) {
                values.push_back(line.substr(a_prefix.size()));
            }
        }
        return values;
    }

    std::vector<std::string> markers_anywhere() const {
        std::vector<std::string> found;
        for (const fs::path& folder :
             {m_root, m_home, m_plugins, fs::path(data_folder()), fs::current_path()}) {
            for (const char* name : {"MARK1", "MARK2"}) {
                if (fs::exists(folder / name)) {
                    found.push_back((folder / name).string());
                }
            }
        }
        return found;
    }
};

const std::regex BRIDGE_PY_NAME("[0-9A-F]{40}\\.py");

} // namespace

TEST_F(script_run, each_language_checks_runs_and_delivers_its_candidates) {
    const std::string expected =
        read_file(fs::path(QIRO_TEST_DATA_DIR) / "runtime" / "candidates_expected.xml");
    for (const language_row* row :
         {&qiro_test::perl_row(), &qiro_test::ruby_row(), &qiro_test::python_row()}) {
        SCOPED_TRACE(row->command_name);
        const std::string file_name = std::string("candidates") + row->extension;
        copy_fixture(file_name, m_plugins);
        const auto instance = make_instance(m_plugins, file_name, *row);
        ASSERT_TRUE(instance->is_load());

        ASSERT_TRUE(instance->syntax_check()) << instance->get_last_std_err_output_string();
        EXPECT_EQ(instance->get_last_std_output_string(), "syntax ok");
        EXPECT_FALSE(instance->is_last_document_parsed());

        const run_outcome outcome = run(*instance, u"テスト");
        EXPECT_TRUE(instance->is_last_document_parsed());
        EXPECT_EQ(instance->get_last_std_err_output_string(), "");
        ASSERT_EQ(outcome.candidates.size(), 2U) << instance->get_last_std_output_string();
        EXPECT_EQ(outcome.candidates[0].title, u"テスト候補");
        EXPECT_EQ(outcome.candidates[0].comment, u"<p>説明</p>");
        EXPECT_EQ(outcome.candidates[0].alternative, u"a<b");
        EXPECT_EQ(outcome.candidates[0].alternative_alias, u"別名");
        EXPECT_EQ(outcome.candidates[0].alternative_type, u"definite_string");
        EXPECT_EQ(outcome.candidates[0].info, u"名詞");
        EXPECT_EQ(outcome.candidates[1].alternative_type, u"url_jump_string");

        const qiro_plugin_receive_data receive =
            instance->get_plugin_receive_data(outcome.message, 3, 17);
        EXPECT_EQ(receive.return_type, 0U);
        EXPECT_EQ(receive.xml_string, expected);
        EXPECT_TRUE(bridge_files().empty());
    }
}

TEST_F(script_run, python_command_line_holds_every_value_quoted_and_encoded) {
    copy_fixture("echo_request.py", m_plugins);
    const auto instance = make_instance(m_plugins, "echo_request.py", qiro_test::python_row());
    ASSERT_TRUE(instance->is_load());

    qiro_plugin_request request{};
    set_record_text(request.composition_string, request.composition_string_length, u"か な");
    set_record_text(request.reading_string, request.reading_string_length, u"かな");
    set_record_text(request.proxy_address, request.proxy_address_length, u"proxy.example");
    request.proxy_port = 8080;
    set_record_text(request.proxy_username, request.proxy_username_length, u"ユーザー");
    set_record_text(request.proxy_password, request.proxy_password_length, u"pa ss\"+%");
    const run_outcome outcome = run(*instance, request);
    ASSERT_EQ(outcome.candidates.size(), 1U) << instance->get_last_std_err_output_string();
    EXPECT_EQ(outcome.candidates[0].title, u"か な");

    const std::vector<std::string> argv = echoed("argv:");
    ASSERT_EQ(argv.size(), 10U);
    EXPECT_EQ(argv[0], "python");
    EXPECT_TRUE(std::regex_match(argv[1], BRIDGE_PY_NAME)) << argv[1];
    const std::vector<std::string> expected_tail = {
        utility::url_encode((m_plugins / "echo_request.py").string()),
        "run_process",
        utility::url_encode("か な"),
        utility::url_encode("かな"),
        utility::url_encode("proxy.example"),
        "8080",
        utility::url_encode("ユーザー"),
        utility::url_encode("pa ss\"+%"),
    };
    EXPECT_EQ(std::vector<std::string>(argv.begin() + 2, argv.end()), expected_tail);
    EXPECT_EQ(echoed("cwd:"),
              std::vector<std::string>{data_folder().substr(0, data_folder().size() - 1)});
    EXPECT_EQ(echoed("request:proxy_password="), std::vector<std::string>{"pa ss\"+%"});
    EXPECT_EQ(echoed("request:proxy_port="), std::vector<std::string>{"8080"});
    EXPECT_TRUE(echoed("request:path=").empty());

    // With proxy use off every proxy value is an empty argument and the port is 0.
    run(*instance, u"x");
    const std::vector<std::string> plain = echoed("argv:");
    ASSERT_EQ(plain.size(), 10U);
    EXPECT_EQ(std::vector<std::string>(plain.begin() + 5, plain.end()),
              (std::vector<std::string>{"", "", "0", "", ""}));
    EXPECT_NE(argv[1], plain[1]);
    EXPECT_TRUE(bridge_files().empty());
}

TEST_F(script_run, preference_path_is_created_and_passed_to_every_entry) {
    copy_fixture("echo_settings.py", m_plugins);
    const auto instance = make_instance(m_plugins, "echo_settings.py", qiro_test::python_row());
    ASSERT_TRUE(instance->is_load());
    const std::string settings_folder = data_folder() + "設定 Plugin/";

    const run_outcome outcome = run(*instance, u"語");
    ASSERT_EQ(outcome.candidates.size(), 1U) << instance->get_last_std_err_output_string();
    EXPECT_TRUE(fs::is_directory(settings_folder));
    EXPECT_EQ(fs::status(settings_folder).permissions() & fs::perms::all, fs::perms::owner_all);
    const std::vector<std::string> argv = echoed("argv:");
    ASSERT_EQ(argv.size(), 11U);
    EXPECT_EQ(argv[10], utility::url_encode(settings_folder));
    EXPECT_EQ(echoed("request:path="), std::vector<std::string>{settings_folder});

    qiro_plugin_callback callback{};
    set_record_text(callback.candidate_string, callback.candidate_string_length, u"選んだ");
    set_record_text(callback.composition_string, callback.composition_string_length, u"語");
    callback.proxy_port = 3128;
    EXPECT_TRUE(instance->run_callback(outcome.message, callback, {}));
    EXPECT_EQ(echoed("method:"), std::vector<std::string>{"run_callback"});
    const std::vector<std::string> callback_argv = echoed("argv:");
    ASSERT_EQ(callback_argv.size(), 11U);
    EXPECT_EQ(std::vector<std::string>(callback_argv.begin() + 3, callback_argv.end()),
              (std::vector<std::string>{"run_callback", utility::url_encode("選んだ"),
                                        utility::url_encode("語"), "", "3128", "", "",
                                        utility::url_encode(settings_folder)}));
    EXPECT_EQ(echoed("request:candidate_string="), std::vector<std::string>{"選んだ"});
    // The callback's output is not read: the message keeps what the processing run left.
    EXPECT_EQ(dynamic_cast<message_script&>(*outcome.message).get_candidates().size(), 1U);

    fs::remove_all(settings_folder);
    EXPECT_TRUE(instance->run_preference(nullptr));
    EXPECT_EQ(echoed("method:"), std::vector<std::string>{"run_preference"});
    const std::vector<std::string> preference_argv = echoed("argv:");
    ASSERT_EQ(preference_argv.size(), 5U);
    EXPECT_EQ(preference_argv[3], "run_preference");
    EXPECT_EQ(preference_argv[4], utility::url_encode(settings_folder));
    EXPECT_EQ(read_file(settings_folder + "preference.txt"), "stored");
    EXPECT_TRUE(bridge_files().empty());
}

TEST_F(script_run, hostile_written_forms_and_paths_reach_the_plugin_as_plain_text) {
    copy_fixture("echo_request.py", m_plugins);
    const auto instance = make_instance(m_plugins, "echo_request.py", qiro_test::python_row());
    const run_outcome outcome = run(*instance, utf16(HOSTILE_TEXT));
    ASSERT_EQ(outcome.candidates.size(), 1U) << instance->get_last_std_err_output_string();
    EXPECT_EQ(utf8(outcome.candidates[0].title), HOSTILE_TEXT);
    EXPECT_EQ(echoed("request:composition_string="), std::vector<std::string>{HOSTILE_TEXT});

    const fs::path hostile_folder = m_root / ("in " + HOSTILE_TEXT);
    for (const language_row* row :
         {&qiro_test::perl_row(), &qiro_test::ruby_row(), &qiro_test::python_row()}) {
        SCOPED_TRACE(row->command_name);
        const std::string file_name = std::string("candidates") + row->extension;
        copy_fixture(file_name, hostile_folder);
        const auto hostile = make_instance(hostile_folder, file_name, *row);
        ASSERT_TRUE(hostile->is_load());
        ASSERT_TRUE(hostile->syntax_check());
        const run_outcome hostile_outcome = run(*hostile, utf16(HOSTILE_TEXT));
        ASSERT_EQ(hostile_outcome.candidates.size(), 2U)
            << hostile->get_last_std_err_output_string();
        EXPECT_EQ(utf8(hostile_outcome.candidates[0].title), HOSTILE_TEXT + "候補");
    }
    EXPECT_EQ(markers_anywhere(), std::vector<std::string>{});
    EXPECT_TRUE(bridge_files().empty());
}

#include "runtime/runtime_fixture.hpp"
#include "text/string_encode.hpp"
#include "text/url_xml_escape.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <sstream>

namespace fs = std::filesystem;
using namespace qiro_plugin;
using qiro_test::read_file;
using strings = std::vector<std::string>;

namespace {

// Text that a shell would act on if it ever reached one unquoted.
const std::string HOSTILE_TEXT = "a \"b\" $(touch MARK1) `touch MARK2` 'c' \\ 日本語";

class script_run : public qiro_test::runtime_fixture {
protected:
    // The lines the echo plug-in wrote that start with a_prefix, without it.
    strings echoed(const std::string& a_prefix) const {
        strings values;
        std::istringstream stream(read_file(m_echo_file));
        for (std::string line; std::getline(stream, line);) {
            if (line.starts_with(a_prefix)) {
                values.push_back(line.substr(a_prefix.size()));
            }
        }
        return values;
    }

    // A shell that ran a part of HOSTILE_TEXT would have left its marks in its working folder:
    // the data folder, or this program's own if the runner had not changed it.
    bool no_marks() const {
        return !fs::exists(data_folder() + "MARK1") && !fs::exists(data_folder() + "MARK2") &&
               !fs::exists("MARK1") && !fs::exists("MARK2");
    }
};

} // namespace

TEST_F(script_run, each_language_runs_from_a_hostile_path_and_delivers_its_candidates) {
    const std::string expected =
        read_file(fs::path(QIRO_TEST_DATA_DIR) / "runtime" / "candidates_expected.xml");
    const fs::path folder = m_root / ("in " + HOSTILE_TEXT);
    for (const qiro_test::language_row& row : qiro_test::LANGUAGES) {
        SCOPED_TRACE(row.command_name);
        const std::string file_name = std::string("candidates") + row.extension;
        copy_fixture(file_name, folder);
        const auto instance = checked_instance(folder, file_name, row);
        const auto message = process(*instance, u"テスト");
        EXPECT_TRUE(instance->is_last_document_parsed());
        EXPECT_EQ(instance->get_last_std_err_output_string(), "");
        // The document is made from the message's candidates, and only when there are some.
        EXPECT_EQ(instance->get_plugin_receive_data(message, 3, 17).xml_string, expected)
            << instance->get_last_std_output_string();
        EXPECT_TRUE(bridge_files().empty());
    }
    EXPECT_TRUE(no_marks());
}

TEST_F(script_run, python_command_line_carries_every_value_and_the_preference_path) {
    copy_fixture("echo.py", m_plugins);
    const auto plain = make_instance(m_plugins, "echo.py");
    qiro_plugin_request request{};
    set_record_text(request.reading_string, request.reading_string_length, u"かな");
    set_record_text(request.proxy_address, request.proxy_address_length, u"proxy.example");
    request.proxy_port = 8080;
    set_record_text(request.proxy_username, request.proxy_username_length, u"ユーザー");
    set_record_text(request.proxy_password, request.proxy_password_length, u"pa ss\"+%");
    const auto candidates =
        process(*plain, string_encode::MultiByteUTF8ToWideChar(HOSTILE_TEXT.c_str()), request)
            ->get_candidates();
    ASSERT_EQ(candidates.size(), 1U) << plain->get_last_std_err_output_string();
    EXPECT_EQ(string_encode::WideCharToMultiByteUTF8(candidates[0].title.c_str()), HOSTILE_TEXT);
    EXPECT_EQ(echoed("request:composition_string="), strings{HOSTILE_TEXT});
    EXPECT_EQ(echoed("cwd:"), strings{data_folder().substr(0, data_folder().size() - 1)});
    const std::string plugin_argument = utility::url_encode((m_plugins / "echo.py").string());
    strings argv = echoed("argv:");
    ASSERT_EQ(argv.size(), 10U);
    EXPECT_TRUE(std::regex_match(argv[1], std::regex("[0-9A-F]{40}\\.py"))) << argv[1];
    argv.erase(argv.begin() + 1);
    EXPECT_EQ(argv,
              (strings{"python", plugin_argument, "run_process", utility::url_encode(HOSTILE_TEXT),
                       utility::url_encode("かな"), utility::url_encode("proxy.example"), "8080",
                       utility::url_encode("ユーザー"), utility::url_encode("pa ss\"+%")}));
    EXPECT_TRUE(no_marks());

    // A plug-in with a settings screen also gets its preference folder, made for it.
    qiro_test::write_file(m_plugins / "echo.xml",
                          "<?xml version=\"1.0\" encoding=\"UTF-8\" ?><plugin><name>設定 "
                          "Plugin</name><preference>true</preference><callback>true</callback>"
                          "</plugin>");
    const auto with_settings = make_instance(m_plugins, "echo.py");
    const std::string settings_folder = data_folder() + "設定 Plugin/";
    const auto second = process(*with_settings, u"語");
    EXPECT_EQ(fs::status(settings_folder).permissions() & fs::perms::all, fs::perms::owner_all);
    argv = echoed("argv:");
    ASSERT_EQ(argv.size(), 11U);
    argv.erase(argv.begin() + 1);
    EXPECT_EQ(argv, (strings{"python", plugin_argument, "run_process", utility::url_encode("語"),
                             "", "", "0", "", "", utility::url_encode(settings_folder)}));
    EXPECT_EQ(echoed("request:path="), strings{settings_folder});

    qiro_plugin_callback callback{};
    set_record_text(callback.candidate_string, callback.candidate_string_length, u"選んだ");
    EXPECT_TRUE(with_settings->run_callback(second, callback, {}));
    EXPECT_EQ(echoed("method:"), strings{"run_callback"});
    EXPECT_EQ(echoed("request:candidate_string="), strings{"選んだ"});
    EXPECT_EQ(echoed("request:path="), strings{settings_folder});

    fs::remove_all(settings_folder);
    EXPECT_TRUE(with_settings->run_preference(nullptr));
    EXPECT_EQ(echoed("method:"), strings{"run_preference"});
    EXPECT_EQ(read_file(settings_folder + "preference.txt"), "stored");
    EXPECT_TRUE(bridge_files().empty());
}

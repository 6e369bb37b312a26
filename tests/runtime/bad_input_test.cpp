#include "runtime/message_script.hpp"
#include "runtime/runtime_fixture.hpp"
#include "text/url_xml_escape.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;
using namespace qiro_plugin;

namespace {

class bad_plugin : public qiro_test::runtime_fixture {
protected:
    // Loads a plug-in and passes its syntax check, so the last outputs hold "syntax ok".
    std::unique_ptr<qiro_plugin_instance_script> checked(const std::string& a_file_name) {
        auto instance = make_instance(m_plugins, a_file_name);
        EXPECT_TRUE(instance->is_load());
        EXPECT_TRUE(instance->syntax_check());
        return instance;
    }

    std::size_t run_count_candidates(qiro_plugin_instance_script& a_instance) {
        qiro_plugin_request request{};
        set_record_text(request.composition_string, request.composition_string_length, u"x");
        const auto message = a_instance.alloc_qiro_plugin_message(nullptr, 0);
        EXPECT_TRUE(a_instance.run_processing(message, request, {}));
        EXPECT_EQ(a_instance.get_plugin_receive_data(message, 0, 0).xml_string, "");
        return dynamic_cast<message_script&>(*message).get_candidates().size();
    }
};

} // namespace

TEST_F(bad_plugin, bad_outputs_add_no_candidates_and_are_kept_raw) {
    struct bad_case {
        std::string body;       // of qiro_plugin_run_process
        std::string output;     // what is kept of standard output
        bool whole;             // false: output is only how it starts
        std::string error_part; // found in standard error
    };
    const std::string not_utf8 = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<itemlist>\xff\xfe"
                                 "\x80</itemlist>\n";
    const bad_case cases[] = {
        {"sys.stdout.write('garbage <<< not a document')\n    return {'candidate': [{'hyoki': "
         "'lost'}]}",
         "garbage <<< not a document", false, ""},
        {"os.write(1, b'<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\\n<itemlist>\\xff\\xfe\\x80"
         "</itemlist>\\n')\n    os._exit(0)",
         not_utf8, true, ""},
        {"for _ in range(65): os.write(1, b'x' * (1 << 20))\n    return {'candidate': "
         "[{'hyoki': 'after the flood'}]}",
         std::string(std::size_t{64} << 20, 'x'), true, ""},
        {"sys.stderr.write('about to die\\n')\n    sys.stderr.flush()\n"
         "    os.kill(os.getpid(), signal.SIGKILL)",
         "", true, "about to die"},
    };
    for (const bad_case& each : cases) {
        SCOPED_TRACE(each.body.substr(0, 40));
        qiro_test::write_file(
            m_plugins / "bad.py",
            "import os, signal, sys\ndef qiro_plugin_run_process(request):\n    " + each.body +
                "\n");
        const auto instance = checked("bad.py");
        EXPECT_EQ(run_count_candidates(*instance), 0U);
        const std::string output = instance->get_last_std_output_string();
        EXPECT_TRUE((each.whole ? output : output.substr(0, each.output.size())) == each.output)
            << output.substr(0, 200) << " (" << output.size() << " bytes)";
        EXPECT_NE(instance->get_last_std_err_output_string().find(each.error_part),
                  std::string::npos);
        EXPECT_FALSE(instance->is_last_document_parsed());
        EXPECT_TRUE(bridge_files().empty());
    }
}

TEST_F(bad_plugin, refused_text_failed_bridge_write_and_vanished_file_keep_the_outputs) {
    copy_fixture("candidates.py", m_plugins);
    const auto instance = checked("candidates.py");
    qiro_plugin_request request{};
    const utf16_string lone_surrogate = {u'a', char16_t{0xD800}, u'b'};
    set_record_text(request.composition_string, request.composition_string_length, lone_surrogate);
    const auto message = instance->alloc_qiro_plugin_message(nullptr, 0);
    EXPECT_THROW(instance->run_processing(message, request, {}), std::runtime_error);

    // A file in the data folder's place: the bridge file cannot be created inside it.
    const fs::path moved = m_root / "moved data folder";
    const std::string data_folder_path = data_folder().substr(0, data_folder().size() - 1);
    fs::rename(data_folder_path, moved);
    qiro_test::write_file(data_folder_path, "not a folder");
    try {
        instance->run_processing(message, qiro_plugin_request{}, {});
        ADD_FAILURE() << "the run did not report the failed write";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "script_file_access::script_file_access() : fault.");
    }
    EXPECT_TRUE(fs::is_empty(moved));
    fs::remove(data_folder_path);
    fs::rename(moved, data_folder_path);

    fs::remove(m_plugins / "candidates.py");
    EXPECT_EQ(run_count_candidates(*instance), 0U);
    EXPECT_EQ(instance->get_last_std_output_string(), "syntax ok");
    EXPECT_FALSE(instance->is_last_document_parsed());
    EXPECT_TRUE(instance->get_load_error_message().empty());
    EXPECT_TRUE(bridge_files().empty());
}

TEST_F(bad_plugin, syntax_check_passes_only_on_a_reply_that_starts_with_syntax_ok) {
    qiro_test::write_file(m_plugins / "plugin.py", "");
    const auto make_with_reply = [&](const std::string& a_reply) {
        return make_instance(
            m_plugins, "plugin.py", qiro_test::python_row(),
            utility::url_encode("import sys\nsys.stdout.write(" + a_reply + ")\n"));
    };
    EXPECT_TRUE(make_with_reply("'SYNTAX OK'")->syntax_check());

    const auto warned = make_with_reply("'warning: old\\nsyntax ok'");
    EXPECT_FALSE(warned->syntax_check());
    EXPECT_FALSE(warned->is_load());
    EXPECT_EQ(warned->get_load_error_message(),
              u"plugin.py : [SCRIPT] スクリプトファイルのプラグインの文法チェックに失敗しました");
    EXPECT_EQ(warned->get_last_std_output_string(), "warning: old\nsyntax ok");

    // The text of the earlier load failure is kept, and so is the loaded flag that went with it.
    const auto missing = make_instance(m_plugins, "gone.py");
    EXPECT_FALSE(missing->syntax_check());
    EXPECT_FALSE(missing->is_load());
    EXPECT_EQ(missing->get_load_error_message(),
              u"gone.py : [SCRIPT] ファイルが見つかりませんでした");
    EXPECT_TRUE(bridge_files().empty());
}

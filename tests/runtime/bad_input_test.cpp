#include "runtime/message_script.hpp"
#include "runtime/runtime_fixture.hpp"
#include "text/url_xml_escape.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;
using namespace qiro_plugin;
using qiro_test::python_row;

namespace {

class bad_plugin : public qiro_test::runtime_fixture {
protected:
    // Loads a fixture plug-in and passes its syntax check, so the last outputs hold "syntax ok".
    std::unique_ptr<qiro_plugin_instance_script> checked(const std::string& a_fixture) {
        copy_fixture(a_fixture, m_plugins);
        auto instance = make_instance(m_plugins, a_fixture, python_row());
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

TEST_F(bad_plugin, vanished_file_runs_nothing_and_keeps_the_previous_outputs) {
    const auto instance = checked("candidates.py");
    fs::remove(m_plugins / "candidates.py");
    EXPECT_EQ(run_count_candidates(*instance), 0U);
    EXPECT_EQ(instance->get_last_std_output_string(), "syntax ok");
    EXPECT_FALSE(instance->is_last_document_parsed());
    EXPECT_TRUE(instance->get_load_error_message().empty());
    EXPECT_TRUE(bridge_files().empty());
}

TEST_F(bad_plugin, written_form_that_is_not_valid_text_is_refused_before_running) {
    const auto instance = checked("echo_request.py");
    qiro_plugin_request request{};
    const utf16_string lone_surrogate = {u'a', char16_t{0xD800}, u'b'};
    set_record_text(request.composition_string, request.composition_string_length, lone_surrogate);
    const auto message = instance->alloc_qiro_plugin_message(nullptr, 0);
    EXPECT_THROW(instance->run_processing(message, request, {}), std::runtime_error);
    EXPECT_FALSE(std::filesystem::exists(m_echo_file));
    EXPECT_EQ(instance->get_last_std_output_string(), "syntax ok");
    EXPECT_TRUE(bridge_files().empty());
}

TEST_F(bad_plugin, unparsable_outputs_add_no_candidates_and_are_kept_raw) {
    const auto garbage = checked("prints_garbage.py");
    EXPECT_EQ(run_count_candidates(*garbage), 0U);
    EXPECT_TRUE(garbage->get_last_std_output_string().starts_with("garbage <<< not a document"));
    EXPECT_FALSE(garbage->is_last_document_parsed());

    const auto bytes = checked("prints_bytes.py");
    EXPECT_EQ(run_count_candidates(*bytes), 0U);
    EXPECT_NE(bytes->get_last_std_output_string().find("\xff\xfe\x80"), std::string::npos);
    EXPECT_FALSE(bytes->is_last_document_parsed());

    const auto huge = checked("prints_huge.py");
    EXPECT_EQ(run_count_candidates(*huge), 0U);
    const std::string output = huge->get_last_std_output_string();
    EXPECT_EQ(output.size(), std::size_t{64} << 20);
    EXPECT_EQ(output.find_first_not_of('x'), std::string::npos);
    EXPECT_FALSE(huge->is_last_document_parsed());
    EXPECT_TRUE(bridge_files().empty());
}

TEST_F(bad_plugin, killed_interpreter_leaves_empty_output_and_its_error_text) {
    const auto instance = checked("kills_itself.py");
    EXPECT_EQ(run_count_candidates(*instance), 0U);
    EXPECT_EQ(instance->get_last_std_output_string(), "");
    EXPECT_NE(instance->get_last_std_err_output_string().find("about to die"), std::string::npos);
    EXPECT_TRUE(bridge_files().empty());
}

TEST_F(bad_plugin, syntax_check_passes_only_on_a_reply_that_starts_with_syntax_ok) {
    copy_fixture("candidates.py", m_plugins);
    const auto make_with_reply = [&](const std::string& a_reply) {
        return make_instance_with_script(
            m_plugins, "candidates.py", python_row(),
            utility::url_encode("import sys\nsys.stdout.write(" + a_reply + ")\n"));
    };
    EXPECT_TRUE(make_with_reply("'SYNTAX OK'")->syntax_check());
    EXPECT_TRUE(make_with_reply("'Syntax Ok and more'")->syntax_check());

    const auto warned = make_with_reply("'warning: old\\nsyntax ok'");
    EXPECT_FALSE(warned->syntax_check());
    EXPECT_FALSE(warned->is_load());
    EXPECT_EQ(
        warned->get_load_error_message(),
        u"candidates.py : [SCRIPT] スクリプトファイルのプラグインの文法チェックに失敗しました");
    EXPECT_EQ(warned->get_last_std_output_string(), "warning: old\nsyntax ok");

    // A missing interpreter is reported by the shell; the check fails and says so.
    const auto no_interpreter =
        make_instance(m_plugins, "candidates.py",
                      {"qiro-no-such-interpreter", ".py", u"Python", python_row().script});
    ASSERT_TRUE(no_interpreter->is_load());
    EXPECT_FALSE(no_interpreter->syntax_check());
    EXPECT_FALSE(no_interpreter->is_load());
    EXPECT_NE(no_interpreter->get_last_std_err_output_string().find("not found"),
              std::string::npos);

    // The first error text wins and the loaded flag stays as it was.
    const auto missing = make_instance(m_plugins, "gone.py", python_row());
    EXPECT_FALSE(missing->syntax_check());
    EXPECT_EQ(missing->get_load_error_message(),
              u"gone.py : [SCRIPT] ファイルが見つかりませんでした");
    EXPECT_TRUE(bridge_files().empty());
}

TEST_F(bad_plugin, failed_bridge_file_write_reaches_the_caller_and_leaves_nothing) {
    const auto instance = checked("candidates.py");
    const fs::path moved = m_root / "moved data folder";
    fs::rename(data_folder(), moved);
    // A file in the data folder's place: the bridge file cannot be created inside it.
    qiro_test::write_file(data_folder().substr(0, data_folder().size() - 1), "not a folder");
    qiro_plugin_request request{};
    const auto message = instance->alloc_qiro_plugin_message(nullptr, 0);
    try {
        instance->run_processing(message, request, {});
        ADD_FAILURE() << "the run did not report the failed write";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "script_file_access::script_file_access() : fault.");
    }
    EXPECT_EQ(instance->get_last_std_output_string(), "syntax ok");
    EXPECT_TRUE(fs::is_empty(moved));
}

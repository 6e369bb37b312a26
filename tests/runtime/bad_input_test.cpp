#include "runtime/runtime_fixture.hpp"
#include "runtime/sha_hash.hpp"
#include "text/url_xml_escape.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <optional>

namespace fs = std::filesystem;
using namespace qiro_plugin;

namespace {

// The number the next bridge file names are drawn from, when a test fixes it.
std::optional<std::uint64_t> fixed_draw;

} // namespace

// Takes the place of the C library's function in this test program, so that a test can know
// the name of the next bridge file; otherwise it asks the kernel as the library would.
extern "C" ssize_t getrandom(void* a_buffer, size_t a_length, unsigned int a_flags) {
    if (fixed_draw && a_length == sizeof *fixed_draw) {
        std::memcpy(a_buffer, &*fixed_draw, a_length);
        return static_cast<ssize_t>(a_length);
    }
    return ::syscall(SYS_getrandom, a_buffer, a_length, a_flags);
}

namespace {

class bad_plugin : public qiro_test::runtime_fixture {
protected:
    std::size_t run_count_candidates(qiro_plugin_instance_script& a_instance,
                                     const utf16_string& a_written_form = u"x") {
        const auto message = process(a_instance, a_written_form);
        EXPECT_EQ(a_instance.get_plugin_receive_data(message, 0, 0).xml_string, "");
        return message->get_candidates().size();
    }
};

} // namespace

TEST_F(bad_plugin, bad_outputs_add_no_candidates_and_are_kept_raw) {
    struct bad_case {
        std::u16string written; // how the fixture plug-in misbehaves
        std::string output;     // what is kept of standard output
        bool whole;             // false: output is only how it starts
        std::string error_part; // found in standard error
    };
    const bad_case cases[] = {
        {u"garbage", "garbage <<< not a document", false, ""},
        {u"not utf-8",
         "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n<itemlist>\xff\xfe\x80</itemlist>\n", true,
         ""},
        {u"flood", std::string(std::size_t{64} << 20, 'x'), true, ""},
        {u"killed", "", true, "about to die"},
    };
    copy_fixture("bad.py", m_plugins);
    for (const bad_case& each : cases) {
        SCOPED_TRACE(std::string(each.written.begin(), each.written.end()));
        const auto instance = checked_instance(m_plugins, "bad.py");
        if (each.output.size() > 10485760) {
            // More than the document reader takes: its refusal reaches the caller.
            EXPECT_THAT([&] { process(*instance, each.written); },
                        ::testing::ThrowsMessage<std::runtime_error>(
                            "xml_access_utility_impl::xml_access_utility_impl() : failed"));
        } else {
            EXPECT_EQ(run_count_candidates(*instance, each.written), 0U);
        }
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
    const auto instance = checked_instance(m_plugins, "candidates.py");
    const utf16_string lone_surrogate = {u'a', char16_t{0xD800}, u'b'};
    EXPECT_THROW(process(*instance, lone_surrogate), std::runtime_error);

    // A file in the data folder's place: the bridge file cannot be created inside it.
    const fs::path moved = m_root / "moved data folder";
    const std::string data_folder_path = data_folder().substr(0, data_folder().size() - 1);
    fs::rename(data_folder_path, moved);
    qiro_test::write_file(data_folder_path, "not a folder");
    EXPECT_THAT([&] { process(*instance); },
                ::testing::ThrowsMessage<std::runtime_error>(
                    "script_file_access::script_file_access() : fault."));
    EXPECT_TRUE(fs::is_empty(moved));
    fs::remove(data_folder_path);
    fs::rename(moved, data_folder_path);

    fs::remove(m_plugins / "candidates.py");
    EXPECT_EQ(run_count_candidates(*instance), 0U);
    EXPECT_EQ(instance->get_last_std_output_string(), "syntax ok");
    EXPECT_TRUE(instance->get_load_error_message().empty());
    EXPECT_TRUE(bridge_files().empty());

    // A file left in the data folder under the name drawn next is taken over and removed
    // when it holds the bridge; with anything else in it the run fails and the file stays.
    copy_fixture("candidates.py", m_plugins);
    fixed_draw = 7;
    const std::string name = create_sha_hash("qiro_lumen_script_7") + ".py";
    qiro_test::write_file(data_folder() + name,
                          utility::url_decode(qiro_test::LANGUAGES[2].script()));
    EXPECT_EQ(process(*instance)->get_candidates().size(), 2U);
    EXPECT_TRUE(bridge_files().empty());
    qiro_test::write_file(data_folder() + name, "print('not the bridge')");
    EXPECT_THAT([&] { process(*instance); },
                ::testing::ThrowsMessage<std::runtime_error>(
                    "script_file_access::script_file_access() : fault."));
    EXPECT_EQ(qiro_test::read_file(data_folder() + name), "print('not the bridge')");
    fs::remove(data_folder() + name);
    fixed_draw.reset();
}

TEST_F(bad_plugin, syntax_check_passes_only_on_a_reply_that_starts_with_syntax_ok) {
    qiro_test::write_file(m_plugins / "plugin.py", "");
    const auto make_with_reply = [&](const std::string& a_reply) {
        return make_instance(
            m_plugins, "plugin.py", qiro_test::LANGUAGES[2],
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

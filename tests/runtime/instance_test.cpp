#include "runtime/message_script.hpp"
#include "runtime/runtime_fixture.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>

namespace fs = std::filesystem;
using namespace qiro_plugin;
using qiro_test::perl_row;
using qiro_test::python_row;
using qiro_test::ruby_row;
using qiro_test::write_file;

namespace {

class script_instance : public qiro_test::runtime_fixture {
protected:
    std::unique_ptr<qiro_plugin_instance_script> make_with_preference(const std::string& a_xml) {
        write_file(m_plugins / "plugin.py", "");
        write_file(m_plugins / "plugin.xml", a_xml);
        return make_instance(m_plugins, "plugin.py", python_row());
    }
};

std::string preference_document(const std::string& a_elements) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?><plugin>" + a_elements + "</plugin>";
}

class other_message : public abstract_qiro_plugin_message {};

} // namespace

TEST_F(script_instance, loads_only_files_that_end_in_the_language_extension_and_exist) {
    write_file(m_plugins / ".py", "");
    write_file(m_plugins / "script.PY", "");
    write_file(m_plugins / "script.py", "");

    const auto bare_extension = make_instance(m_plugins, ".py", python_row());
    EXPECT_FALSE(bare_extension->is_load());
    EXPECT_TRUE(bare_extension->get_load_error_message().empty());

    const auto upper_case = make_instance(m_plugins, "script.PY", python_row());
    EXPECT_TRUE(upper_case->is_load());
    EXPECT_EQ(upper_case->run_get_module_type(), u"Python");
    EXPECT_EQ(upper_case->run_get_name(), u"script.PY");

    const auto other_language = make_instance(m_plugins, "script.py", perl_row());
    EXPECT_FALSE(other_language->is_load());
    EXPECT_TRUE(other_language->get_load_error_message().empty());
    EXPECT_EQ(other_language->run_get_module_type(), u"Perl");

    const auto missing = make_instance(m_plugins, "missing.rb", ruby_row());
    EXPECT_FALSE(missing->is_load());
    EXPECT_EQ(missing->get_load_error_message(),
              u"missing.rb : [SCRIPT] ファイルが見つかりませんでした");

    // Construction makes the data folder, inside the temporary home.
    EXPECT_TRUE(fs::is_directory(data_folder()));
}

TEST_F(script_instance, reads_the_companion_document_and_answers_the_fixed_questions) {
    const auto instance = make_with_preference(preference_document(
        "<name>名前</name><name_short>短</name_short><description>説明</description>"
        "<copyright>(c)</copyright><major_version>3</major_version>"
        "<minor_version>14</minor_version><preference>true</preference>"
        "<callback>true</callback>"));
    ASSERT_TRUE(instance->is_load());
    EXPECT_EQ(instance->run_get_name(), u"名前");
    EXPECT_EQ(instance->run_get_short_name(), u"短");
    EXPECT_EQ(instance->run_get_description(), u"説明");
    EXPECT_EQ(instance->run_get_copyright(), u"(c)");
    EXPECT_EQ(instance->run_get_major_version(), 3);
    EXPECT_EQ(instance->run_get_minor_version(), 14);
    EXPECT_TRUE(instance->is_enable_preference());
    EXPECT_TRUE(instance->is_enable_callback());

    EXPECT_TRUE(instance->run_initialize());
    EXPECT_TRUE(instance->run_destroy());
    EXPECT_FALSE(instance->is_enable_palette());
    EXPECT_FALSE(instance->is_digital_signature());
    EXPECT_TRUE(instance->is_enable_processing());
    EXPECT_TRUE(instance->is_corresponding_auto_search());
    EXPECT_EQ(instance->get_detailed_processing_type(), std::set<utf16_string>{u"候補取得"});
    const auto message = instance->alloc_qiro_plugin_message(nullptr, 0);
    ASSERT_NE(std::dynamic_pointer_cast<message_script>(message), nullptr);
    EXPECT_EQ(std::dynamic_pointer_cast<message_script>(message)->get_return_type(), 2);
}

TEST_F(script_instance, missing_or_bad_companion_documents_give_defaults) {
    const std::string bad_documents[] = {"", "<plugin><name>unclosed</plugin>", "\xff\xfe garbage",
                                         std::string(10485761, ' ')};
    for (const std::string& document : bad_documents) {
        const auto instance = make_with_preference(document);
        ASSERT_TRUE(instance->is_load());
        EXPECT_EQ(instance->run_get_name(), u"plugin.py");
        EXPECT_EQ(instance->run_get_major_version(), 0);
        EXPECT_FALSE(instance->is_enable_preference());
        EXPECT_FALSE(instance->is_enable_callback());
    }

    fs::remove(m_plugins / "plugin.xml");
    EXPECT_EQ(make_instance(m_plugins, "plugin.py", python_row())->run_get_name(), u"plugin.py");

    // A FIFO in the companion's place must not block the load.
    ASSERT_EQ(mkfifo((m_plugins / "plugin.xml").c_str(), 0600), 0);
    EXPECT_TRUE(make_instance(m_plugins, "plugin.py", python_row())->is_load());
}

TEST_F(script_instance, short_name_is_cut_to_fifteen_units_and_an_ellipsis) {
    EXPECT_EQ(make_with_preference(preference_document("<name>abcdefghijklmnopq</name>"))
                  ->run_get_short_name(),
              u"abcdefghijklmno…");
    EXPECT_EQ(
        make_with_preference(preference_document("<name>あいうえおかきくけこさしすせそた</name>"))
            ->run_get_short_name(),
        u"あいうえおかきくけこさしすせそた");
    EXPECT_EQ(make_with_preference(preference_document("<name>abcdefghijklmnopq</name>"
                                                       "<name_short>s</name_short>"))
                  ->run_get_short_name(),
              u"s");
}

TEST_F(script_instance, unsupported_operations_throw_their_texts) {
    write_file(m_plugins / "plugin.py", "");
    const auto instance = make_instance(m_plugins, "plugin.py", python_row());
    const auto message = instance->alloc_qiro_plugin_message(nullptr, 0);
    const qiro_plugin_request request{};
    const auto expect_text = [](const auto& a_operation, const char* a_text) {
        try {
            a_operation();
            ADD_FAILURE() << "no exception, expected " << a_text;
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), a_text);
        }
    };
    expect_text([&] { instance->get_plugin_receive_palette_data(message); },
                "qiro_plugin_instance_script::set_plugin_request_data() : fault.");
    expect_text([&] { instance->set_plugin_request_data(message, request); },
                "qiro_plugin_instance_script::set_plugin_request_data() : fault.");
    expect_text([&] { instance->set_quit_request_for_palette(); },
                "qiro_plugin_instance_script::set_quit_request_for_palette() : fault.");
    instance->set_plugin_error_data(message);

    const auto other = std::make_shared<other_message>();
    expect_text([&] { instance->get_plugin_receive_data(nullptr, 0, 0); },
                "qiro_plugin_instance_script::get_plugin_receive_data() : fault1.");
    expect_text([&] { instance->get_plugin_receive_data(other, 0, 0); },
                "qiro_plugin_instance_script::get_plugin_receive_data() : fault2.");
    const qiro_plugin_message_quit_flag quit_flag;
    expect_text([&] { instance->run_processing(nullptr, request, quit_flag); },
                "qiro_plugin_instance_script::run_processing() : fault1.");
    expect_text([&] { instance->run_processing(other, request, quit_flag); },
                "qiro_plugin_instance_script::run_processing() : fault2.");
    // Both were refused before anything ran.
    EXPECT_TRUE(instance->get_last_std_output_string().empty());
    EXPECT_TRUE(qiro_test::runtime_fixture::bridge_files().empty());
}

TEST_F(script_instance, receive_data_carries_the_return_type_and_the_candidate_list) {
    write_file(m_plugins / "plugin.py", "");
    const auto instance = make_instance(m_plugins, "plugin.py", python_row());
    const auto message = instance->alloc_qiro_plugin_message(nullptr, 0);

    const qiro_plugin_receive_data empty = instance->get_plugin_receive_data(message, 3, 17);
    EXPECT_EQ(empty.return_type, 2U);
    EXPECT_TRUE(empty.xml_string.empty());
    EXPECT_TRUE(empty.additional_string.empty());

    auto& script_message = dynamic_cast<message_script&>(*message);
    message_script::candidate item;
    item.title = u"t";
    script_message.add_candidate(item);
    const qiro_plugin_receive_data filled = instance->get_plugin_receive_data(message, 3, 17);
    EXPECT_EQ(filled.return_type, 0U);
    EXPECT_EQ(filled.xml_string, script_message.make_xml_string_to_candidate(3, 17));
    EXPECT_TRUE(filled.additional_string.empty());
}

using script_instance_death = script_instance;

TEST_F(script_instance_death, programming_errors_report_the_failed_condition_and_end) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto unloaded = make_instance(m_plugins, "missing.py", python_row());
    EXPECT_DEATH(unloaded->run_initialize(),
                 "^[^\n]*plugin_instance_script\\.cpp:[0-9]+: failed assertion `is_load\\(\\)'\n");
    EXPECT_DEATH(unloaded->run_get_name(), "failed assertion `is_load\\(\\)'");
    EXPECT_DEATH(unloaded->get_plugin_receive_data(nullptr, 0, 0),
                 "failed assertion `is_load\\(\\)'");

    write_file(m_plugins / "plugin.py", "");
    const auto plain = make_instance(m_plugins, "plugin.py", python_row());
    const qiro_plugin_callback callback{};
    EXPECT_DEATH(plain->run_callback(plain->alloc_qiro_plugin_message(nullptr, 0), callback, {}),
                 "failed assertion `p_impl->m_plugin_preference_data.m_callback'");
    EXPECT_DEATH(plain->run_preference(nullptr),
                 "failed assertion `p_impl->m_plugin_preference_data.m_preference'");
}

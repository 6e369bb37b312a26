#include "runtime/runtime_fixture.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace qiro_plugin;
using qiro_test::write_file;

namespace {

class script_instance : public qiro_test::runtime_fixture {};

class other_message : public abstract_qiro_plugin_message {};

} // namespace

// A missing file's load error is checked with the syntax check, which must keep it.
TEST_F(script_instance, loads_only_existing_files_that_end_in_the_language_extension) {
    write_file(m_plugins / ".py", "");
    write_file(m_plugins / "script.PY", "");
    const auto bare_extension = make_instance(m_plugins, ".py");
    EXPECT_FALSE(bare_extension->is_load());
    EXPECT_TRUE(bare_extension->get_load_error_message().empty());
    EXPECT_TRUE(make_instance(m_plugins, "script.PY")->is_load());
}

TEST_F(script_instance, short_name_is_the_name_cut_after_sixteen_units) {
    const std::pair<std::string, std::u16string> rows[] = {
        {"<name>abcdefghijklmnopq</name>", u"abcdefghijklmno…"},
        {"<name>あいうえおかきくけこさしすせそた</name>", u"あいうえおかきくけこさしすせそた"},
        {"<name>abcdefghijklmnopq</name><name_short>s</name_short>", u"s"},
    };
    write_file(m_plugins / "plugin.py", "");
    for (const auto& [elements, short_name] : rows) {
        write_file(m_plugins / "plugin.xml",
                   "<?xml version=\"1.0\" encoding=\"UTF-8\" ?><plugin>" + elements + "</plugin>");
        EXPECT_EQ(make_instance(m_plugins, "plugin.py")->run_get_short_name(), short_name);
    }
}

TEST_F(script_instance, unsupported_operations_throw_their_texts) {
    using ::testing::ThrowsMessage;
    write_file(m_plugins / "plugin.py", "");
    const auto instance = make_instance(m_plugins, "plugin.py");
    const auto message = instance->alloc_qiro_plugin_message(nullptr, 0);
    const auto other = std::make_shared<other_message>();
    const qiro_plugin_request request{};
    const auto text = [](const std::string& a_text) {
        return ThrowsMessage<std::runtime_error>("qiro_plugin_instance_script::" + a_text);
    };
    EXPECT_THAT([&] { instance->get_plugin_receive_palette_data(message); },
                text("set_plugin_request_data() : fault."));
    EXPECT_THAT([&] { instance->set_plugin_request_data(message, request); },
                text("set_plugin_request_data() : fault."));
    EXPECT_THAT([&] { instance->set_quit_request_for_palette(); },
                text("set_quit_request_for_palette() : fault."));
    EXPECT_THAT([&] { instance->get_plugin_receive_data(nullptr, 0, 0); },
                text("get_plugin_receive_data() : fault1."));
    EXPECT_THAT([&] { instance->get_plugin_receive_data(other, 0, 0); },
                text("get_plugin_receive_data() : fault2."));
    EXPECT_THAT([&] { instance->run_processing(nullptr, request, {}); },
                text("run_processing() : fault1."));
    EXPECT_THAT([&] { instance->run_processing(other, request, {}); },
                text("run_processing() : fault2."));
    // Both were refused before anything ran.
    EXPECT_TRUE(instance->get_last_std_output_string().empty());
    EXPECT_TRUE(bridge_files().empty());
}

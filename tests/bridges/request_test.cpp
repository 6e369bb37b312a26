#include "bridge_runner.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace qiro_plugin::test {
namespace {

using ::testing::HasSubstr;

const std::string k_header = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n\n<itemlist>\n";
const std::string k_footer = "</itemlist>\n";

std::string titled(const std::string& a_title) {
    return "\t<item type=\"script_candidate\">\n"
           "\t\t<title>" +
           a_title +
           "</title>\n"
           "\t</item>\n";
}

const std::string k_port_item = "\t<item type=\"script_candidate\">\n"
                                "\t\t<title>proxy_port=8080</title>\n"
                                "\t\t<info>integer</info>\n"
                                "\t</item>\n";

class bridge_request : public ::testing::TestWithParam<language> {
protected:
    bridge_request() : m_bridge(GetParam()) {}

    bool is(const char* a_name) const { return std::string(GetParam().name) == a_name; }

    // The values the host passes for one processing run; the port goes as plain digits.
    std::vector<std::string> process_values(const std::string& a_method,
                                            const std::string& a_port) const {
        return {encoded(fixture(GetParam(), "request_echo").string()),
                a_method,
                encoded("a b+c"),
                encoded("\xE3\x82\x88\xE3\x81\xBF\"'"), // よみ"'
                encoded("proxy.example"),
                a_port,
                encoded("\xFFok"),
                encoded("p&ss\"word")};
    }

    bridge_folder m_bridge;
};

TEST_P(bridge_request, run_process_receives_every_value_decoded) {
    auto values = process_values("run_process", "8080");
    const std::string items_before_path = titled("composition_string=a b+c");
    const std::string items_after_path = titled("proxy_name=proxy.example") +
                                         titled("proxy_password=p&amp;ss&quot;word") + k_port_item +
                                         // An invalid byte arrives as U+FFFD.
                                         titled("proxy_username=\xEF\xBF\xBDok") +
                                         titled("reading_string=\xE3\x82\x88\xE3\x81\xBF"
                                                "&quot;&apos;");

    const auto without_path = m_bridge.run(values);
    EXPECT_EQ(without_path.out, k_header + items_before_path + items_after_path + k_footer);
    EXPECT_EQ(without_path.err, "");

    values.push_back(encoded("/tmp/settings folder/+plus"));
    const auto with_path = m_bridge.run(values);
    EXPECT_EQ(with_path.out, k_header + items_before_path +
                                 titled("path=/tmp/settings folder/+plus") + items_after_path +
                                 k_footer);

    // Present but empty still counts as present.
    values.back() = "";
    const auto empty_path = m_bridge.run(values);
    EXPECT_EQ(empty_path.out,
              k_header + items_before_path + titled("path=") + items_after_path + k_footer);
}

TEST_P(bridge_request, port_must_be_plain_digits) {
    // %38%30 is what url_encode makes of "80"; only Perl decodes the port.
    const auto output = m_bridge.run(process_values("run_process", "%38%30"));
    if (is("python")) {
        EXPECT_EQ(output.out, "");
        EXPECT_THAT(output.err, HasSubstr("ValueError"));
        return;
    }
    const std::string port = is("perl") ? "80" : "0";
    EXPECT_EQ(output.out,
              k_header + titled("composition_string=a b+c") + titled("proxy_name=proxy.example") +
                  titled("proxy_password=p&amp;ss&quot;word") +
                  "\t<item type=\"script_candidate\">\n"
                  "\t\t<title>proxy_port=" +
                  port +
                  "</title>\n"
                  "\t\t<info>integer</info>\n"
                  "\t</item>\n" +
                  titled("proxy_username=\xEF\xBF\xBDok") +
                  titled("reading_string=\xE3\x82\x88\xE3\x81\xBF&quot;&apos;") + k_footer);
}

TEST_P(bridge_request, run_callback_and_run_preference_requests) {
    auto values = process_values("run_callback", "8080");
    values[2] = encoded("\xE5\x80\x99\xE8\xA3\x9C 1"); // 候補 1
    values[3] = encoded("a+b");
    // Ruby hands the plug-in the bytes as they came; the others decode them as UTF-8.
    const std::string common = std::string("proxy_name=proxy.example;proxy_password=p&ss\"word;"
                                           "proxy_port=8080;proxy_username=") +
                               (is("ruby") ? "\xFFok" : "\xEF\xBF\xBDok");
    const auto callback = m_bridge.run(values);
    EXPECT_EQ(callback.out, "run_callback:candidate_string=\xE5\x80\x99\xE8\xA3\x9C 1;"
                            "composition_string=a+b;" +
                                common);
    EXPECT_EQ(callback.err, "");

    values.push_back("");
    const auto callback_with_path = m_bridge.run(values);
    EXPECT_EQ(callback_with_path.out,
              "run_callback:candidate_string=\xE5\x80\x99\xE8\xA3\x9C 1;composition_string=a+b;"
              "path=;" +
                  common);

    const auto preference =
        m_bridge.run({values[0], "run_preference", encoded("/home/u/\xE8\xA8\xAD\xE5\xAE\x9A x")});
    EXPECT_EQ(preference.out, "run_preference:path=/home/u/\xE8\xA8\xAD\xE5\xAE\x9A x");
    EXPECT_EQ(preference.err, "");
}

TEST_P(bridge_request, plugin_path_with_blanks_plus_signs_and_an_upper_case_extension) {
    const auto folder = m_bridge.path() / "plug ins+\xE6\x97\xA5\xE6\x9C\xAC";
    std::filesystem::create_directory(folder);
    std::string extension = GetParam().extension;
    for (auto& letter : extension) {
        letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    }
    const auto plugin = folder / ("Echo plug-in." + extension);
    std::filesystem::copy_file(fixture(GetParam(), "request_echo"), plugin);

    auto values = process_values("run_process", "8080");
    values[0] = encoded(plugin.string());
    const auto output = m_bridge.run(values);
    EXPECT_TRUE(output.out.starts_with(k_header + titled("composition_string=a b+c")))
        << output.out << output.err;
    EXPECT_EQ(output.err, "");

    // Loading leaves nothing beside the plug-in (no compiled cache).
    std::size_t entries = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) {
        ++entries;
    }
    EXPECT_EQ(entries, 1U);
}

INSTANTIATE_TEST_SUITE_P(bridges, bridge_request, ::testing::ValuesIn(all_languages()),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

} // namespace
} // namespace qiro_plugin::test

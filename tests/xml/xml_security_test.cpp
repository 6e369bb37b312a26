#include "xml/script_load.hpp"
#include "xml/xml_access_utility.hpp"

#include <gtest/gtest.h>

#include <sys/inotify.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

using namespace xml_access_library;
using qiro_plugin::utf16_string;

namespace {

const std::string k_marker = "SECRET-MARKER-5f3a";

// A file holding the marker, and a watch that records every open or read of it.
class watched_file {
public:
    watched_file() {
        char pattern[] = "/tmp/qiro_xml_entity_XXXXXX";
        const int descriptor = mkstemp(pattern);
        EXPECT_GE(descriptor, 0);
        m_path = pattern;
        const std::string content = "<x>" + k_marker + "</x>";
        EXPECT_EQ(write(descriptor, content.data(), content.size()),
                  static_cast<ssize_t>(content.size()));
        close(descriptor);
        m_watch = inotify_init1(IN_NONBLOCK);
        EXPECT_GE(m_watch, 0);
        EXPECT_GE(inotify_add_watch(m_watch, m_path.c_str(), IN_OPEN | IN_ACCESS), 0);
    }
    ~watched_file() {
        close(m_watch);
        std::filesystem::remove(m_path);
    }
    watched_file(const watched_file&) = delete;
    watched_file& operator=(const watched_file&) = delete;

    const std::string& path() const { return m_path; }
    bool was_touched() const {
        alignas(inotify_event) char buffer[4096];
        return read(m_watch, buffer, sizeof buffer) > 0;
    }

private:
    std::string m_path;
    int m_watch = -1;
};

std::string billion_laughs() {
    std::string document = "<?xml version=\"1.0\"?>\n<!DOCTYPE lolz [\n<!ENTITY lol \"lol\">\n";
    for (int level = 1; level <= 9; ++level) {
        document += "<!ENTITY lol" + std::to_string(level) + " \"";
        const std::string previous = level == 1 ? "lol" : "lol" + std::to_string(level - 1);
        for (int i = 0; i < 10; ++i) {
            document += "&" + previous + ";";
        }
        document += "\">\n";
    }
    return document;
}

// Reads the document the way a reader would and gathers every text and attribute it yields.
std::string everything_read(const std::string& a_document, bool& a_parsed) {
    xml_access_utility access(a_document);
    std::string seen;
    try {
        const auto root = access.get_root_node();
        const auto all = access.get_node_list_by_name_tag(*root, u"item");
        for (unsigned int i = 0; i < access.get_node_list_length(*all); ++i) {
            const auto item = access.get_node_by_node_list(*all, i);
            for (const utf16_string& text :
                 {access.get_node_text(*item), access.get_node_attribute_text(*item, u"type")}) {
                seen += std::string(text.begin(), text.end());
            }
        }
        a_parsed = true;
    } catch (const std::runtime_error&) {
        a_parsed = false;
    }
    return seen;
}

} // namespace

TEST(xml_security, entity_amplification_is_refused) {
    const std::string prologue = billion_laughs();
    for (const char* body : {"]>\n<itemlist><item type=\"script_candidate\">&lol9;</item>"
                             "</itemlist>",
                             "]>\n<itemlist><item type=\"&lol9;\">x</item></itemlist>"}) {
        SCOPED_TRACE(body);
        bool parsed = false;
        const std::string seen = everything_read(prologue + body, parsed);
        EXPECT_FALSE(parsed);
        EXPECT_EQ(seen.find("lollol"), std::string::npos);
        script_load reader(prologue + body);
        EXPECT_FALSE(reader.parse());
    }
}

TEST(xml_security, external_entities_and_subsets_are_never_read) {
    const watched_file file;
    const std::string url = "file://" + file.path();
    const std::string documents[] = {
        "<!DOCTYPE itemlist [<!ENTITY ext SYSTEM \"" + url +
            "\">]>"
            "<itemlist><item type=\"script_candidate\">&ext;<title>&ext;</title></item></itemlist>",
        "<!DOCTYPE itemlist [<!ENTITY ext SYSTEM \"" + file.path() +
            "\">]>"
            "<itemlist><item type=\"script_candidate\"><title>&ext;</title></item></itemlist>",
        "<!DOCTYPE itemlist [<!ENTITY % ext SYSTEM \"" + url +
            "\"> %ext;]>"
            "<itemlist><item type=\"script_candidate\"><title>t</title></item></itemlist>",
        "<!DOCTYPE itemlist SYSTEM \"" + url +
            "\">"
            "<itemlist><item type=\"script_candidate\"><title>t</title></item></itemlist>",
        "<itemlist xmlns:xi=\"http://www.w3.org/2001/XInclude\"><item type=\"script_candidate\">"
        "<title><xi:include href=\"" +
            url + "\" parse=\"text\"/></title></item></itemlist>",
    };
    for (const auto& document : documents) {
        SCOPED_TRACE(document);
        bool parsed = false;
        const std::string seen = everything_read(document, parsed);
        EXPECT_EQ(seen.find(k_marker), std::string::npos);
        script_load reader(document);
        if (reader.parse()) {
            for (const auto& candidate : reader.get_candidate_data_array()) {
                EXPECT_EQ(
                    std::string(candidate.title.begin(), candidate.title.end()).find(k_marker),
                    std::string::npos);
            }
        }
        EXPECT_FALSE(file.was_touched());
    }
    // The watch itself works: reading the file is seen.
    std::ifstream(file.path()).get();
    EXPECT_TRUE(file.was_touched());
}

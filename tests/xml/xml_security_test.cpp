#include "xml/script_load.hpp"

#include <gtest/gtest.h>

#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

using xml_access_library::script_load;

TEST(xml_security, entity_amplification_is_refused) {
    std::string prologue = "<?xml version=\"1.0\"?>\n<!DOCTYPE lolz [\n<!ENTITY lol0 \"lol\">\n";
    for (int level = 1; level <= 9; ++level) {
        prologue += "<!ENTITY lol" + std::to_string(level) + " \"";
        for (int i = 0; i < 10; ++i) {
            prologue += "&lol" + std::to_string(level - 1) + ";";
        }
        prologue += "\">\n";
    }
    for (const char* body :
         {"]><itemlist><item type=\"script_candidate\"><title>&lol9;</title></item></itemlist>",
          "]><itemlist><item type=\"&lol9;\"><title>x</title></item></itemlist>"}) {
        SCOPED_TRACE(body);
        script_load reader(prologue + body);
        EXPECT_FALSE(reader.parse());
    }
}

TEST(xml_security, external_entities_and_subsets_are_never_read) {
    char path[] = "/tmp/qiro_xml_entity_XXXXXX";
    const int descriptor = mkstemp(path);
    ASSERT_GE(descriptor, 0);
    close(descriptor);
    std::ofstream(path) << "<x>secret</x>";
    // The watch records every open or read of the file: a file never read cannot leak.
    const int watch = inotify_init1(IN_NONBLOCK);
    EXPECT_GE(inotify_add_watch(watch, path, IN_OPEN | IN_ACCESS), 0);
    const auto touched = [watch] {
        alignas(inotify_event) char buffer[4096];
        return read(watch, buffer, sizeof buffer) > 0;
    };

    const std::string url = "file://" + std::string(path);
    const std::string item = "<item type=\"script_candidate\"><title>";
    const std::string end = "</title></item></itemlist>";
    for (const std::string& document :
         {"<!DOCTYPE itemlist [<!ENTITY ext SYSTEM \"" + url + "\">]><itemlist>" + item + "&ext;" +
              end,
          "<!DOCTYPE itemlist [<!ENTITY ext SYSTEM \"" + std::string(path) + "\">]><itemlist>" +
              item + "&ext;" + end,
          "<!DOCTYPE itemlist [<!ENTITY % ext SYSTEM \"" + url + "\"> %ext;]><itemlist>" + item +
              "t" + end,
          "<!DOCTYPE itemlist SYSTEM \"" + url + "\"><itemlist>" + item + "t" + end,
          "<itemlist xmlns:xi=\"http://www.w3.org/2001/XInclude\">" + item + "<xi:include href=\"" +
              url + "\" parse=\"text\"/>" + end}) {
        SCOPED_TRACE(document);
        // Refusing the document and reading it without the entity are both safe.
        script_load(document).parse();
        EXPECT_FALSE(touched());
    }
    // The watch itself works: reading the file is seen.
    std::ifstream(path).get();
    EXPECT_TRUE(touched());
    close(watch);
    std::filesystem::remove(path);
}

#include "support/scratch_folder.hpp"
#include "xml/script_load.hpp"

#include <gtest/gtest.h>

#include <sys/inotify.h>
#include <unistd.h>

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
    const test_support::scratch_folder scratch;
    const std::string path = (scratch.path() / "secret.xml").string();
    test_support::write_file(path, "<x>secret</x>");
    // The watch records every open or read of the file: a file never read cannot leak.
    const int watch = inotify_init1(IN_NONBLOCK);
    EXPECT_GE(inotify_add_watch(watch, path.c_str(), IN_OPEN | IN_ACCESS), 0);
    const auto touched = [watch] {
        alignas(inotify_event) char buffer[4096];
        return read(watch, buffer, sizeof buffer) > 0;
    };

    const std::string url = "file://" + path;
    const auto with = [](const std::string& a_prologue, const std::string& a_title) {
        return a_prologue + "<itemlist><item type=\"script_candidate\"><title>" + a_title +
               "</title></item></itemlist>";
    };
    for (const std::string& document :
         {with("<!DOCTYPE itemlist [<!ENTITY ext SYSTEM \"" + url + "\">]>", "&ext;"),
          with("<!DOCTYPE itemlist [<!ENTITY ext SYSTEM \"" + path + "\">]>", "&ext;"),
          with("<!DOCTYPE itemlist [<!ENTITY % ext SYSTEM \"" + url + "\"> %ext;]>", "t"),
          with("<!DOCTYPE itemlist SYSTEM \"" + url + "\">", "t"),
          with("", "<xi:include xmlns:xi=\"http://www.w3.org/2001/XInclude\" href=\"" + url +
                       "\" parse=\"text\"/>")}) {
        SCOPED_TRACE(document);
        // Refusing the document and reading it without the entity are both safe.
        script_load(document).parse();
        EXPECT_FALSE(touched());
    }
    // The watch itself works: reading the file is seen.
    test_support::read_file(path);
    EXPECT_TRUE(touched());
    close(watch);
}

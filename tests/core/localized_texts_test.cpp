#include "core/localized_texts.hpp"
#include "platform/localized_string.hpp"

#include <gtest/gtest.h>

#include <set>

namespace qiro_plugin::debugger {
namespace {

// The alerts' own texts are checked through qiro-lumen, which prints them.
TEST(localized_texts, every_key_has_both_texts_and_reaches_the_process_wide_lookup) {
    std::set<std::string_view> keys;
    for (const auto& entry : localized_text_table()) {
        EXPECT_TRUE(keys.insert(entry.key).second) << entry.key;
        EXPECT_FALSE(entry.english.empty()) << entry.key;
        EXPECT_FALSE(entry.japanese.empty()) << entry.key;
        EXPECT_NE(localized_text(entry.key, text_language::english),
                  localized_text(entry.key, text_language::japanese));
    }
    EXPECT_EQ(keys.count("keyDeleteX"), 1U) << "the key table names its keys through it";
    EXPECT_TRUE(localized_text("NoSuchKey", text_language::english).empty());

    install_localized_text_provider(text_language::japanese);
    EXPECT_EQ(utility::localized_string(ALERT_EMPTY_HYOKI),
              localized_text(ALERT_EMPTY_HYOKI, text_language::japanese));
    EXPECT_TRUE(utility::localized_string("NoSuchKey").empty());
    // The data folder's errors carry a number after a common beginning.
    EXPECT_EQ(run_error_hint("utility::get_qiro_user_folder() call error1"),
              localized_text(HINT_DATA_FOLDER_MISSING, text_language::japanese));
    EXPECT_TRUE(run_error_hint("qiro_plugin_instance_script::run_processing() : fault1.").empty());
    utility::set_localized_string_provider({});
}

} // namespace
} // namespace qiro_plugin::debugger

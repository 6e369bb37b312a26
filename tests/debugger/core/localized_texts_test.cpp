#include "debugger/core/localized_texts.hpp"
#include "platform/localized_string.hpp"

#include <gtest/gtest.h>

#include <set>

namespace qiro_plugin::debugger {
namespace {

TEST(localized_texts, every_key_has_both_texts_and_reaches_the_process_wide_lookup) {
    std::set<std::string_view> keys;
    for (const auto& entry : localized_text_table()) {
        EXPECT_TRUE(keys.insert(entry.key).second) << entry.key;
        EXPECT_FALSE(entry.english.empty()) << entry.key;
        EXPECT_FALSE(entry.japanese.empty()) << entry.key;
        EXPECT_NE(localized_text(entry.key, text_language::english),
                  localized_text(entry.key, text_language::japanese));
    }
    for (const char* key : {ALERT_RELOAD_ERROR, ALERT_EMPTY_HYOKI, ALERT_TOO_LONG_HYOKI,
                            ALERT_RUN_DEBUG_ERROR, "keyDeleteX"}) {
        EXPECT_EQ(keys.count(key), 1U) << key;
    }
    EXPECT_TRUE(localized_text("NoSuchKey", text_language::english).empty());

    install_localized_text_provider(text_language::japanese);
    EXPECT_EQ(utility::localized_string(ALERT_EMPTY_HYOKI),
              localized_text(ALERT_EMPTY_HYOKI, text_language::japanese));
    EXPECT_TRUE(utility::localized_string("NoSuchKey").empty());
    utility::set_localized_string_provider({});
}

TEST(localized_texts, run_errors_the_author_can_act_on_get_a_hint) {
    install_localized_text_provider(text_language::english);
    for (const auto& [error, hint] :
         {std::pair{"::MultiByteUTF8ToWideChar() : failed", HINT_OUTPUT_NOT_UTF8},
          std::pair{"script_file_access::script_file_access() : fault.",
                    HINT_BRIDGE_FILE_NOT_WRITTEN},
          std::pair{"utility::get_qiro_user_folder() call error2", HINT_DATA_FOLDER_MISSING},
          std::pair{"qiro_plugin_instance_script::run_processing() : fault1.", ""},
          std::pair{"", ""}}) {
        EXPECT_EQ(run_error_hint(error),
                  *hint ? localized_text(hint, text_language::english) : utf16_string{})
            << error;
    }
    utility::set_localized_string_provider({});
}

} // namespace
} // namespace qiro_plugin::debugger

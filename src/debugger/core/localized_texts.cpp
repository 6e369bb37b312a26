#include "debugger/core/localized_texts.hpp"

#include "platform/localized_string.hpp"
#include "text/string_encode.hpp"

#include <array>
#include <cstdlib>

namespace qiro_plugin::debugger {

namespace {

constexpr std::array<localized_text_entry, 5> table{{
    {ALERT_RELOAD_ERROR, "No plug-in file (.pl, .py or .rb) was found in the plugin folder.",
     "plugin フォルダにプラグインファイル（.pl、.py、.rb）が見つかりませんでした。"},
    {ALERT_EMPTY_HYOKI, "Enter the written form (hyoki) to hand to the plug-in.",
     "プラグインに渡す表記を入力してください。"},
    {ALERT_TOO_LONG_HYOKI, "The written form is too long: at most 100 UTF-16 code units.",
     "表記が長すぎます。UTF-16 で 100 単位までにしてください。"},
    {ALERT_RUN_DEBUG_ERROR, "The plug-in run ended with an error.",
     "プラグインの実行中にエラーが発生しました。"},
    {"keyDeleteX", "Forward Delete", "前方削除"},
}};

} // namespace

std::span<const localized_text_entry> localized_text_table() {
    return table;
}

utf16_string localized_text(std::string_view a_key, text_language a_language) {
    for (const auto& entry : table) {
        if (entry.key == a_key) {
            const std::string text(a_language == text_language::japanese ? entry.japanese
                                                                         : entry.english);
            return string_encode::MultiByteUTF8ToWideChar(text.c_str());
        }
    }
    return {};
}

text_language language_from_environment() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') {
            return std::string_view(value).starts_with("ja") ? text_language::japanese
                                                             : text_language::english;
        }
    }
    return text_language::english;
}

void install_localized_text_provider(text_language a_language) {
    utility::set_localized_string_provider(
        [a_language](const std::string& a_key) { return localized_text(a_key, a_language); });
}

} // namespace qiro_plugin::debugger

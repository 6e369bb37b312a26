#include "core/localized_texts.hpp"

#include "platform/localized_string.hpp"
#include "text/string_encode.hpp"

#include <array>
#include <atomic>
#include <cstdlib>

namespace qiro_plugin::debugger {

namespace {

constexpr std::array<localized_text_entry, 22> table{{
    {ALERT_RELOAD_ERROR, "No plug-in file (.pl, .py or .rb) was found in the plugin folder.",
     "plugin フォルダにプラグインファイル（.pl、.py、.rb）が見つかりませんでした。"},
    {ALERT_EMPTY_HYOKI, "Enter the written form (hyoki) to hand to the plug-in.",
     "プラグインに渡す表記を入力してください。"},
    {ALERT_TOO_LONG_HYOKI, "The written form is too long: at most 100 UTF-16 code units.",
     "表記が長すぎます。UTF-16 で 100 単位までにしてください。"},
    {ALERT_RUN_DEBUG_ERROR, "The plug-in run ended with an error.",
     "プラグインの実行中にエラーが発生しました。"},
    {"keyDeleteX", "Forward Delete", "前方削除"},
    {HINT_OUTPUT_NOT_UTF8,
     "The interpreter printed bytes that are not UTF-8, for example text the plug-in printed in "
     "Shift_JIS or EUC-JP. Print UTF-8 only.",
     "インタプリタが UTF-8 でないバイト列を出力しました（プラグインが Shift_JIS や EUC-JP "
     "で出力した文字など）。UTF-8 だけを出力してください。"},
    {HINT_BRIDGE_FILE_NOT_WRITTEN,
     "The bridge script could not be written to the data folder ~/Library/Preferences/QIRO "
     "Lumen/. Check that the folder is writable and holds no file of the same name.",
     "データフォルダ ~/Library/Preferences/QIRO Lumen/ にブリッジスクリプトを書き込めません"
     "でした。フォルダに書き込めること、同じ名前のファイルがないことを確かめてください。"},
    {HINT_DATA_FOLDER_MISSING,
     "The data folder ~/Library/Preferences/QIRO Lumen/ could not be found or created.",
     "データフォルダ ~/Library/Preferences/QIRO Lumen/ が見つからず、作ることもできませんでした。"},
    {HINT_TEXT_NOT_CONVERTIBLE,
     "A text holds a broken UTF-16 sequence (a lone surrogate) and cannot be passed on.",
     "UTF-16 として壊れた文字（対になっていないサロゲート）を含むテキストは渡せません。"},
    {HINT_DOCUMENT_TOO_LONG,
     "A document is longer than 10,485,760 bytes, the most one may hold: the run's output "
     "(what the plug-in printed comes first in it), or the plug-in's companion .xml.",
     "文書が上限の 10,485,760 バイトを超えています。実行の出力（プラグインが出力した文字も"
     "含みます）か、プラグインと対になる .xml のどちらかです。"},
    {TEXT_RUN_ONE_CANDIDATE, "%1 ran as %2: %3 candidate (syntax check %4 ms, run %5 ms).",
     "%1 を %2 で実行しました: 候補 %3 件（文法チェック %4 ms、実行 %5 ms）。"},
    {TEXT_RUN_CANDIDATES, "%1 ran as %2: %3 candidates (syntax check %4 ms, run %5 ms).",
     "%1 を %2 で実行しました: 候補 %3 件（文法チェック %4 ms、実行 %5 ms）。"},
    {TEXT_RUN_NO_DOCUMENT, "%1 ran as %2, but its output is not a result document: see the panes.",
     "%1 を %2 で実行しましたが、出力が結果文書ではありません。出力枠を見てください。"},
    {TEXT_CALLBACK_RAN, "The callback ran as %1 in %2 ms: see the panes.",
     "コールバックを %1 で実行しました（%2 ms）。出力枠を見てください。"},
    {TEXT_PREFERENCE_RAN, "The preference entry ran as %1 in %2 ms: see the panes.",
     "設定エントリを %1 で実行しました（%2 ms）。出力枠を見てください。"},
    {TEXT_RUN_NOT_RUN, "no language could run %1 (see the standard-error pane above)",
     "%1 を実行できる言語がありませんでした（標準エラー出力を見てください）"},
    {TEXT_CALLBACK_NOT_OFFERED,
     "%1 offers no callback: its preference document (the .xml file beside it) must hold "
     "<callback>true</callback>",
     "%1 はコールバックを提供していません。隣の .xml ファイル（設定文書）に "
     "<callback>true</callback> が必要です"},
    {TEXT_PREFERENCE_NOT_OFFERED,
     "%1 offers no preference entry: its preference document (the .xml file beside it) must "
     "hold <preference>true</preference>",
     "%1 は設定エントリを提供していません。隣の .xml ファイル（設定文書）に "
     "<preference>true</preference> が必要です"},
    {TEXT_RUN_ERROR, "the run ended with an error: %1", "実行がエラーで終わりました: %1"},
    {TEXT_RUN_ALERTED, "the input was refused (%1)", "入力が受け付けられませんでした（%1）"},
    {TEXT_RUN_REFUSED, "%1", "%1（実行しませんでした）"},
    {TEXT_RUN_SANDBOX_REFUSED, "not run: %1", "実行しませんでした: %1"},
}};

std::atomic<text_language> installed_language{text_language::english};

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

utf16_string run_error_hint(const std::string& a_error) {
    // The error texts are the system's own; each maps to what an author can do about it.
    const char* key = nullptr;
    if (a_error == "::MultiByteUTF8ToWideChar() : failed") {
        key = HINT_OUTPUT_NOT_UTF8;
    } else if (a_error == "script_file_access::script_file_access() : fault.") {
        key = HINT_BRIDGE_FILE_NOT_WRITTEN;
    } else if (a_error.starts_with("utility::get_qiro_user_folder() call error")) {
        key = HINT_DATA_FOLDER_MISSING;
    } else if (a_error == "::WideCharToMultiByteShiftJis() : failed") {
        key = HINT_TEXT_NOT_CONVERTIBLE;
    } else if (a_error == "xml_access_utility_impl::xml_access_utility_impl() : failed") {
        key = HINT_DOCUMENT_TOO_LONG;
    }
    return key == nullptr ? utf16_string() : utility::localized_string(key);
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
    installed_language = a_language;
    utility::set_localized_string_provider(
        [a_language](const std::string& a_key) { return localized_text(a_key, a_language); });
}

} // namespace qiro_plugin::debugger

namespace qiro_plugin::debugger {

text_language installed_text_language() {
    return installed_language;
}

} // namespace qiro_plugin::debugger

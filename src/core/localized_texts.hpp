#pragma once
// The one table of user-visible texts of both front ends, in English and Japanese, by key.

#include "text/utf16_string.hpp"

#include <span>
#include <string>
#include <string_view>

namespace qiro_plugin::debugger {

inline constexpr const char* ALERT_RELOAD_ERROR = "AlertReloadError";
inline constexpr const char* ALERT_EMPTY_HYOKI = "AlertEmptyHyoki";
inline constexpr const char* ALERT_TOO_LONG_HYOKI = "AlertTooLongHyoki";
inline constexpr const char* ALERT_RUN_DEBUG_ERROR = "AlertRunDebugError";
inline constexpr const char* HINT_OUTPUT_NOT_UTF8 = "HintOutputNotUtf8";
inline constexpr const char* HINT_BRIDGE_FILE_NOT_WRITTEN = "HintBridgeFileNotWritten";
inline constexpr const char* HINT_DATA_FOLDER_MISSING = "HintDataFolderMissing";
inline constexpr const char* HINT_TEXT_NOT_CONVERTIBLE = "HintTextNotConvertible";
inline constexpr const char* HINT_DOCUMENT_TOO_LONG = "HintDocumentTooLong";
// What a run's verdict says (see run_verdict.hpp); %1, %2, ... stand for its values.
inline constexpr const char* TEXT_RUN_ONE_CANDIDATE = "RunOneCandidate";
inline constexpr const char* TEXT_RUN_CANDIDATES = "RunCandidates";
inline constexpr const char* TEXT_RUN_NO_DOCUMENT = "RunNoDocument";
inline constexpr const char* TEXT_CALLBACK_RAN = "CallbackRan";
inline constexpr const char* TEXT_PREFERENCE_RAN = "PreferenceRan";
inline constexpr const char* TEXT_RUN_NOT_RUN = "RunNotRun";
inline constexpr const char* TEXT_CALLBACK_NOT_OFFERED = "CallbackNotOffered";
inline constexpr const char* TEXT_PREFERENCE_NOT_OFFERED = "PreferenceNotOffered";
inline constexpr const char* TEXT_RUN_ERROR = "RunError";
inline constexpr const char* TEXT_RUN_ALERTED = "RunAlerted";
inline constexpr const char* TEXT_RUN_REFUSED = "RunRefused";
inline constexpr const char* TEXT_RUN_SANDBOX_REFUSED = "RunSandboxRefused";

enum class text_language { english, japanese };

// One key with its texts, UTF-8.
struct localized_text_entry {
    std::string_view key;
    std::string_view english;
    std::string_view japanese;
};

// Every key a front end must be able to answer, in a fixed order (the Qt window generates its
// translation sources from it).
std::span<const localized_text_entry> localized_text_table();

// The text of the key in the language; empty for an unknown key.
utf16_string localized_text(std::string_view a_key, text_language a_language);

// Japanese when the locale variables (LC_ALL, then LC_MESSAGES, then LANG) name it, else English.
text_language language_from_environment();

// What an exception text that ended a run means for the plug-in author, in the installed
// language; empty for texts without advice.
utf16_string run_error_hint(const std::string& a_error);

// Installs the table as the process-wide lookup behind utility::localized_string.
void install_localized_text_provider(text_language a_language);

// The language last installed (English before any), which the diagnosis writes in too.
text_language installed_text_language();

} // namespace qiro_plugin::debugger

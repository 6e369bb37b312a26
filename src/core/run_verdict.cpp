#include "core/run_verdict.hpp"

#include "text/string_encode.hpp"
#include "text/utf8_text.hpp"

#include <cstdio>

namespace qiro_plugin::debugger {

namespace {

using kind = run_verdict::kind;
using level = run_verdict::level;
using diagnosis::entry_kind;

std::string milliseconds(double a_value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.0f", a_value);
    return text;
}

run_verdict make(kind a_what, level a_severity, const char* a_key,
                 std::vector<std::string> a_arguments) {
    run_verdict verdict;
    verdict.what = a_what;
    verdict.severity = a_severity;
    verdict.key = a_key;
    verdict.arguments = std::move(a_arguments);
    return verdict;
}

} // namespace

run_verdict judge_run(const run_report& a_report, entry_kind a_entry,
                      const utf16_string& a_file_name) {
    const std::string file = string_encode::to_utf8_marked(a_file_name);
    const std::string language = string_encode::to_utf8_marked(a_report.module_type.value_or(u""));
    const bool callback = a_entry == entry_kind::callback;
    switch (a_report.result) {
    case run_report::outcome::completed:
        if (a_entry != entry_kind::processing) {
            return make(kind::entry_ran, level::success,
                        callback ? TEXT_CALLBACK_RAN : TEXT_PREFERENCE_RAN,
                        {language, milliseconds(a_report.run_ms)});
        }
        if (!a_report.document_parsed) {
            return make(kind::no_document, level::warning, TEXT_RUN_NO_DOCUMENT, {file, language});
        }
        return make(kind::candidates, level::success,
                    a_report.candidates.size() == 1 ? TEXT_RUN_ONE_CANDIDATE : TEXT_RUN_CANDIDATES,
                    {file, language, std::to_string(a_report.candidates.size()),
                     milliseconds(a_report.syntax_check_ms), milliseconds(a_report.run_ms)});
    case run_report::outcome::not_run:
        return make(kind::not_run, level::error, TEXT_RUN_NOT_RUN, {file});
    case run_report::outcome::entry_not_enabled:
        return make(kind::entry_not_offered, level::error,
                    callback ? TEXT_CALLBACK_NOT_OFFERED : TEXT_PREFERENCE_NOT_OFFERED, {file});
    case run_report::outcome::failed: {
        auto verdict = make(kind::run_error, level::error, TEXT_RUN_ERROR, {a_report.error});
        verdict.hint = run_error_hint(a_report.error);
        return verdict;
    }
    case run_report::outcome::refused:
        break;
    }
    if (a_report.sandbox_unavailable) {
        return make(kind::sandbox_refused, level::error, TEXT_RUN_SANDBOX_REFUSED,
                    {a_report.refusal});
    }
    if (!a_report.alert_key.empty()) {
        return make(kind::alerted, level::error, TEXT_RUN_ALERTED, {a_report.alert_key});
    }
    return make(kind::refused, level::error, TEXT_RUN_REFUSED, {a_report.refusal});
}

utf16_string verdict_text(const run_verdict& a_verdict, text_language a_language) {
    utf16_string text = localized_text(a_verdict.key, a_language);
    // From the last value down, so that %1 never eats the 1 of %10.
    for (std::size_t index = a_verdict.arguments.size(); index > 0; --index) {
        std::string marker(1, '%');
        marker += std::to_string(index);
        const utf16_string placeholder(marker.begin(), marker.end());
        const utf16_string value = string_encode::to_utf16_marked(a_verdict.arguments[index - 1]);
        for (auto at = text.find(placeholder); at != utf16_string::npos;
             at = text.find(placeholder, at + value.size())) {
            text.replace(at, placeholder.size(), value);
        }
    }
    return text;
}

} // namespace qiro_plugin::debugger

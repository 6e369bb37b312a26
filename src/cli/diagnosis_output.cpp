#include "cli/diagnosis_output.hpp"

#include <cstdio>

namespace qiro_plugin::cli {

namespace {

template <typename Value> nlohmann::ordered_json or_null(const std::optional<Value>& a_value) {
    return a_value ? nlohmann::ordered_json(*a_value) : nlohmann::ordered_json(nullptr);
}

} // namespace

void print_findings(std::ostream& a_out, const std::vector<diagnosis::finding>& a_findings) {
    for (const auto& item : a_findings) {
        std::string place = item.file ? *item.file : std::string("qiro-lumen");
        if (item.file && item.line) {
            place.append(":").append(std::to_string(*item.line));
            if (item.column) {
                place.append(":").append(std::to_string(*item.column));
            }
        }
        a_out << place << ": " << diagnosis::severity_name(item.level) << ": " << item.message
              << '\n';
        if (!item.hint.empty()) {
            std::string hint = "  " + item.hint;
            for (std::size_t at = hint.find('\n'); at != std::string::npos;
                 at = hint.find('\n', at + 3)) {
                hint.insert(at + 1, "  ");
            }
            a_out << hint << '\n';
        }
    }
    a_out.flush();
}

nlohmann::ordered_json diagnosis_json(const std::vector<diagnosis::finding>& a_findings) {
    auto items = nlohmann::ordered_json::array();
    for (const auto& item : a_findings) {
        nlohmann::ordered_json object;
        object["code"] = item.code;
        object["severity"] = std::string(diagnosis::severity_name(item.level));
        object["message"] = item.message;
        object["hint"] = item.hint;
        object["file"] = or_null(item.file);
        object["line"] = or_null(item.line);
        object["column"] = or_null(item.column);
        object["offset"] = or_null(item.offset);
        items.push_back(std::move(object));
    }
    return items;
}

std::string run_error_text(const debugger::run_report& a_report) {
    if (!a_report.error.empty() || !a_report.timed_out_after_s) {
        return a_report.error;
    }
    char text[64];
    std::snprintf(text, sizeof text, "timed out after %.1f s", *a_report.timed_out_after_s);
    return text;
}

} // namespace qiro_plugin::cli

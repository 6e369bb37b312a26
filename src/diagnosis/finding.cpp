#include "diagnosis/finding.hpp"

#include <algorithm>

namespace qiro_plugin::diagnosis {

std::string_view severity_name(severity a_severity) {
    switch (a_severity) {
    case severity::error:
        return "error";
    case severity::warning:
        return "warning";
    case severity::note:
        return "note";
    }
    return "error";
}

bool has_error(const std::vector<finding>& a_findings) {
    return std::any_of(a_findings.begin(), a_findings.end(),
                       [](const finding& a_finding) { return a_finding.level == severity::error; });
}

} // namespace qiro_plugin::diagnosis

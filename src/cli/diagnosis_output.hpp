#pragma once
// How the findings of a run are written: compiler-style lines, or the JSON member "diagnosis".

#include "core/run_report.hpp"

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>
#include <vector>

namespace qiro_plugin::cli {

// "FILE:LINE:COLUMN: SEVERITY: MESSAGE" per finding (unknown parts left out, the program's
// name standing in for a missing file), the hint indented on the lines after it.
void print_findings(std::ostream& a_out, const std::vector<diagnosis::finding>& a_findings);

// An array of objects with exactly code, severity, message, hint, file, line, column, offset.
nlohmann::ordered_json diagnosis_json(const std::vector<diagnosis::finding>& a_findings);

// The run's error in words: the exception's text, or the time-out ("timed out after 30.0 s").
std::string run_error_text(const debugger::run_report& a_report);

} // namespace qiro_plugin::cli

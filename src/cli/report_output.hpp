#pragma once
// How a run's report is written: one JSON object, or the panes and a readable candidate list.

#include "core/pane_text_sink.hpp"
#include "core/plugin_discovery.hpp"
#include "core/run_report.hpp"

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>

namespace qiro_plugin::cli {

// What the JSON object says about the command beside the report.
struct report_context {
    debugger::plugin_entry plugin;
    const std::string* candidate = nullptr;    // the callback's committed candidate
    const std::string* written_form = nullptr; // absent for the preference entry
    bool with_candidates = false;              // a processing run
};

// One object: plug-in, inputs, language, load error, both panes, the entry's own outputs,
// for a processing run the parse flag and candidates, the timings and the error. The panes and
// the entry's outputs are moved into it, not copied: a_panes and the report's run_std_output
// and run_std_error are left empty.
nlohmann::ordered_json report_json(const report_context& a_context, debugger::run_report& a_report,
                                   debugger::pane_text_sink& a_panes);

// The JSON text, invalid UTF-8 replaced, followed by a line end.
void print_json(std::ostream& a_out, const nlohmann::ordered_json& a_json);

// The standard-output pane on standard output, the standard-error pane on standard error.
void print_panes(const debugger::pane_text_sink& a_panes);

// The candidates one under another, with every field that is set.
void print_candidates(std::ostream& a_out, const debugger::run_report& a_report);

} // namespace qiro_plugin::cli

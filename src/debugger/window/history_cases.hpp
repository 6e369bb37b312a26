#pragma once
// Ties the history and Run on save to the Cases tab: a kept run saved as a case, cases re-run.

namespace qiro_plugin::debugger {

class cases_tab;
class folder_watch;
class history_panel;

// Adds "Save as case…" to the history list's context menu, and re-runs the cases after each
// run that Run on save started.
void connect_history_to_cases(history_panel& a_history, folder_watch& a_watch, cases_tab& a_cases);

} // namespace qiro_plugin::debugger

#pragma once
// The Cases tab in the window: beside the output, following the plug-in menu, fed by the
// history ("Save as Case…") and re-run by Run on save.

namespace qiro_plugin::debugger {

class cases_tab;
class ui_controller;
class workbench;

// Adds the Cases tab to the window's result tabs and ties it to the menu, the history and Run
// on save; the tab is the window's child.
cases_tab* add_cases_tab(ui_controller& a_controller, workbench& a_bench);

} // namespace qiro_plugin::debugger

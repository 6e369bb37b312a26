#pragma once
// Turning a plug-in file into a loaded, syntax-checked instance by trying each language.

#include "core/run_sinks.hpp"
#include "diagnosis/run_evidence.hpp"
#include "runtime/abstract_plugin_instance.hpp"
#include "runtime/plugin_instance_script.hpp"

#include <memory>

namespace qiro_plugin::debugger {

// What the attempts left behind, for reports.
struct instance_attempt_report {
    utf16_string load_error;      // the first load error text an attempt recorded
    double syntax_check_ms = 0.0; // time spent in syntax checks, all languages together
    // The interpreter of the last language whose file name matched, and its syntax check.
    std::string language;
    diagnosis::command_evidence syntax_check;
};

// What the instance's last command produced, as the diagnosis reads it; without the streams
// of a finished command when the caller lends them later.
diagnosis::command_evidence command_evidence_of(const qiro_plugin_instance_script& a_instance,
                                                bool a_with_streams);

// For Perl, Ruby, Python in turn: an instance that loads is syntax-checked, the check's
// outputs go to the panes, and the first that passes is returned; none gives an empty handle.
// Exceptions of construction and of the check reach the caller.
std::shared_ptr<qiro_plugin_instance_script>
make_script_instance(const utf16_string& a_folder, const utf16_string& a_file_name,
                     run_output_sink& a_sink, instance_attempt_report* a_report = nullptr);

// The same behind the plug-in interface, as the window's controller asks for it.
std::shared_ptr<abstract_qiro_plugin_instance>
get_script_instance_path(const utf16_string& a_folder, const utf16_string& a_file_name,
                         run_output_sink& a_sink, instance_attempt_report* a_report = nullptr);

// An instance a run drives, and the same object as a script instance, whose commands' outputs
// and reports the run reads; empty for instances of other kinds (tests' fakes).
struct made_instance {
    std::shared_ptr<abstract_qiro_plugin_instance> instance;
    std::shared_ptr<qiro_plugin_instance_script> script;
};

} // namespace qiro_plugin::debugger

#pragma once
// The run logic of the debugger, shared by the window and the command line.

#include "core/plugin_discovery.hpp"
#include "core/run_report.hpp"
#include "core/run_sinks.hpp"
#include "core/script_instance_factory.hpp"
#include "platform/sandbox.hpp"
#include "settings/manager_preference_access.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace qiro_plugin::debugger {

// The alert key for a written form that must not run ("AlertEmptyHyoki" for an empty one,
// "AlertTooLongHyoki" above 100 UTF-16 code units), or nothing when it may run.
std::optional<std::string> written_form_alert(const utf16_string& a_written_form);

// When the author-side probes run the plug-in a second time to see what its entry returned.
enum class probe_policy { after_failure, always, never };

class debug_runner {
public:
    using settings_reader = std::function<manager_preference_data()>;
    using instance_factory = std::function<std::shared_ptr<abstract_qiro_plugin_instance>(
        const utf16_string& a_folder, const utf16_string& a_file_name, run_output_sink& a_sink,
        instance_attempt_report* a_report)>;

    // Both sinks must outlive the runner.
    debug_runner(run_output_sink& a_sink, alert_sink& a_alerts);
    ~debug_runner();
    debug_runner(const debug_runner&) = delete;
    debug_runner& operator=(const debug_runner&) = delete;

    // Replace where settings and instances come from (the manager's settings and
    // get_script_instance_path unless set).
    void set_settings_reader(settings_reader a_reader);
    void set_instance_factory(instance_factory a_factory);
    // after_failure unless set: only a run that failed or returned no candidate is probed.
    void set_probe_policy(probe_policy a_policy);
    // off unless set. When on, every command of a run runs inside bubblewrap, and a run on a
    // machine where bubblewrap cannot confine it is refused, never run unconfined.
    void set_sandbox(utility::sandbox_mode a_mode);
    utility::sandbox_mode sandbox() const;

    // One processing run of the plug-in for the written form, as the plug-in manager would
    // do it: panes cleared, syntax check and run outputs appended, alerts for a refused
    // written form and for any exception. The reading is empty in the window.
    run_report run_debug(const utf16_string& a_written_form, const plugin_entry& a_plugin,
                         const utf16_string& a_reading = {});

    // The callback entry after a candidate was committed; refused (no process started for
    // the entry) when the plug-in's preference document does not enable it. A candidate
    // longer than 200 UTF-16 code units is refused.
    run_report run_callback(const utf16_string& a_candidate, const utf16_string& a_written_form,
                            const plugin_entry& a_plugin);

    // The preference entry; refused likewise when the plug-in does not enable it.
    run_report run_preference(const plugin_entry& a_plugin);

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

} // namespace qiro_plugin::debugger

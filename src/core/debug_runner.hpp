#pragma once
// The run logic of the debugger, shared by the window and the command line.

#include "core/plugin_discovery.hpp"
#include "core/run_report.hpp"
#include "core/run_request.hpp"
#include "core/run_sinks.hpp"
#include "core/script_instance_factory.hpp"
#include "settings/manager_preference_access.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace qiro_plugin::debugger {

// The alert key for a written form that must not run ("AlertEmptyHyoki" for an empty one,
// "AlertTooLongHyoki" above 100 UTF-16 code units), or nothing when it may run.
std::optional<std::string> written_form_alert(const utf16_string& a_written_form);

class debug_runner {
public:
    using settings_reader = std::function<manager_preference_data()>;
    using instance_factory =
        std::function<made_instance(const utf16_string& a_folder, const utf16_string& a_file_name,
                                    run_output_sink& a_sink, instance_attempt_report* a_report)>;

    // Both sinks must outlive the runner.
    debug_runner(run_output_sink& a_sink, alert_sink& a_alerts);
    ~debug_runner();
    debug_runner(const debug_runner&) = delete;
    debug_runner& operator=(const debug_runner&) = delete;

    // Replace where settings and instances come from (the manager's settings and
    // make_script_instance unless set, or set empty).
    void set_settings_reader(settings_reader a_reader);
    void set_instance_factory(instance_factory a_factory);

    // The one way to run a plug-in, as the plug-in manager would: panes cleared, syntax check
    // and entry outputs appended, alerts for a refused written form and for any exception.
    // A callback or preference entry that the plug-in's document does not enable is refused
    // before its command; so is a callback candidate longer than 200 UTF-16 code units.
    run_report run(const run_request& a_request);

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

} // namespace qiro_plugin::debugger

#include "cli/run_commands.hpp"

#include "cli/cli_support.hpp"
#include "cli/diagnosis_output.hpp"
#include "cli/report_output.hpp"
#include "cli/sandbox_option.hpp"
#include "core/debug_runner.hpp"
#include "core/localized_texts.hpp"

#include <iostream>

namespace qiro_plugin::cli {

namespace {

// The exception's own text, then what it means for the author when that is known.
void print_run_error(const std::string& a_error) {
    print_error("the run ended with an error: " + a_error);
    if (const auto hint = debugger::run_error_hint(a_error); !hint.empty()) {
        print_error(to_utf8(hint));
    }
}

using debugger::run_report;

debugger::probe_policy policy_of(const run_options& a_options) {
    if (a_options.probe) {
        return debugger::probe_policy::always;
    }
    return a_options.no_probe ? debugger::probe_policy::never
                              : debugger::probe_policy::after_failure;
}

debugger::run_request request_of(const run_options& a_options, diagnosis::entry_kind a_entry,
                                 const debugger::plugin_entry& a_plugin,
                                 const utf16_string& a_written_form, const utf16_string& a_reading,
                                 const utf16_string& a_candidate) {
    debugger::run_request request;
    request.entry = a_entry;
    request.plugin = a_plugin;
    request.written_form = a_written_form;
    request.reading = a_reading;
    request.candidate = a_candidate;
    request.options.sandbox = sandbox_mode_of(a_options.sandbox);
    request.options.probes = policy_of(a_options);
    return request;
}

std::optional<utf16_string> argument_text(const std::string& a_text, const char* a_name) {
    auto text = from_utf8(a_text);
    if (!text) {
        print_error(std::string("the ") + a_name + " is not valid UTF-8 text");
    }
    return text;
}

// Status of an entry other than the processing run, after its report was printed.
int entry_status(const run_report& a_report, const debugger::plugin_entry& a_plugin,
                 const char* a_entry, const char* a_flag) {
    switch (a_report.result) {
    case run_report::outcome::refused:
        if (!a_report.refusal.empty()) {
            print_error(a_report.refusal);
        }
        return exit_bad_usage;
    case run_report::outcome::not_run:
        print_error("no language could run " + to_utf8(a_plugin.second) +
                    " (see the standard-error pane above)");
        return exit_not_run;
    case run_report::outcome::entry_not_enabled:
        print_error(to_utf8(a_plugin.second) + " offers no " + a_entry +
                    ": its preference document (the .xml file beside it) must hold <" + a_flag +
                    ">true</" + a_flag + ">");
        return exit_not_run;
    case run_report::outcome::completed:
        return exit_success;
    case run_report::outcome::failed:
        print_run_error(a_report.error);
        return exit_run_error;
    }
    return exit_run_error;
}

} // namespace

int command_run(const run_options& a_options) {
    const auto plugin = resolve_plugin(a_options.plugin, a_options.plugin_folder);
    const auto written_form = argument_text(a_options.written_form, "written form");
    const auto reading = argument_text(a_options.reading, "reading");
    if (!plugin || !written_form || !reading) {
        return exit_bad_usage;
    }
    if (reading->size() > QIRO_PLUGIN_REQUEST_STRING_CAPACITY) {
        print_error("the reading is longer than 200 UTF-16 code units");
        return exit_bad_usage;
    }
    debugger::pane_text_sink panes;
    stderr_alert_sink alerts;
    debugger::debug_runner runner(panes, alerts);
    run_report report = runner.run(request_of(a_options, diagnosis::entry_kind::processing, *plugin,
                                              *written_form, *reading, {}));
    if (report_sandbox_refusal(report)) {
        return exit_not_run;
    }
    if (report.result == run_report::outcome::refused) {
        return exit_bad_usage;
    }

    if (a_options.json) {
        report_context context{*plugin, nullptr, &a_options.written_form, true};
        print_json(std::cout, report_json(context, report, panes));
    } else {
        print_panes(panes);
        if (report.result == run_report::outcome::completed) {
            print_candidates(std::cout, report);
        }
        print_sandbox_status(report);
        std::cout.flush();
        print_findings(std::cerr, report.findings);
    }
    switch (report.result) {
    case run_report::outcome::not_run:
        if (!a_options.json) {
            print_error("no language could run " + to_utf8(plugin->second) +
                        " (see the standard-error pane above)");
        }
        return exit_not_run;
    case run_report::outcome::failed:
        if (!a_options.json) {
            print_run_error(report.error);
        }
        return exit_run_error;
    default:
        return report.document_parsed ? exit_success : exit_not_run;
    }
}

int command_callback(const run_options& a_options) {
    const auto plugin = resolve_plugin(a_options.plugin, a_options.plugin_folder);
    const auto candidate = argument_text(a_options.candidate, "candidate");
    const auto written_form = argument_text(a_options.written_form, "written form");
    if (!plugin || !candidate || !written_form) {
        return exit_bad_usage;
    }
    debugger::pane_text_sink panes;
    stderr_alert_sink alerts;
    debugger::debug_runner runner(panes, alerts);
    run_report report = runner.run(request_of(a_options, diagnosis::entry_kind::callback, *plugin,
                                              *written_form, {}, *candidate));
    if (report_sandbox_refusal(report)) {
        return exit_not_run;
    }
    if (report.result != run_report::outcome::refused) {
        if (a_options.json) {
            report_context context{*plugin, &a_options.candidate, &a_options.written_form, false};
            print_json(std::cout, report_json(context, report, panes));
        } else {
            print_panes(panes);
            print_sandbox_status(report);
            print_findings(std::cerr, report.findings);
        }
    }
    return entry_status(report, *plugin, "callback", "callback");
}

int command_preference(const run_options& a_options) {
    const auto plugin = resolve_plugin(a_options.plugin, a_options.plugin_folder);
    if (!plugin) {
        return exit_bad_usage;
    }
    debugger::pane_text_sink panes;
    stderr_alert_sink alerts;
    debugger::debug_runner runner(panes, alerts);
    run_report report =
        runner.run(request_of(a_options, diagnosis::entry_kind::preference, *plugin, {}, {}, {}));
    if (report_sandbox_refusal(report)) {
        return exit_not_run;
    }
    if (a_options.json) {
        report_context context{*plugin, nullptr, nullptr, false};
        print_json(std::cout, report_json(context, report, panes));
    } else {
        print_panes(panes);
        print_sandbox_status(report);
        print_findings(std::cerr, report.findings);
    }
    return entry_status(report, *plugin, "preference entry", "preference");
}

} // namespace qiro_plugin::cli

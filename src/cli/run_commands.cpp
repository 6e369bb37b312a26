#include "cli/run_commands.hpp"

#include "cli/cli_support.hpp"
#include "cli/debug_option.hpp"
#include "cli/diagnosis_output.hpp"
#include "cli/new_watch_commands.hpp"
#include "cli/report_output.hpp"
#include "cli/sandbox_option.hpp"
#include "core/debug_runner.hpp"
#include "core/run_verdict.hpp"
#include "text/utf8_text.hpp"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace qiro_plugin::cli {

namespace {

using debugger::run_report;
using debugger::run_verdict;
using diagnosis::entry_kind;

const char* const plugin_help =
    "the plug-in: a path to its file, or a file name in the plug-in folder";

int exit_status_of(run_verdict::kind a_kind) {
    switch (a_kind) {
    case run_verdict::kind::candidates:
    case run_verdict::kind::entry_ran:
        return exit_success;
    case run_verdict::kind::run_error:
        return exit_run_error;
    case run_verdict::kind::alerted:
    case run_verdict::kind::refused:
        return exit_bad_usage;
    case run_verdict::kind::no_document:
    case run_verdict::kind::not_run:
    case run_verdict::kind::entry_not_offered:
    case run_verdict::kind::sandbox_refused:
        break;
    }
    return exit_not_run;
}

// The verdict's sentence, then what it means for the author when that is known.
void print_verdict(const run_verdict& a_verdict) {
    print_error(string_encode::to_utf8_marked(
        debugger::verdict_text(a_verdict, debugger::text_language::english)));
    if (!a_verdict.hint.empty()) {
        print_error(string_encode::to_utf8_marked(a_verdict.hint));
    }
}

std::optional<utf16_string> argument_text(const std::string& a_text, const char* a_name) {
    auto text = from_utf8(a_text);
    if (!text) {
        print_error(std::string("the ") + a_name + " is not valid UTF-8 text");
    }
    return text;
}

// Runs the request as every entry command does: the panes (or one JSON object) on the
// standard streams, the findings, then what the run means, as an exit status.
int run_entry(const entry_options& a_options, debugger::run_request a_request) {
    a_request.options.sandbox = sandbox_mode_of(a_options.sandbox);
    a_request.options.probes = a_options.probe      ? debugger::probe_policy::always
                               : a_options.no_probe ? debugger::probe_policy::never
                                                    : debugger::probe_policy::after_failure;
    const auto debug = debug_companion_of(a_options.debug);
    std::optional<deferred_termination> deferred;
    if (debug) {
        // The probes' second run, after the debugged one, carries no debugger: the diagnosis
        // is the plain run's.
        a_request.options.companions.push_back(debug);
        deferred.emplace();
    }
    debugger::pane_text_sink panes;
    stderr_alert_sink alerts;
    debugger::debug_runner runner(panes, alerts);
    run_report report = runner.run(a_request);
    if (deferred && deferred->signalled()) {
        return exit_run_error; // the signal is raised again on the way out
    }
    const auto verdict = debugger::judge_run(report, a_request.entry, a_request.plugin.second);
    const bool processing = a_request.entry == entry_kind::processing;
    switch (verdict.what) {
    case run_verdict::kind::alerted: // the alert said it already
        return exit_status_of(verdict.what);
    case run_verdict::kind::refused:
    case run_verdict::kind::sandbox_refused:
        if (!report.refusal.empty()) {
            print_verdict(verdict);
        }
        return exit_status_of(verdict.what);
    default:
        break;
    }
    if (a_options.json) {
        const bool callback = a_request.entry == entry_kind::callback;
        const report_context context{
            a_request.plugin, callback ? &a_options.candidate : nullptr,
            a_request.entry == entry_kind::preference ? nullptr : &a_options.written_form,
            processing};
        auto object = report_json(context, report, panes);
        if (const auto endpoint = debug ? debug->endpoint() : std::nullopt) {
            object["debug"] = debug_json(*endpoint);
        }
        print_json(std::cout, object);
    } else {
        print_panes(panes);
        if (verdict.what == run_verdict::kind::candidates ||
            verdict.what == run_verdict::kind::no_document) {
            print_candidates(std::cout, report);
        }
        print_sandbox_status(report);
        std::cout.flush();
        print_findings(std::cerr, report.findings);
    }
    // `run --json` leaves the error to the object's members; the other entries always say it.
    if (verdict.severity == run_verdict::level::error && (!a_options.json || !processing)) {
        print_verdict(verdict);
    }
    return exit_status_of(verdict.what);
}

int command_callback(const entry_options& a_options) {
    const auto plugin = resolve_plugin(a_options.plugin, a_options.plugin_folder);
    const auto candidate = argument_text(a_options.candidate, "candidate");
    const auto written_form = argument_text(a_options.written_form, "written form");
    if (!plugin || !candidate || !written_form) {
        return exit_bad_usage;
    }
    return run_entry(a_options, debugger::callback_request(*plugin, *candidate, *written_form));
}

int command_preference(const entry_options& a_options) {
    const auto plugin = resolve_plugin(a_options.plugin, a_options.plugin_folder);
    if (!plugin) {
        return exit_bad_usage;
    }
    return run_entry(a_options, debugger::preference_request(*plugin));
}

} // namespace

void add_entry_options(CLI::App& a_command, entry_options& a_options) {
    a_command.add_option("--plugin-folder", a_options.plugin_folder, plugin_folder_help);
    add_sandbox_option(a_command, a_options.sandbox);
    add_debug_option(a_command, a_options.debug);
    a_command.add_flag("--json", a_options.json, "print one JSON object instead of the panes");
    auto* probe = a_command.add_flag(
        "--probe", a_options.probe,
        "probe every run: run the plug-in a second time to see what its entry returned "
        "(by default only a run that failed or returned no candidate is probed)");
    a_command.add_flag("--no-probe", a_options.no_probe, "never probe: run the plug-in once")
        ->excludes(probe);
    a_command.add_option("PLUGIN", a_options.plugin, plugin_help)->required();
}

int command_run(const entry_options& a_options) {
    const auto plugin = resolve_plugin(a_options.plugin, a_options.plugin_folder);
    const auto written_form = argument_text(a_options.written_form, "written form");
    const auto reading = argument_text(a_options.reading, "reading");
    if (!plugin || !written_form || !reading) {
        return exit_bad_usage;
    }
    if (reading->size() > QIRO_PLUGIN_REQUEST_STRING_CAPACITY) {
        print_error("the reading is longer than " +
                    std::to_string(QIRO_PLUGIN_REQUEST_STRING_CAPACITY) + " UTF-16 code units");
        return exit_bad_usage;
    }
    return run_entry(a_options, debugger::processing_request(*plugin, *written_form, *reading));
}

std::vector<cli_command> add_entry_commands(CLI::App& a_app) {
    auto options = std::make_shared<entry_options>();
    auto watch = std::make_shared<bool>(false);

    auto* run = a_app.add_subcommand(
        "run", "Run a plug-in for a written form as the debugger's Run button does.\n"
               "Exit status: 0 the output parsed as a result document; 1 the plug-in could not "
               "be run or its output did not parse; 2 bad usage; 3 the run ended with an error.");
    add_entry_options(*run, *options);
    run->add_option("WRITTEN_FORM", options->written_form,
                    "the written form (hyoki): 1 to 100 UTF-16 code units")
        ->required();
    run->add_option("--reading", options->reading, "the reading handed to the plug-in");
    run->add_flag("--watch", *watch,
                  "run again each time the plug-in or its .xml is saved, until interrupted");

    auto* callback = a_app.add_subcommand(
        "callback", "Call a plug-in back as after the user committed one of its candidates.\n"
                    "The plug-in's .xml must hold <callback>true</callback>. Exit status: 0 ran; "
                    "1 could not be run; 2 bad usage; 3 the run ended with an error.");
    add_entry_options(*callback, *options);
    callback->add_option("CANDIDATE", options->candidate, "the committed candidate")->required();
    callback
        ->add_option("WRITTEN_FORM", options->written_form,
                     "the written form the candidates were searched for")
        ->required();

    auto* preference = a_app.add_subcommand(
        "preference", "Run a plug-in's preference entry.\n"
                      "The plug-in's .xml must hold <preference>true</preference>. Exit status "
                      "as for callback.");
    add_entry_options(*preference, *options);

    return {
        {run,
         [options, watch] { return *watch ? command_run_watch(*options) : command_run(*options); }},
        {callback, [options] { return command_callback(*options); }},
        {preference, [options] { return command_preference(*options); }},
    };
}

} // namespace qiro_plugin::cli

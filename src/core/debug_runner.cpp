#include "core/debug_runner.hpp"

#include "core/live_std_error.hpp"
#include "core/localized_texts.hpp"
#include "core/request_filling.hpp"
#include "core/run_sandbox.hpp"
#include "diagnosis/analyze.hpp"
#include "platform/data_folder.hpp"
#include "platform/file_path.hpp"
#include "platform/sandbox_availability.hpp"
#include "platform/std_error_watch.hpp"
#include "probes/probe_runner.hpp"
#include "runtime/bridge_values.hpp"
#include "runtime/plugin_instance_script.hpp"
#include "text/string_encode.hpp"
#include "text/utf8_text.hpp"

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <variant>

namespace qiro_plugin::debugger {

namespace {

using clock_type = std::chrono::steady_clock;

double milliseconds_since(clock_type::time_point a_start) {
    return std::chrono::duration<double, std::milli>(clock_type::now() - a_start).count();
}

using diagnosis::entry_kind;

// The values the bridge got, as the probe hands them on.
std::vector<std::string> probe_values_of(const std::vector<bridge_value>& a_values) {
    std::vector<std::string> values;
    for (const auto& value : a_values) {
        values.push_back(string_encode::to_utf8_marked(value.text));
    }
    return values;
}

} // namespace

std::optional<std::string> written_form_alert(const utf16_string& a_written_form) {
    if (a_written_form.empty()) {
        return std::string(ALERT_EMPTY_HYOKI);
    }
    if (a_written_form.size() > WRITTEN_FORM_MAX_LENGTH) {
        return std::string(ALERT_TOO_LONG_HYOKI);
    }
    return std::nullopt;
}

struct debug_runner::impl {
    run_output_sink& m_sink;
    alert_sink& m_alerts;
    settings_reader m_settings_reader;
    instance_factory m_instance_factory;

    impl(run_output_sink& a_sink, alert_sink& a_alerts)
        : m_sink(a_sink), m_alerts(a_alerts),
          m_settings_reader([] { return manager_preference_access::read_manager_preference(); }),
          m_instance_factory(script_instances) {}

    static made_instance script_instances(const utf16_string& a_folder,
                                          const utf16_string& a_file_name, run_output_sink& a_sink,
                                          instance_attempt_report* a_report) {
        auto script = make_script_instance(a_folder, a_file_name, a_sink, a_report);
        return made_instance{script, script};
    }

    // The steps every entry shares: panes cleared, busy indicator, an instance that passed its
    // syntax check, the entry itself, the outputs appended, destruction in order; any
    // exception becomes the one run alert.
    run_report drive(const run_request& a_request) {
        const entry_kind a_kind = a_request.entry;
        const plugin_entry& a_plugin = a_request.plugin;
        const auto started = clock_type::now();
        run_report report;
        std::optional<utility::sandbox_scope> confinement;
        if (!confine(a_request.options.sandbox, a_plugin, report, confinement)) {
            return report;
        }
        const utility::command_executor_scope executor(a_request.options.executor.get());
        diagnosis::run_evidence evidence;
        evidence.entry = a_kind;
        evidence.plugin_folder = string_encode::to_utf8_marked(a_plugin.first);
        evidence.plugin_file = string_encode::to_utf8_marked(a_plugin.second);
        std::vector<std::string> probe_values;
        std::shared_ptr<abstract_qiro_plugin_instance> instance;
        std::shared_ptr<qiro_plugin_instance_script> script;
        std::shared_ptr<abstract_qiro_plugin_message> message;
        std::unique_ptr<qiro_plugin_message_quit_flag> quit_flag;
        bool entry_started = false;
        bool companions_joined = false;
        try {
            m_sink.clear_std_output_text();
            m_sink.clear_std_error_output_text();
            m_sink.start_progress();

            instance_attempt_report attempt;
            auto made = m_instance_factory(a_plugin.first, a_plugin.second, m_sink, &attempt);
            instance = std::move(made.instance);
            script = std::move(made.script);
            report.load_error = attempt.load_error;
            report.syntax_check_ms = attempt.syntax_check_ms;
            evidence.language = attempt.language;
            evidence.syntax_check = attempt.syntax_check;
            if (!instance) {
                m_sink.stop_progress();
                if (confinement && refuse_broken_sandbox(*confinement, report)) {
                    return report;
                }
                report.result = run_report::outcome::not_run;
                finish(a_request.options.probes, report, evidence, probe_values, started);
                return report;
            }
            evidence.instance_made = true;
            report.module_type = instance->run_get_module_type();
            if ((a_kind == entry_kind::callback && !instance->is_enable_callback()) ||
                (a_kind == entry_kind::preference && !instance->is_enable_preference())) {
                instance.reset();
                script.reset();
                m_sink.stop_progress();
                report.result = run_report::outcome::entry_not_enabled;
                evidence.entry_enabled = false;
                finish(a_request.options.probes, report, evidence, probe_values, started);
                return report;
            }

            utility::command_environment environment;
            if (auto refusal = prepare_companions(a_request, evidence, environment)) {
                instance.reset();
                script.reset();
                m_sink.stop_progress();
                report.result = run_report::outcome::refused;
                report.refusal = std::move(*refusal);
                return report;
            }
            companions_joined = true;

            instance->run_initialize();
            message = instance->alloc_qiro_plugin_message(nullptr, 0);
            quit_flag = std::make_unique<qiro_plugin_message_quit_flag>();

            const auto run_started = clock_type::now();
            entry_started = true;
            {
                const utility::command_environment_scope joined(std::move(environment));
                // An author watching a slow plug-in sees its progress before the panes fill.
                const utility::std_error_watch_scope live([this](std::string_view a_so_far) {
                    m_sink.show_std_error_so_far(std_error_tail(a_so_far));
                });
                run_entry(a_request, *instance, message, *quit_flag, probe_values);
            }
            report.run_ms = milliseconds_since(run_started);
            if (instance->is_enable_preference()) {
                // The probe gets the settings folder the bridge got; finding it again must never
                // fail the run.
                try {
                    probe_values.push_back(string_encode::to_utf8_marked(utility::get_convert_path(
                        utility::create_plugin_preference_path(instance->run_get_name()))));
                } catch (const std::exception&) {
                    probe_values.emplace_back();
                }
            }

            if (script) {
                evidence.run = command_evidence_of(*script, false);
                // After a time-out the instance still holds the syntax check's outputs, and the
                // panes get them a second time, as the plug-in manager's own debugger shows
                // them. Stop is the author's choice, not a failure: the panes keep nothing of
                // the stopped entry, and the syntax check's outputs show once.
                if (!evidence.run.stopped) {
                    // The streams move into the report; the diagnosis borrows them from there.
                    report.run_std_output = script->release_last_std_output_string();
                    report.run_std_error = script->release_last_std_err_output_string();
                    m_sink.add_std_output_utf8(report.run_std_output);
                    m_sink.add_std_error_output_utf8(report.run_std_error);
                }
                if (a_kind == entry_kind::processing) {
                    report.document_parsed = script->is_last_document_parsed();
                }
            }
            if (a_kind == entry_kind::processing) {
                collect_candidates(*instance, message, report);
            }

            quit_flag.reset();
            instance->run_destroy();
            message.reset();
            instance.reset();
            script.reset();
            m_sink.stop_progress();
            report.result = run_report::outcome::completed;
        } catch (const std::exception& error) {
            fail(report, error.what());
            keep_failed_run_evidence(script, entry_started, evidence);
        } catch (...) {
            fail(report, "unknown exception");
            keep_failed_run_evidence(script, entry_started, evidence);
        }
        // Released here on the failure path, in the order of the normal path.
        quit_flag.reset();
        message.reset();
        instance.reset();
        script.reset();
        finish(a_request.options.probes, report, evidence, probe_values, started);
        if (companions_joined) {
            for (const auto& companion : a_request.options.companions) {
                companion->finish(report);
            }
        }
        return report;
    }

    // What each companion adds to the entry's environment; the first refusal ends the run.
    static std::optional<std::string>
    prepare_companions(const run_request& a_request, const diagnosis::run_evidence& a_evidence,
                       utility::command_environment& a_environment) {
        if (a_request.options.companions.empty()) {
            return std::nullopt;
        }
        entry_context context;
        context.entry = a_request.entry;
        context.language = a_evidence.language;
        context.plugin_path = string_encode::to_utf8_marked(
            utility::get_convert_path(a_request.plugin.first + a_request.plugin.second));
        context.data_folder = utility::get_qiro_lumen_data_folder();
        for (const auto& companion : a_request.options.companions) {
            if (auto refusal = companion->prepare(context, a_environment)) {
                return refusal;
            }
        }
        return std::nullopt;
    }

    manager_preference_data settings_of(const run_request& a_request) const {
        return a_request.options.settings ? a_request.options.settings->read()
                                          : m_settings_reader();
    }

    // The entry's own command, with the request record the plug-in manager would fill.
    void run_entry(const run_request& a_request, abstract_qiro_plugin_instance& a_instance,
                   const std::shared_ptr<abstract_qiro_plugin_message>& a_message,
                   const qiro_plugin_message_quit_flag& a_quit_flag,
                   std::vector<std::string>& a_probe_values) const {
        switch (a_request.entry) {
        case entry_kind::processing: {
            qiro_plugin_request request{};
            fill_processing_request(request, a_request.written_form, a_request.reading,
                                    settings_of(a_request));
            a_probe_values = probe_values_of(bridge_values_of(request));
            a_instance.run_processing(a_message, request, a_quit_flag);
            return;
        }
        case entry_kind::callback: {
            qiro_plugin_callback callback{};
            fill_callback_request(callback, a_request.candidate, a_request.written_form,
                                  settings_of(a_request));
            a_probe_values = probe_values_of(bridge_values_of(callback));
            a_instance.run_callback(a_message, callback, a_quit_flag);
            return;
        }
        case entry_kind::preference:
            a_instance.run_preference(nullptr);
            return;
        }
    }

    // Sets up the sandbox the runner was asked for, for every command of this run on this
    // thread; false, with the report refused, when it cannot be had.
    static bool confine(utility::sandbox_mode a_mode, const plugin_entry& a_plugin,
                        run_report& a_report,
                        std::optional<utility::sandbox_scope>& a_confinement) {
        a_report.sandbox = a_mode;
        if (a_mode == utility::sandbox_mode::off) {
            return true;
        }
        std::string refusal;
        try {
            auto availability = utility::check_sandbox();
            if (availability.error.empty()) {
                auto layout = make_run_sandbox(
                    a_mode, a_plugin, utility::get_qiro_lumen_data_folder(), availability.tool);
                if (auto* ready = std::get_if<utility::sandbox_layout>(&layout)) {
                    a_confinement.emplace(std::move(*ready));
                    return true;
                }
                refusal = std::get<std::string>(layout);
            } else {
                refusal = availability.error;
            }
        } catch (const std::exception& error) {
            refusal = std::string("the sandbox could not be set up: ") + error.what();
        }
        a_report.result = run_report::outcome::refused;
        a_report.refusal = std::move(refusal);
        a_report.sandbox_unavailable = true;
        return false;
    }

    // What a run that ended with an exception had written, for the diagnosis (the reader's
    // limit, for one, fails the run after the command).
    static void
    keep_failed_run_evidence(const std::shared_ptr<qiro_plugin_instance_script>& a_script,
                             bool a_entry_started, diagnosis::run_evidence& a_evidence) {
        if (a_entry_started && a_script && !a_evidence.run.ran) {
            a_evidence.run = command_evidence_of(*a_script, true);
        }
    }

    // The diagnosis, after the faithful run is over: a failed or empty run may be probed, which
    // runs the plug-in a second time; the panes and alerts are not touched.
    void finish(probe_policy a_probes, run_report& a_report, diagnosis::run_evidence& a_evidence,
                const std::vector<std::string>& a_probe_values, clock_type::time_point a_started) {
        a_report.total_ms = milliseconds_since(a_started);
        a_evidence.error = a_report.error;
        a_evidence.document_parsed = a_report.document_parsed;
        a_evidence.candidate_count = a_report.candidates.size();
        if (a_evidence.run.timed_out) {
            a_report.timed_out_after_s = a_evidence.run.elapsed_ms / 1000.0;
        }
        const auto& run = a_evidence.run;
        const bool failed = a_report.result == run_report::outcome::failed || run.timed_out ||
                            (run.ran && run.exit_status.value_or(0) != 0) ||
                            (a_evidence.entry == entry_kind::processing && run.ran &&
                             (!a_report.document_parsed || a_report.candidates.empty()));
        // A probe of a hang would only hang as long again.
        const bool probe = a_evidence.instance_made && a_evidence.entry_enabled && run.ran &&
                           !run.timed_out &&
                           (a_probes == probe_policy::always ||
                            (a_probes == probe_policy::after_failure && failed));
        try {
            if (probe) {
                probes::probe_request request;
                request.language = a_evidence.language;
                request.plugin_path = string_encode::to_utf8_marked(
                    utility::get_convert_path(string_encode::MultiByteUTF8ToWideChar(
                        (a_evidence.plugin_folder + a_evidence.plugin_file).c_str())));
                request.method = diagnosis::method_name(a_evidence.entry);
                request.values = a_probe_values;
                a_evidence.probe = probes::run_probe(request);
            }
            const bool borrowed = a_evidence.run.ran && !a_evidence.run.timed_out &&
                                  a_evidence.run.std_output.empty() &&
                                  a_evidence.run.std_error.empty();
            if (borrowed) {
                a_evidence.run.std_output.swap(a_report.run_std_output);
                a_evidence.run.std_error.swap(a_report.run_std_error);
            }
            try {
                a_report.findings = diagnosis::diagnose(
                    a_evidence, installed_text_language() == text_language::japanese
                                    ? diagnosis::ui_language::japanese
                                    : diagnosis::ui_language::english);
            } catch (const std::exception&) {
            }
            if (borrowed) {
                a_evidence.run.std_output.swap(a_report.run_std_output);
                a_evidence.run.std_error.swap(a_report.run_std_error);
            }
        } catch (const std::exception&) {
            // The diagnosis only explains; it never turns a run into a failure.
        }
    }

    // After a confined command failed: when bwrap itself cannot set up a sandbox here, the run
    // is refused, with what to change, rather than shown as a plug-in that failed.
    static bool refuse_broken_sandbox(const utility::sandbox_scope& a_confinement,
                                      run_report& a_report) {
        std::string error = utility::sandbox_setup_error(a_confinement.layout().tool);
        if (error.empty()) {
            return false;
        }
        a_report.result = run_report::outcome::refused;
        a_report.refusal = std::move(error);
        a_report.sandbox_unavailable = true;
        return true;
    }

    static void collect_candidates(const abstract_qiro_plugin_instance& a_instance,
                                   const std::shared_ptr<abstract_qiro_plugin_message>& a_message,
                                   run_report& a_report) {
        if (const auto candidates = std::dynamic_pointer_cast<message_script>(a_message)) {
            a_report.candidates = candidates->get_candidates();
        }
        const auto received = a_instance.get_plugin_receive_data(a_message, 0, 0);
        a_report.return_type = received.return_type;
        a_report.candidate_list = received.xml_string;
    }

    void fail(run_report& a_report, const char* a_error) {
        a_report.result = run_report::outcome::failed;
        a_report.error = a_error;
        a_report.alert_key = ALERT_RUN_DEBUG_ERROR;
        m_alerts.show_alert(ALERT_RUN_DEBUG_ERROR);
        m_sink.stop_progress();
    }

    bool refuse_written_form(const utf16_string& a_written_form, run_report& a_report) {
        if (auto key = written_form_alert(a_written_form)) {
            a_report.result = run_report::outcome::refused;
            a_report.alert_key = *key;
            m_alerts.show_alert(*key);
            return true;
        }
        return false;
    }
};

debug_runner::debug_runner(run_output_sink& a_sink, alert_sink& a_alerts)
    : p_impl(std::make_unique<impl>(a_sink, a_alerts)) {}

debug_runner::~debug_runner() = default;

void debug_runner::set_settings_reader(settings_reader a_reader) {
    p_impl->m_settings_reader = std::move(a_reader);
}

void debug_runner::set_instance_factory(instance_factory a_factory) {
    p_impl->m_instance_factory = a_factory ? std::move(a_factory) : &impl::script_instances;
}

run_report debug_runner::run(const run_request& a_request) {
    run_report refused;
    if (a_request.entry == entry_kind::callback &&
        a_request.candidate.size() > QIRO_PLUGIN_REQUEST_STRING_CAPACITY) {
        refused.refusal = "the candidate is longer than " +
                          std::to_string(QIRO_PLUGIN_REQUEST_STRING_CAPACITY) +
                          " UTF-16 code units";
        return refused;
    }
    if (a_request.entry != entry_kind::preference &&
        p_impl->refuse_written_form(a_request.written_form, refused)) {
        return refused;
    }
    return p_impl->drive(a_request);
}

} // namespace qiro_plugin::debugger

#include "debugger/core/debug_runner.hpp"

#include "debugger/core/localized_texts.hpp"
#include "debugger/core/request_filling.hpp"
#include "debugger/core/run_sandbox.hpp"
#include "platform/data_folder.hpp"
#include "platform/sandbox_availability.hpp"
#include "runtime/plugin_instance_script.hpp"
#include "text/string_encode.hpp"

#include <chrono>
#include <optional>
#include <stdexcept>
#include <variant>

namespace qiro_plugin::debugger {

namespace {

using clock_type = std::chrono::steady_clock;

double milliseconds_since(clock_type::time_point a_start) {
    return std::chrono::duration<double, std::milli>(clock_type::now() - a_start).count();
}

enum class entry_kind { processing, callback, preference };

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
    probe_policy m_probe_policy = probe_policy::after_failure;
    utility::sandbox_mode m_sandbox = utility::sandbox_mode::off;

    impl(run_output_sink& a_sink, alert_sink& a_alerts)
        : m_sink(a_sink), m_alerts(a_alerts),
          m_settings_reader([] { return manager_preference_access::read_manager_preference(); }),
          m_instance_factory(&get_script_instance_path) {}

    // The steps every entry shares: panes cleared, busy indicator, an instance that passed its
    // syntax check, the entry itself, the outputs appended, destruction in order; any
    // exception becomes the one run alert.
    template <typename Entry>
    run_report drive(entry_kind a_kind, const plugin_entry& a_plugin, Entry&& a_entry) {
        const auto started = clock_type::now();
        run_report report;
        std::optional<utility::sandbox_scope> confinement;
        if (!confine(a_plugin, report, confinement)) {
            return report;
        }
        std::shared_ptr<abstract_qiro_plugin_instance> instance;
        std::shared_ptr<abstract_qiro_plugin_message> message;
        std::unique_ptr<qiro_plugin_message_quit_flag> quit_flag;
        try {
            m_sink.clear_std_output_text();
            m_sink.clear_std_error_output_text();
            m_sink.start_progress();

            instance_attempt_report attempt;
            instance = m_instance_factory(a_plugin.first, a_plugin.second, m_sink, &attempt);
            report.load_error = attempt.load_error;
            report.syntax_check_ms = attempt.syntax_check_ms;
            if (!instance) {
                m_sink.stop_progress();
                if (confinement && refuse_broken_sandbox(*confinement, report)) {
                    return report;
                }
                report.result = run_report::outcome::not_run;
                report.total_ms = milliseconds_since(started);
                return report;
            }
            report.module_type = instance->run_get_module_type();
            if ((a_kind == entry_kind::callback && !instance->is_enable_callback()) ||
                (a_kind == entry_kind::preference && !instance->is_enable_preference())) {
                instance.reset();
                m_sink.stop_progress();
                report.result = run_report::outcome::entry_not_enabled;
                report.total_ms = milliseconds_since(started);
                return report;
            }

            instance->run_initialize();
            message = instance->alloc_qiro_plugin_message(nullptr, 0);
            quit_flag = std::make_unique<qiro_plugin_message_quit_flag>();

            const auto run_started = clock_type::now();
            a_entry(*instance, message, *quit_flag);
            report.run_ms = milliseconds_since(run_started);

            if (const auto* script =
                    dynamic_cast<const qiro_plugin_instance_script*>(instance.get())) {
                report.run_std_output = script->get_last_std_output_string();
                report.run_std_error = script->get_last_std_err_output_string();
                m_sink.add_std_output_text(
                    string_encode::MultiByteUTF8ToWideChar(report.run_std_output.c_str()));
                m_sink.add_std_error_output_text(
                    string_encode::MultiByteUTF8ToWideChar(report.run_std_error.c_str()));
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
            m_sink.stop_progress();
            report.result = run_report::outcome::completed;
        } catch (const std::exception& error) {
            fail(report, error.what());
        } catch (...) {
            fail(report, "unknown exception");
        }
        // Released here on the failure path, in the order of the normal path.
        quit_flag.reset();
        message.reset();
        instance.reset();
        report.total_ms = milliseconds_since(started);
        return report;
    }

    // Sets up the sandbox the runner was asked for, for every command of this run on this
    // thread; false, with the report refused, when it cannot be had.
    bool confine(const plugin_entry& a_plugin, run_report& a_report,
                 std::optional<utility::sandbox_scope>& a_confinement) const {
        a_report.sandbox = m_sandbox;
        if (m_sandbox == utility::sandbox_mode::off) {
            return true;
        }
        std::string refusal;
        try {
            auto availability = utility::check_sandbox();
            if (availability.error.empty()) {
                auto layout = make_run_sandbox(
                    m_sandbox, a_plugin, utility::get_qiro_lumen_data_folder(), availability.tool);
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
    p_impl->m_instance_factory = std::move(a_factory);
}

void debug_runner::set_probe_policy(probe_policy a_policy) {
    p_impl->m_probe_policy = a_policy;
}

void debug_runner::set_sandbox(utility::sandbox_mode a_mode) {
    p_impl->m_sandbox = a_mode;
}

utility::sandbox_mode debug_runner::sandbox() const {
    return p_impl->m_sandbox;
}

run_report debug_runner::run_debug(const utf16_string& a_written_form, const plugin_entry& a_plugin,
                                   const utf16_string& a_reading) {
    run_report refused;
    if (p_impl->refuse_written_form(a_written_form, refused)) {
        return refused;
    }
    return p_impl->drive(entry_kind::processing, a_plugin,
                         [&](abstract_qiro_plugin_instance& a_instance,
                             const std::shared_ptr<abstract_qiro_plugin_message>& a_message,
                             const qiro_plugin_message_quit_flag& a_quit_flag) {
                             qiro_plugin_request request{};
                             fill_processing_request(request, a_written_form, a_reading,
                                                     p_impl->m_settings_reader());
                             a_instance.run_processing(a_message, request, a_quit_flag);
                         });
}

run_report debug_runner::run_callback(const utf16_string& a_candidate,
                                      const utf16_string& a_written_form,
                                      const plugin_entry& a_plugin) {
    run_report refused;
    if (a_candidate.size() > QIRO_PLUGIN_REQUEST_STRING_CAPACITY) {
        refused.refusal = "the candidate is longer than 200 UTF-16 code units";
        return refused;
    }
    if (p_impl->refuse_written_form(a_written_form, refused)) {
        return refused;
    }
    return p_impl->drive(entry_kind::callback, a_plugin,
                         [&](abstract_qiro_plugin_instance& a_instance,
                             const std::shared_ptr<abstract_qiro_plugin_message>& a_message,
                             const qiro_plugin_message_quit_flag& a_quit_flag) {
                             qiro_plugin_callback callback{};
                             fill_callback_request(callback, a_candidate, a_written_form,
                                                   p_impl->m_settings_reader());
                             a_instance.run_callback(a_message, callback, a_quit_flag);
                         });
}

run_report debug_runner::run_preference(const plugin_entry& a_plugin) {
    return p_impl->drive(
        entry_kind::preference, a_plugin,
        [](abstract_qiro_plugin_instance& a_instance,
           const std::shared_ptr<abstract_qiro_plugin_message>&,
           const qiro_plugin_message_quit_flag&) { a_instance.run_preference(nullptr); });
}

} // namespace qiro_plugin::debugger

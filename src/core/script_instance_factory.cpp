#include "core/script_instance_factory.hpp"

#include "core/script_languages.hpp"
#include "runtime/plugin_instance_script.hpp"

#include <chrono>

namespace qiro_plugin::debugger {

diagnosis::command_evidence command_evidence_of(const qiro_plugin_instance_script& a_instance,
                                                bool a_with_streams) {
    diagnosis::command_evidence evidence;
    const auto& report = a_instance.get_last_command_report();
    evidence.ran = a_instance.get_last_command_result() == 0 || report.timed_out;
    evidence.timed_out = report.timed_out;
    evidence.stopped = report.stopped;
    const bool finished = evidence.ran && !report.timed_out;
    if (finished && a_with_streams) {
        evidence.std_output = a_instance.get_last_std_output_string();
        evidence.std_error = a_instance.get_last_std_err_output_string();
    } else if (!finished) {
        evidence.std_error = report.partial_std_error;
    }
    evidence.std_output_cut = report.std_output_cut;
    evidence.std_error_cut = report.std_error_cut;
    evidence.exit_status = report.exit_status;
    evidence.elapsed_ms = report.elapsed_ms;
    evidence.cpu_ms = report.cpu_ms;
    return evidence;
}

std::shared_ptr<abstract_qiro_plugin_instance>
get_script_instance_path(const utf16_string& a_folder, const utf16_string& a_file_name,
                         run_output_sink& a_sink, instance_attempt_report* a_report) {
    return make_script_instance(a_folder, a_file_name, a_sink, a_report);
}

std::shared_ptr<qiro_plugin_instance_script>
make_script_instance(const utf16_string& a_folder, const utf16_string& a_file_name,
                     run_output_sink& a_sink, instance_attempt_report* a_report) {
    for (const auto& language : script_language_table()) {
        auto instance = std::make_shared<qiro_plugin_instance_script>(
            a_folder, a_file_name, language.command_name, language.extension, language.module_type,
            language.bridge_script());
        if (a_report != nullptr && a_report->load_error.empty()) {
            a_report->load_error = instance->get_load_error_message();
        }
        if (!instance->is_load()) {
            continue;
        }
        const auto started = std::chrono::steady_clock::now();
        const bool passed = instance->syntax_check();
        if (a_report != nullptr) {
            a_report->syntax_check_ms += std::chrono::duration<double, std::milli>(
                                             std::chrono::steady_clock::now() - started)
                                             .count();
            if (a_report->load_error.empty()) {
                a_report->load_error = instance->get_load_error_message();
            }
            a_report->language = instance->get_script_command_name();
            a_report->syntax_check = command_evidence_of(*instance, true);
        }
        a_sink.add_std_output_utf8(instance->get_last_std_output_string());
        a_sink.add_std_error_output_utf8(instance->get_last_std_err_output_string());
        if (passed) {
            return instance;
        }
    }
    return {};
}

} // namespace qiro_plugin::debugger

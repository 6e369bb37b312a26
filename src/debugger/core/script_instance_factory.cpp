#include "debugger/core/script_instance_factory.hpp"

#include "debugger/core/script_languages.hpp"
#include "runtime/plugin_instance_script.hpp"

#include <chrono>

namespace qiro_plugin::debugger {

std::shared_ptr<abstract_qiro_plugin_instance>
get_script_instance_path(const utf16_string& a_folder, const utf16_string& a_file_name,
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

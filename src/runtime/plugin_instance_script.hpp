#pragma once
// A plug-in written in Perl, Ruby or Python, run through its interpreter and a bridge script.

#include "platform/command_runner.hpp"
#include "runtime/abstract_plugin_instance.hpp"

#include <memory>
#include <string>

namespace qiro_plugin {

class qiro_plugin_instance_script : public abstract_qiro_plugin_instance {
public:
    // a_folder ends in "/"; a_script_code is the bridge script as stored (URL-encoded).
    // Throws std::runtime_error when the data folder cannot be found or created.
    qiro_plugin_instance_script(const utf16_string& a_folder, const utf16_string& a_file_name,
                                const std::string& a_command_name, const std::string& a_extension,
                                const utf16_string& a_module_type,
                                const std::string& a_script_code);
    ~qiro_plugin_instance_script() override;

    bool is_load() const override;
    utf16_string get_load_error_message() const override;
    bool run_processing(std::shared_ptr<abstract_qiro_plugin_message> a_message,
                        const qiro_plugin_request& a_request,
                        const qiro_plugin_message_quit_flag& a_quit_flag) override;
    bool run_callback(std::shared_ptr<abstract_qiro_plugin_message> a_message,
                      const qiro_plugin_callback& a_callback,
                      const qiro_plugin_message_quit_flag& a_quit_flag) override;
    bool run_initialize() override;
    bool run_destroy() override;
    utf16_string run_get_name() const override;
    utf16_string run_get_short_name() const override;
    utf16_string run_get_description() const override;
    utf16_string run_get_copyright() const override;
    utf16_string run_get_module_type() const override;
    std::int32_t run_get_major_version() const override;
    std::int32_t run_get_minor_version() const override;
    bool is_enable_palette() const override;
    bool is_enable_processing() const override;
    bool is_enable_callback() const override;
    std::set<utf16_string> get_detailed_processing_type() const override;
    bool is_enable_preference() const override;
    bool is_corresponding_auto_search() const override;
    bool is_digital_signature() const override;
    bool run_preference(void* a_parent) override;
    std::shared_ptr<abstract_qiro_plugin_message>
    alloc_qiro_plugin_message(void* a_data, int a_size) const override;
    qiro_plugin_receive_data
    get_plugin_receive_data(std::shared_ptr<abstract_qiro_plugin_message> a_message,
                            unsigned int a_plugin_index,
                            unsigned int a_generation_id) const override;
    qiro_plugin_receive_palette_data get_plugin_receive_palette_data(
        std::shared_ptr<abstract_qiro_plugin_message> a_message) const override;
    void set_plugin_request_data(std::shared_ptr<abstract_qiro_plugin_message> a_message,
                                 const qiro_plugin_request& a_request) override;
    void set_plugin_error_data(std::shared_ptr<abstract_qiro_plugin_message> a_message) override;
    void set_quit_request_for_palette() override;

    // True when the bridge answered "syntax ok"; a failure may clear the loaded flag.
    bool syntax_check();
    // What the last completed command wrote (UTF-8 as the interpreter wrote it).
    const std::string& get_last_std_output_string() const;
    const std::string& get_last_std_err_output_string() const;
    // Each moves the last output out, leaving it empty: for a caller that keeps it longer than
    // the instance, without a second copy of an output that may be 64 MiB.
    std::string release_last_std_output_string();
    std::string release_last_std_err_output_string();
    // True when the last command's output parsed as a run result document.
    bool is_last_document_parsed() const;
    // What the runner said of the last command (time-out, partial standard error, cut
    // streams, exit, time) and its result (0 done, 2 timed out, -1 none ran), for explaining
    // a run to its author; the outputs above stay as they are.
    const utility::run_command_report& get_last_command_report() const;
    int get_last_command_result() const;
    // The interpreter command: "perl", "ruby" or "python".
    const std::string& get_script_command_name() const;

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

} // namespace qiro_plugin

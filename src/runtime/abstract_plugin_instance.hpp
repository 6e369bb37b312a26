#pragma once
// The interface through which the plug-in framework talks to every plug-in. The order of the
// virtual operations is the framework's binary interface: never reorder them.

#include "runtime/plugin_message.hpp"
#include "runtime/plugin_records.hpp"
#include "text/utf16_string.hpp"

#include <cstdint>
#include <memory>
#include <set>

namespace qiro_plugin {

class abstract_qiro_plugin_instance {
public:
    abstract_qiro_plugin_instance() = default;
    abstract_qiro_plugin_instance(const abstract_qiro_plugin_instance&) = delete;
    abstract_qiro_plugin_instance& operator=(const abstract_qiro_plugin_instance&) = delete;
    virtual ~abstract_qiro_plugin_instance() = default;

    virtual bool is_load() const = 0;
    virtual utf16_string get_load_error_message() const = 0;
    virtual bool run_processing(std::shared_ptr<abstract_qiro_plugin_message> a_message,
                                const qiro_plugin_request& a_request,
                                const qiro_plugin_message_quit_flag& a_quit_flag) = 0;
    virtual bool run_callback(std::shared_ptr<abstract_qiro_plugin_message> a_message,
                              const qiro_plugin_callback& a_callback,
                              const qiro_plugin_message_quit_flag& a_quit_flag) = 0;
    virtual bool run_initialize() = 0;
    virtual bool run_destroy() = 0;
    virtual utf16_string run_get_name() const = 0;
    virtual utf16_string run_get_short_name() const = 0;
    virtual utf16_string run_get_description() const = 0;
    virtual utf16_string run_get_copyright() const = 0;
    virtual utf16_string run_get_module_type() const = 0;
    virtual std::int32_t run_get_major_version() const = 0;
    virtual std::int32_t run_get_minor_version() const = 0;
    virtual bool is_enable_palette() const = 0;
    virtual bool is_enable_processing() const = 0;
    virtual bool is_enable_callback() const = 0;
    virtual std::set<utf16_string> get_detailed_processing_type() const = 0;
    virtual bool is_enable_preference() const = 0;
    virtual bool is_corresponding_auto_search() const = 0;
    virtual bool is_digital_signature() const = 0;
    virtual bool run_preference(void* a_parent) = 0;
    virtual std::shared_ptr<abstract_qiro_plugin_message>
    alloc_qiro_plugin_message(void* a_data, int a_size) const = 0;
    virtual qiro_plugin_receive_data
    get_plugin_receive_data(std::shared_ptr<abstract_qiro_plugin_message> a_message,
                            unsigned int a_plugin_index, unsigned int a_generation_id) const = 0;
    virtual qiro_plugin_receive_palette_data get_plugin_receive_palette_data(
        std::shared_ptr<abstract_qiro_plugin_message> a_message) const = 0;
    virtual void set_plugin_request_data(std::shared_ptr<abstract_qiro_plugin_message> a_message,
                                         const qiro_plugin_request& a_request) = 0;
    virtual void set_plugin_error_data(std::shared_ptr<abstract_qiro_plugin_message> a_message) = 0;
    virtual void set_quit_request_for_palette() = 0;
};

} // namespace qiro_plugin

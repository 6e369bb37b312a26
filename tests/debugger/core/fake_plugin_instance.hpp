#pragma once
// A plug-in instance that runs nothing: it records the calls a run makes and can throw.

#include "runtime/abstract_plugin_instance.hpp"
#include "runtime/message_script.hpp"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace qiro_plugin::debugger::testing {

class fake_plugin_instance : public abstract_qiro_plugin_instance {
public:
    fake_plugin_instance(std::vector<std::string>& a_calls, bool a_throw_in_processing)
        : m_calls(a_calls), m_throw_in_processing(a_throw_in_processing) {}
    ~fake_plugin_instance() override { m_calls.emplace_back("destroyed"); }

    bool is_load() const override { return true; }
    utf16_string get_load_error_message() const override { return {}; }
    bool run_processing(std::shared_ptr<abstract_qiro_plugin_message> a_message,
                        const qiro_plugin_request& a_request,
                        const qiro_plugin_message_quit_flag&) override {
        m_calls.emplace_back("run_processing");
        last_request = a_request;
        if (m_throw_in_processing) {
            throw std::runtime_error("fake_plugin_instance::run_processing() : fault.");
        }
        message_script::candidate candidate;
        candidate.title =
            get_record_text(a_request.composition_string, a_request.composition_string_length);
        std::dynamic_pointer_cast<message_script>(a_message)->add_candidate(candidate);
        return true;
    }
    bool run_callback(std::shared_ptr<abstract_qiro_plugin_message>, const qiro_plugin_callback&,
                      const qiro_plugin_message_quit_flag&) override {
        m_calls.emplace_back("run_callback");
        return true;
    }
    bool run_initialize() override {
        m_calls.emplace_back("run_initialize");
        return true;
    }
    bool run_destroy() override {
        m_calls.emplace_back("run_destroy");
        return true;
    }
    utf16_string run_get_name() const override { return u"fake"; }
    utf16_string run_get_short_name() const override { return u"fake"; }
    utf16_string run_get_description() const override { return {}; }
    utf16_string run_get_copyright() const override { return {}; }
    utf16_string run_get_module_type() const override { return u"Fake"; }
    std::int32_t run_get_major_version() const override { return 0; }
    std::int32_t run_get_minor_version() const override { return 0; }
    bool is_enable_palette() const override { return false; }
    bool is_enable_processing() const override { return true; }
    bool is_enable_callback() const override { return enable_callback; }
    std::set<utf16_string> get_detailed_processing_type() const override { return {}; }
    bool is_enable_preference() const override { return false; }
    bool is_corresponding_auto_search() const override { return true; }
    bool is_digital_signature() const override { return false; }
    bool run_preference(void*) override {
        m_calls.emplace_back("run_preference");
        return true;
    }
    std::shared_ptr<abstract_qiro_plugin_message> alloc_qiro_plugin_message(void*,
                                                                            int) const override {
        m_calls.emplace_back("alloc_qiro_plugin_message");
        return std::make_shared<message_script>();
    }
    qiro_plugin_receive_data
    get_plugin_receive_data(std::shared_ptr<abstract_qiro_plugin_message> a_message,
                            unsigned int a_plugin_index,
                            unsigned int a_generation_id) const override {
        const auto message = std::dynamic_pointer_cast<message_script>(a_message);
        qiro_plugin_receive_data data;
        data.return_type = static_cast<std::uint32_t>(message->get_return_type());
        if (data.return_type == 0) {
            data.xml_string =
                message->make_xml_string_to_candidate(a_plugin_index, a_generation_id);
        }
        return data;
    }
    qiro_plugin_receive_palette_data
    get_plugin_receive_palette_data(std::shared_ptr<abstract_qiro_plugin_message>) const override {
        throw std::runtime_error("no palette");
    }
    void set_plugin_request_data(std::shared_ptr<abstract_qiro_plugin_message>,
                                 const qiro_plugin_request&) override {
        throw std::runtime_error("no request data");
    }
    void set_plugin_error_data(std::shared_ptr<abstract_qiro_plugin_message>) override {}
    void set_quit_request_for_palette() override { throw std::runtime_error("no palette"); }

    qiro_plugin_request last_request{};
    bool enable_callback = false;

private:
    std::vector<std::string>& m_calls;
    bool m_throw_in_processing;
};

} // namespace qiro_plugin::debugger::testing

#pragma once
// Test doubles for runs: sinks that log every call in order, and a plug-in instance that runs
// nothing but logs the calls a run makes, into the same log, and can throw.

#include "core/run_sinks.hpp"
#include "runtime/abstract_plugin_instance.hpp"
#include "runtime/message_script.hpp"

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace qiro_plugin::debugger::testing {

class recording_sinks : public run_output_sink, public alert_sink {
public:
    void add_std_output_text(const utf16_string& a_text) override { record("out:", a_text); }
    void add_std_error_output_text(const utf16_string& a_text) override { record("err:", a_text); }
    void clear_std_output_text() override { events.emplace_back("clear out"); }
    void clear_std_error_output_text() override { events.emplace_back("clear err"); }
    void start_progress() override { events.emplace_back("start"); }
    void stop_progress() override { events.emplace_back("stop"); }
    void show_alert(const std::string& a_key) override { events.push_back("alert:" + a_key); }

    // The events joined by ", ".
    std::string log() const {
        std::string joined;
        for (const auto& event : events) {
            joined += (joined.empty() ? "" : ", ") + event;
        }
        return joined;
    }

    std::vector<std::string> events;

private:
    // The texts of these tests are ASCII.
    void record(const char* a_prefix, const utf16_string& a_text) {
        events.push_back(a_prefix + std::string(a_text.begin(), a_text.end()));
    }
};

class fake_plugin_instance : public abstract_qiro_plugin_instance {
public:
    fake_plugin_instance(std::vector<std::string>& a_log, bool a_throw_in_processing)
        : m_log(a_log), m_throw_in_processing(a_throw_in_processing) {}
    ~fake_plugin_instance() override { m_log.emplace_back("destroyed"); }

    bool run_processing(std::shared_ptr<abstract_qiro_plugin_message>, const qiro_plugin_request&,
                        const qiro_plugin_message_quit_flag&) override {
        note("run_processing");
        if (m_throw_in_processing) {
            throw std::runtime_error("fake_plugin_instance::run_processing() : fault.");
        }
        return true;
    }
    bool run_initialize() override { return note("run_initialize"); }
    bool run_destroy() override { return note("run_destroy"); }
    bool run_callback(std::shared_ptr<abstract_qiro_plugin_message>, const qiro_plugin_callback&,
                      const qiro_plugin_message_quit_flag&) override {
        return note("run_callback");
    }
    bool run_preference(void*) override { return note("run_preference"); }
    std::shared_ptr<abstract_qiro_plugin_message> alloc_qiro_plugin_message(void*,
                                                                            int) const override {
        m_log.emplace_back("alloc_qiro_plugin_message");
        return std::make_shared<message_script>();
    }
    qiro_plugin_receive_data get_plugin_receive_data(std::shared_ptr<abstract_qiro_plugin_message>,
                                                     unsigned int, unsigned int) const override {
        return {};
    }

    bool is_load() const override { return true; }
    utf16_string get_load_error_message() const override { return {}; }
    utf16_string run_get_name() const override { return u"fake"; }
    utf16_string run_get_short_name() const override { return u"fake"; }
    utf16_string run_get_description() const override { return {}; }
    utf16_string run_get_copyright() const override { return {}; }
    utf16_string run_get_module_type() const override { return u"Fake"; }
    std::int32_t run_get_major_version() const override { return 0; }
    std::int32_t run_get_minor_version() const override { return 0; }
    bool is_enable_palette() const override { return false; }
    bool is_enable_processing() const override { return true; }
    bool is_enable_callback() const override { return false; }
    std::set<utf16_string> get_detailed_processing_type() const override { return {}; }
    bool is_enable_preference() const override { return false; }
    bool is_corresponding_auto_search() const override { return true; }
    bool is_digital_signature() const override { return false; }
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

private:
    bool note(const char* a_call) {
        m_log.emplace_back(a_call);
        return true;
    }

    std::vector<std::string>& m_log; // outlives the instance
    bool m_throw_in_processing;
};

} // namespace qiro_plugin::debugger::testing

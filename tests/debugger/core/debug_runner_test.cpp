#include "debugger/core/debug_runner.hpp"
#include "fake_plugin_instance.hpp"
#include "recording_sinks.hpp"

#include <gtest/gtest.h>

#include <algorithm>

namespace qiro_plugin::debugger {
namespace {

using testing::fake_plugin_instance;
using testing::recording_sinks;
using strings = std::vector<std::string>;

const plugin_entry plugin{u"/nowhere/", u"fake.py"};

class debug_runner_test : public ::testing::Test {
protected:
    debug_runner_test() : runner(sinks, sinks) {
        runner.set_settings_reader([this] {
            ++settings_reads;
            return settings;
        });
    }

    // Instances made by the factory record their calls in `calls`.
    void use_fake_instances(bool a_throw_in_processing, bool a_enable_callback = false) {
        runner.set_instance_factory([this, a_throw_in_processing, a_enable_callback](
                                        const utf16_string& a_folder, const utf16_string& a_name,
                                        run_output_sink& a_sink, instance_attempt_report*) {
            calls.push_back("make " + std::string(a_name.begin(), a_name.end()) + " in " +
                            std::string(a_folder.begin(), a_folder.end()));
            a_sink.add_std_output_text(u"syntax ok");
            a_sink.add_std_error_output_text(u"");
            auto instance = std::make_shared<fake_plugin_instance>(calls, a_throw_in_processing);
            instance->enable_callback = a_enable_callback;
            last_instance = instance.get();
            return instance;
        });
    }

    recording_sinks sinks;
    debug_runner runner;
    manager_preference_data settings;
    int settings_reads = 0;
    strings calls;
    fake_plugin_instance* last_instance = nullptr;
};

TEST_F(debug_runner_test, refused_written_forms_alert_and_leave_the_panes_alone) {
    use_fake_instances(false);
    EXPECT_EQ(written_form_alert(u""), "AlertEmptyHyoki");
    EXPECT_EQ(written_form_alert(utf16_string(101, u'あ')), "AlertTooLongHyoki");
    EXPECT_FALSE(written_form_alert(utf16_string(100, u'あ')));

    // 49 characters outside the Basic Multilingual Plane count two units each: 98 + 3 = 101.
    utf16_string non_bmp;
    for (int i = 0; i < 49; ++i) {
        non_bmp += u"\U0002000B";
    }
    const auto too_long = non_bmp + u"abc";
    ASSERT_EQ(too_long.size(), 101U);

    for (const auto& [form, key] : {std::pair{utf16_string{}, "AlertEmptyHyoki"},
                                    std::pair{utf16_string(101, u'x'), "AlertTooLongHyoki"},
                                    std::pair{too_long, "AlertTooLongHyoki"}}) {
        sinks.events.clear();
        const auto report = runner.run_debug(form, plugin);
        EXPECT_EQ(report.result, run_report::outcome::refused);
        EXPECT_EQ(report.alert_key, key);
        EXPECT_EQ(sinks.events, strings{std::string("alert:") + key});
    }
    EXPECT_TRUE(calls.empty()) << "no instance is made for a refused written form";
    EXPECT_EQ(settings_reads, 0);

    // Exactly 100 units, with the same characters, runs.
    sinks.events.clear();
    const auto report = runner.run_debug(non_bmp + u"ab", plugin);
    EXPECT_EQ(report.result, run_report::outcome::completed);
    ASSERT_EQ(report.candidates.size(), 1U);
    EXPECT_EQ(report.candidates[0].title, non_bmp + u"ab") << "the whole form reached the plug-in";
}

TEST_F(debug_runner_test, run_calls_the_instance_in_order_and_fills_the_request) {
    use_fake_instances(false);
    settings.enable_proxy = 1;
    settings.proxy_address = u"proxy.local";
    settings.proxy_port = 3128;
    qiro_plugin_request seen{};
    runner.set_instance_factory([this, &seen](const utf16_string&, const utf16_string&,
                                              run_output_sink& a_sink,
                                              instance_attempt_report* a_report) {
        a_sink.add_std_output_text(u"syntax ok");
        a_report->load_error = u"earlier attempt";
        a_report->syntax_check_ms = 1.5;
        struct seeing_instance : fake_plugin_instance {
            seeing_instance(strings& a_calls, qiro_plugin_request& a_seen)
                : fake_plugin_instance(a_calls, false), m_seen(a_seen) {}
            ~seeing_instance() override { m_seen = last_request; }
            qiro_plugin_request& m_seen;
        };
        return std::make_shared<seeing_instance>(calls, seen);
    });

    const auto report = runner.run_debug(u"変換", plugin, u"へんかん");
    EXPECT_EQ(calls, (strings{"run_initialize", "alloc_qiro_plugin_message", "run_processing",
                              "run_destroy", "destroyed"}));
    EXPECT_EQ(settings_reads, 1);
    EXPECT_EQ(get_record_text(seen.composition_string, seen.composition_string_length), u"変換");
    EXPECT_EQ(get_record_text(seen.reading_string, seen.reading_string_length), u"へんかん");
    EXPECT_EQ(get_record_text(seen.proxy_address, seen.proxy_address_length), u"proxy.local");
    EXPECT_EQ(seen.proxy_port, 3128U);
    EXPECT_EQ(seen.processing_type, 1U);

    // Not a script instance: nothing is appended after the syntax check's output.
    EXPECT_EQ(sinks.events, (strings{"clear out", "clear err", "start", "out:syntax ok", "stop"}));
    EXPECT_EQ(report.result, run_report::outcome::completed);
    EXPECT_EQ(report.module_type, u"Fake");
    EXPECT_EQ(report.load_error, u"earlier attempt");
    EXPECT_EQ(report.syntax_check_ms, 1.5);
    ASSERT_EQ(report.candidates.size(), 1U);
    EXPECT_EQ(report.candidates[0].title, u"変換");
    EXPECT_EQ(report.return_type, 0U);
    EXPECT_NE(report.candidate_list.find("<candidate_index>0</candidate_index>"),
              std::string::npos);
    EXPECT_TRUE(report.error.empty());
}

TEST_F(debug_runner_test, any_exception_gives_one_run_alert_and_stops_the_indicator) {
    use_fake_instances(true);
    const auto report = runner.run_debug(u"変換", plugin);
    EXPECT_EQ(report.result, run_report::outcome::failed);
    EXPECT_EQ(report.error, "fake_plugin_instance::run_processing() : fault.");
    EXPECT_EQ(report.alert_key, "AlertRunDebugError");
    // The panes keep what was appended before the failure.
    EXPECT_EQ(sinks.events, (strings{"clear out", "clear err", "start", "out:syntax ok",
                                     "err:", "alert:AlertRunDebugError", "stop"}));
    // The instance is released without its destroy entry.
    EXPECT_EQ(calls, (strings{"make fake.py in /nowhere/", "run_initialize",
                              "alloc_qiro_plugin_message", "run_processing", "destroyed"}));

    // Failures while the instance is made, and in the settings, end the same way.
    runner.set_instance_factory(
        [](const utf16_string&, const utf16_string&, run_output_sink&,
           instance_attempt_report*) -> std::shared_ptr<abstract_qiro_plugin_instance> {
            throw std::runtime_error("utility::get_qiro_user_folder() call error2");
        });
    sinks.events.clear();
    EXPECT_EQ(runner.run_debug(u"a", plugin).error, "utility::get_qiro_user_folder() call error2");
    EXPECT_EQ(sinks.events,
              (strings{"clear out", "clear err", "start", "alert:AlertRunDebugError", "stop"}));

    use_fake_instances(false);
    runner.set_settings_reader([]() -> manager_preference_data { throw 42; });
    sinks.events.clear();
    calls.clear();
    EXPECT_EQ(runner.run_debug(u"a", plugin).result, run_report::outcome::failed);
    EXPECT_EQ(std::count(sinks.events.begin(), sinks.events.end(), "alert:AlertRunDebugError"), 1);
    EXPECT_EQ(calls.back(), "destroyed");
}

TEST_F(debug_runner_test, no_instance_ends_the_run_silently) {
    runner.set_instance_factory([](const utf16_string&, const utf16_string&,
                                   run_output_sink& a_sink, instance_attempt_report* a_report) {
        a_sink.add_std_error_output_text(u"boom");
        a_report->load_error = u"x.py : [SCRIPT] failed";
        return std::shared_ptr<abstract_qiro_plugin_instance>{};
    });
    const auto report = runner.run_debug(u"a", plugin);
    EXPECT_EQ(report.result, run_report::outcome::not_run);
    EXPECT_EQ(report.load_error, u"x.py : [SCRIPT] failed");
    EXPECT_FALSE(report.module_type);
    EXPECT_FALSE(report.return_type);
    EXPECT_EQ(sinks.events, (strings{"clear out", "clear err", "start", "err:boom", "stop"}));
    EXPECT_EQ(settings_reads, 0);
}

TEST_F(debug_runner_test, callback_and_preference_need_their_flags) {
    use_fake_instances(false, false);
    auto report = runner.run_callback(u"候補", u"こうほ", plugin);
    EXPECT_EQ(report.result, run_report::outcome::entry_not_enabled);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "run_callback"), 0);
    EXPECT_EQ(sinks.events.back(), "stop");

    report = runner.run_preference(plugin);
    EXPECT_EQ(report.result, run_report::outcome::entry_not_enabled);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "run_preference"), 0);

    calls.clear();
    use_fake_instances(false, true);
    report = runner.run_callback(u"候補", u"こうほ", plugin);
    EXPECT_EQ(report.result, run_report::outcome::completed);
    EXPECT_EQ(calls,
              (strings{"make fake.py in /nowhere/", "run_initialize", "alloc_qiro_plugin_message",
                       "run_callback", "run_destroy", "destroyed"}));

    calls.clear();
    report = runner.run_callback(utf16_string(201, u'c'), u"a", plugin);
    EXPECT_EQ(report.result, run_report::outcome::refused);
    EXPECT_FALSE(report.refusal.empty());
    EXPECT_TRUE(calls.empty());
    report = runner.run_callback(u"c", u"", plugin);
    EXPECT_EQ(report.alert_key, "AlertEmptyHyoki");
}

} // namespace
} // namespace qiro_plugin::debugger

#include "debugger/core/debug_runner.hpp"
#include "run_fakes.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace qiro_plugin::debugger {
namespace {

using testing::fake_plugin_instance;
using strings = std::vector<std::string>;

const plugin_entry plugin{u"/nowhere/", u"fake.py"};

class debug_runner_test : public ::testing::Test {
protected:
    debug_runner_test() : runner(sinks, sinks) {
        runner.set_settings_reader([this] {
            ++settings_reads;
            return settings;
        });
        use_fake_instances(false);
    }

    void use_fake_instances(bool a_throw_in_processing) {
        runner.set_instance_factory(
            [this, a_throw_in_processing](const utf16_string& a_folder, const utf16_string& a_name,
                                          run_output_sink& a_sink, instance_attempt_report*) {
                calls.push_back("make " + std::string(a_name.begin(), a_name.end()) + " in " +
                                std::string(a_folder.begin(), a_folder.end()));
                a_sink.add_std_output_text(u"syntax ok");
                return std::make_shared<fake_plugin_instance>(calls, a_throw_in_processing);
            });
    }

    testing::recording_sinks sinks;
    debug_runner runner;
    manager_preference_data settings;
    int settings_reads = 0;
    strings calls;
};

TEST_F(debug_runner_test, refused_written_forms_alert_and_leave_the_panes_alone) {
    // 49 characters outside the Basic Multilingual Plane count two units each.
    utf16_string non_bmp;
    for (int i = 0; i < 49; ++i) {
        non_bmp += u"\U0002000B";
    }
    for (const auto& [form, key] : {std::pair{utf16_string{}, "AlertEmptyHyoki"},
                                    std::pair{utf16_string(101, u'x'), "AlertTooLongHyoki"},
                                    std::pair{non_bmp + u"abc", "AlertTooLongHyoki"}}) {
        sinks.events.clear();
        const auto report = runner.run_debug(form, plugin);
        EXPECT_EQ(report.result, run_report::outcome::refused);
        EXPECT_EQ(report.alert_key, key);
        EXPECT_EQ(sinks.events, strings{std::string("alert:") + key});
    }
    EXPECT_TRUE(calls.empty()) << "no instance is made for a refused written form";
    EXPECT_EQ(settings_reads, 0);

    // Exactly 100 units runs, through every step in order.
    sinks.events.clear();
    const auto report = runner.run_debug(non_bmp + u"ab", plugin, u"");
    EXPECT_EQ(report.result, run_report::outcome::completed);
    EXPECT_EQ(calls,
              (strings{"make fake.py in /nowhere/", "run_initialize", "alloc_qiro_plugin_message",
                       "run_processing", "run_destroy", "destroyed"}));
    EXPECT_EQ(sinks.events, (strings{"clear out", "clear err", "start", "out:syntax ok", "stop"}));
    EXPECT_EQ(settings_reads, 1);
    EXPECT_EQ(report.module_type, u"Fake");
    ASSERT_EQ(report.candidates.size(), 1U);
    EXPECT_EQ(report.candidates[0].title, non_bmp + u"ab") << "the whole form reached the plug-in";
    EXPECT_NE(report.candidate_list.find("<candidate_index>0</candidate_index>"),
              std::string::npos);
    EXPECT_TRUE(report.error.empty());
}

TEST_F(debug_runner_test, any_exception_gives_one_run_alert_and_stops_the_progress) {
    const std::vector<std::pair<std::function<void()>, std::string>> faults{
        {[this] { use_fake_instances(true); }, "fake_plugin_instance::run_processing() : fault."},
        {[this] {
             runner.set_instance_factory(
                 [](auto&&...) -> std::shared_ptr<abstract_qiro_plugin_instance> {
                     throw std::runtime_error("utility::get_qiro_user_folder() call error2");
                 });
         },
         "utility::get_qiro_user_folder() call error2"},
        {[this] {
             use_fake_instances(false);
             runner.set_settings_reader([]() -> manager_preference_data { throw 42; });
         },
         "unknown exception"}};
    for (const auto& [fault, error] : faults) {
        fault();
        sinks.events.clear();
        calls.clear();
        const auto report = runner.run_debug(u"変換", plugin);
        EXPECT_EQ(report.result, run_report::outcome::failed) << error;
        EXPECT_EQ(report.error, error);
        EXPECT_EQ(report.alert_key, "AlertRunDebugError") << error;
        ASSERT_GE(sinks.events.size(), 2U);
        EXPECT_EQ(std::count(sinks.events.begin(), sinks.events.end(), "alert:AlertRunDebugError"),
                  1)
            << error;
        EXPECT_EQ(sinks.events.back(), "stop") << error;
        // A made instance is released without its destroy entry.
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "run_destroy"), 0) << error;
    }
}

} // namespace
} // namespace qiro_plugin::debugger

#include "core/debug_runner.hpp"
#include "support/run_fakes.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <tuple>

namespace qiro_plugin::debugger {
namespace {

const plugin_entry plugin{u"/nowhere/", u"fake.py"};

// What every run logs before its entry.
const std::string made = "clear out, clear err, start, make fake.py in /nowhere/, out:syntax ok, "
                         "run_initialize, alloc_qiro_plugin_message, ";

// The sinks and the fake instance share one log, so the order of every step shows.
class debug_runner_test : public ::testing::Test {
protected:
    debug_runner_test() : runner(sinks, sinks) {
        runner.set_settings_reader([this] {
            sinks.events.emplace_back("settings");
            return manager_preference_data{};
        });
        use_fake_instances(false);
    }

    void use_fake_instances(bool a_throw_in_processing) {
        runner.set_instance_factory(
            [this, a_throw_in_processing](const utf16_string& a_folder, const utf16_string& a_name,
                                          run_output_sink& a_sink, instance_attempt_report*) {
                sinks.events.push_back("make " + std::string(a_name.begin(), a_name.end()) +
                                       " in " + std::string(a_folder.begin(), a_folder.end()));
                a_sink.add_std_output_text(u"syntax ok");
                return made_instance{std::make_shared<testing::fake_plugin_instance>(
                                         sinks.events, a_throw_in_processing),
                                     nullptr};
            });
    }

    testing::recording_sinks sinks;
    debug_runner runner;
};

TEST_F(debug_runner_test, refused_written_forms_only_alert_and_exactly_100_units_run) {
    for (const auto& [form, key] : {std::pair{utf16_string{}, "AlertEmptyHyoki"},
                                    std::pair{utf16_string(101, u'x'), "AlertTooLongHyoki"}}) {
        sinks.events.clear();
        const auto report = runner.run(processing_request(plugin, form));
        EXPECT_EQ(report.result, run_report::outcome::refused);
        EXPECT_EQ(report.alert_key, key);
        EXPECT_EQ(sinks.log(), std::string("alert:") + key)
            << "no instance, no settings read, the panes left alone";
    }

    sinks.events.clear();
    EXPECT_EQ(runner.run(processing_request(plugin, utf16_string(100, u'x'))).result,
              run_report::outcome::completed);
    EXPECT_EQ(sinks.log(), made + "settings, run_processing, run_destroy, destroyed, stop");
}

TEST_F(debug_runner_test, any_exception_gives_one_run_alert_and_stops_the_progress) {
    // A made instance is released without its destroy entry.
    const std::vector<std::tuple<std::function<void()>, std::string, std::string>> faults{
        {[this] { use_fake_instances(true); }, "fake_plugin_instance::run_processing() : fault.",
         "settings, run_processing, alert:AlertRunDebugError, stop, destroyed"},
        {[this] { runner.set_settings_reader([]() -> manager_preference_data { throw 42; }); },
         "unknown exception", "alert:AlertRunDebugError, stop, destroyed"}};
    for (const auto& [set_up, error, rest] : faults) {
        set_up();
        sinks.events.clear();
        const auto report = runner.run(processing_request(plugin, u"変換"));
        EXPECT_EQ(report.result, run_report::outcome::failed) << error;
        EXPECT_EQ(report.error, error);
        EXPECT_EQ(report.alert_key, "AlertRunDebugError") << error;
        EXPECT_EQ(sinks.log(), made + rest);
    }
}

} // namespace
} // namespace qiro_plugin::debugger

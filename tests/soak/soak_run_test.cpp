#include "cases/case_runner.hpp"
#include "platform/command_runner.hpp"
#include "settings/preference_keys.hpp"
#include "settings/preference_store.hpp"
#include "soak/soak_engine.hpp"
#include "support/process_scan.hpp"
#include "support/scratch_folder.hpp"
#include "text/string_encode.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace qiro_plugin::soak {
namespace {

namespace fs = std::filesystem;

// Real runs in a home and a temporary folder of their own, so that what is left is visible.
class soak_run : public ::testing::Test {
protected:
    soak_run() {
        ::setenv("HOME", m_home.path().c_str(), 1);
        ::setenv("TMPDIR", m_temporary.path().c_str(), 1);
    }
    ~soak_run() override { ::unsetenv("TMPDIR"); }

    static debugger::plugin_entry entry(const fs::path& a_folder, const std::string& a_file) {
        const std::string folder = a_folder.string() + "/";
        return {string_encode::MultiByteUTF8ToWideChar(folder.c_str()),
                string_encode::MultiByteUTF8ToWideChar(a_file.c_str())};
    }
    static debugger::plugin_entry fixture(const std::string& a_file) {
        return entry(QIRO_TEST_DATA_DIR "/soak", a_file);
    }

    // Nothing of the soak is left: no worker folder, no bridge file, no process.
    void expect_nothing_left(const std::string& a_marker) const {
        EXPECT_TRUE(test_support::names_in(m_temporary.path()).empty());
        const fs::path data = m_home.path() / "Library/Preferences/QIRO Lumen";
        for (const auto& name : test_support::names_in(data)) {
            EXPECT_TRUE(fs::is_directory(data / name)) << name;
        }
        EXPECT_TRUE(test_support::wait_for(
            [&] { return test_support::processes_mentioning(a_marker) == 0; },
            std::chrono::seconds(5)));
    }

    test_support::scratch_folder m_home;
    test_support::scratch_folder m_temporary;
};

TEST_F(soak_run, fast_and_faithful_give_the_same_on_the_edge_corpus_in_each_language) {
    for (const std::string file : {"echo_state.py", "echo_state.rb", "echo_state.pl"}) {
        soak_options options;
        options.jobs = 2;
        options.faithful_every = 1; // every input compared
        const auto report = run_soak(fixture(file), edge_corpus(), options);
        EXPECT_TRUE(report.fallback_reason.empty()) << file << ": " << report.fallback_reason;
        EXPECT_EQ(report.done, report.inputs.size());
        std::size_t refused = 0;
        for (std::size_t index = 0; index < report.inputs.size(); ++index) {
            const auto& result = report.outcomes[index];
            if (result.kind == "refused") {
                ++refused;
                continue;
            }
            EXPECT_TRUE(result.fast && result.compared) << file << " " << index;
            for (const auto& difference : result.differences) {
                ADD_FAILURE() << file << ": " << report.inputs[index].note << ": " << difference;
            }
        }
        EXPECT_EQ(refused, 1u); // the 101-unit form
        EXPECT_EQ(report.fast_count, report.inputs.size() - refused);
        expect_nothing_left("echo_state");
    }
}

TEST_F(soak_run, state_kept_between_calls_is_never_seen_as_with_separate_processes) {
    std::vector<soak_input> inputs;
    for (int index = 0; index < 12; ++index) {
        inputs.push_back({"form" + std::to_string(index), "", ""});
    }
    for (const std::string file : {"echo_state.py", "echo_state.rb", "echo_state.pl"}) {
        soak_options options;
        options.faithful_every = 1000;
        const auto report = run_soak(fixture(file), inputs, options);
        for (std::size_t index = 0; index < inputs.size(); ++index) {
            EXPECT_TRUE(report.outcomes[index].fast);
        }
        // The counter of the last input's second candidate still says its first call.
        cases::test_case last;
        last.written_form = inputs.back().written_form;
        const auto faithful = cases::run_case(last, fixture(file));
        ASSERT_EQ(faithful.report.candidates.size(), 2u);
        EXPECT_EQ(faithful.report.candidates[1].title, u"form11#1") << file;
        EXPECT_EQ(report.outcomes.back().kind, "candidates");
        EXPECT_TRUE(report.differing.empty()) << file;
    }
}

TEST_F(soak_run, failures_on_held_inputs_are_reported_with_them_and_saved_as_failing_cases) {
    const fs::path folder = m_home.path() / "plugins";
    const std::string source = test_support::read_file(QIRO_TEST_DATA_DIR "/soak/held_inputs.py");
    test_support::write_file(folder / "held.py", source);
    std::vector<soak_input> inputs = parse_form_lines("変換\n%AB\na b c\nok\n%\nx y\n");
    soak_options options;
    const auto report = run_soak(entry(folder, "held.py"), inputs, options);
    EXPECT_TRUE(soak_failed(report));
    ASSERT_EQ(report.failures.size(), 2u);
    // A KeyError on "%AB" and "%" (the shortest kept), a ValueError on the two with blanks.
    EXPECT_EQ(report.failures[0].code, "plugin_exception");
    EXPECT_NE(report.failures[0].message.find("KeyError"), std::string::npos);
    EXPECT_EQ(report.inputs[report.failures[0].shortest].written_form, "%");
    EXPECT_EQ(report.failures[0].count, 2u);
    EXPECT_NE(report.failures[1].message.find("ValueError"), std::string::npos);
    EXPECT_EQ(report.inputs[report.failures[1].shortest].written_form, "x y");
    EXPECT_FALSE(report.failures[0].diagnosis_lines.empty());
    EXPECT_TRUE(report.differing.empty());
    const auto count_of = [&](const std::string& a_kind) {
        for (const auto& [kind, count] : report.counts) {
            if (kind == a_kind) {
                return count;
            }
        }
        return std::size_t{0};
    };
    EXPECT_EQ(count_of("candidates"), 2u);
    EXPECT_EQ(count_of("plugin_exception"), 4u);

    const fs::path cases_path = folder / "held.cases.json";
    ASSERT_EQ(save_failure_cases(report, cases_path.string()), "");
    const auto saved = cases::read_cases_file(cases_path, entry(folder, "held.py"));
    ASSERT_TRUE(saved.problems.empty());
    ASSERT_EQ(saved.cases.size(), 2u);
    for (const auto& the_case : saved.cases) {
        EXPECT_FALSE(cases::check_case(the_case, cases::run_case(the_case, saved.plugin)).passed)
            << the_case.name;
    }
    // Fixed, the same cases pass.
    std::string fixed = source;
    fixed.replace(fixed.find("TABLE[form[:1]]"), 15, "TABLE.get(form, form)");
    fixed.replace(fixed.find("raise ValueError"), 16, "return {'candidate': []} or str");
    test_support::write_file(folder / "held.py", fixed);
    for (const auto& the_case : saved.cases) {
        EXPECT_TRUE(cases::check_case(the_case, cases::run_case(the_case, saved.plugin)).passed)
            << the_case.name;
    }
}

// The settings are read once per soak and again when their file changes, fast or faithful.
TEST_F(soak_run, a_settings_file_replaced_mid_soak_is_seen_by_the_next_input) {
    namespace prefs = preferences;
    const auto scope = prefs::preference_scope::current_user_any_host;
    const auto write_proxy = [&](const char* a_name) {
        prefs::set_value("enable_proxy", prefs::preference_value(true), APPLICATION_ID_LATEST,
                         scope);
        prefs::set_value("proxy_address", prefs::preference_value(a_name), APPLICATION_ID_LATEST,
                         scope);
        return prefs::synchronize(APPLICATION_ID_LATEST, scope);
    };
    const auto inputs = parse_form_lines("a\nb\nswitch\nc\nd\n");
    for (const bool fast : {true, false}) {
        ASSERT_TRUE(write_proxy("second"));
        fs::rename(*prefs::domain_file_path(APPLICATION_ID_LATEST, scope),
                   m_home.path() / "next.plist");
        ASSERT_TRUE(write_proxy("first"));
        soak_options options;
        options.jobs = 1;
        options.fast = fast;
        const auto report = run_soak(fixture("settings_switch.py"), inputs, options);
        std::vector<std::string> kinds;
        for (const auto& outcome : report.outcomes) {
            kinds.push_back(outcome.kind);
        }
        EXPECT_EQ(kinds, (std::vector<std::string>{"no_candidate", "no_candidate", "no_candidate",
                                                   "candidates", "candidates"}))
            << (fast ? "fast" : "faithful");
        EXPECT_TRUE(report.differing.empty());
    }
}

TEST_F(soak_run, a_plugin_with_threads_at_load_falls_back_to_faithful_runs_and_says_so) {
    const auto report =
        run_soak(fixture("threads_at_load.py"), parse_form_lines("a\nb\n"), soak_options{});
    EXPECT_NE(report.fallback_reason.find("threads"), std::string::npos) << report.fallback_reason;
    EXPECT_EQ(report.fast_count, 0u);
    EXPECT_EQ(report.outcomes[0].kind, "candidates");
    expect_nothing_left("threads_at_load.py");
}

TEST_F(soak_run, a_hang_times_out_in_a_fork_as_in_a_faithful_run) {
    const auto report = run_soak(fixture("hangs.py"), parse_form_lines("a\n"), soak_options{});
    ASSERT_EQ(report.done, 1u);
    EXPECT_TRUE(report.outcomes[0].fast);
    EXPECT_EQ(report.outcomes[0].kind, "timed_out");
    EXPECT_TRUE(report.outcomes[0].compared);
    EXPECT_TRUE(report.outcomes[0].differences.empty());
    expect_nothing_left("hangs.py");
}

TEST_F(soak_run, an_interrupt_mid_soak_leaves_no_process_and_no_file) {
    std::vector<soak_input> inputs;
    for (int index = 0; index < 40; ++index) {
        inputs.push_back({"slow" + std::to_string(index), "", ""});
    }
    std::atomic<bool> stop{false};
    soak_options options;
    options.jobs = 2;
    options.stop = &stop;
    options.on_progress = [&](std::size_t a_done, std::size_t) {
        if (a_done >= 2 && !stop) {
            // What the soak command's handler for SIGINT does.
            stop = true;
            utility::kill_running_commands();
        }
    };
    const auto report = run_soak(fixture("slow_echo.py"), inputs, options);
    EXPECT_TRUE(report.interrupted);
    EXPECT_LT(report.done, inputs.size());
    expect_nothing_left("slow_echo");
}

} // namespace
} // namespace qiro_plugin::soak

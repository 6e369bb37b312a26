#pragma once
// Runs cases as the plug-in manager runs plug-ins, several at once.

#include "cases/case_check.hpp"
#include "cases/case_file.hpp"
#include "core/entry_companion.hpp"
#include "platform/command_executor.hpp"
#include "platform/sandbox.hpp"
#include "settings/manager_preference_snapshot.hpp"

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qiro_plugin::cases {

// One case to run, with the plug-in it belongs to.
struct case_job {
    const cases_file* file = nullptr;
    const test_case* the_case = nullptr;
};

struct case_outcome {
    case_run run;
    check_result check;
    double seconds = 0.0;
    bool skipped = false; // not run: the session was stopped first
    // Fast mode asked for and off for this case's plug-in: why (it ran faithfully).
    std::string fast_fallback;
};

// The faithful run a case asks for: a fresh debug_runner with its own panes; the companions
// join its entry's command (a debugger, a coverage tool). The executor, when given, is the fast
// mode's (a fork worker), never the faithful run's. The settings, when given, are those of a
// whole session (see manager_preference_snapshot).
case_run run_case(const test_case& a_case, const debugger::plugin_entry& a_plugin,
                  utility::sandbox_mode a_sandbox = utility::sandbox_mode::off,
                  std::vector<std::shared_ptr<debugger::entry_companion>> a_companions = {},
                  std::shared_ptr<utility::command_executor> a_executor = nullptr,
                  std::shared_ptr<manager_preference_snapshot> a_settings = nullptr);

struct run_options {
    unsigned jobs = 0; // at most this many cases at once; 0: one per core
    utility::sandbox_mode sandbox = utility::sandbox_mode::off; // for every case's run
    // When set, called on the worker for each case: the companions of that case's run (a
    // debugger for the one case being debugged, a coverage tool).
    std::function<std::vector<std::shared_ptr<debugger::entry_companion>>()> companions;
    // The fast mode: each thread keeps a fork worker per plug-in (not with a sandbox).
    bool fast = false;
    // Called on the calling thread for each case in the order of the list, as soon as it and
    // the ones before it are done.
    std::function<void(std::size_t a_index, const case_outcome& a_outcome)> on_done;
    // Called on the calling thread about every 50 ms while it waits (a window repaints here).
    std::function<void()> on_wait;
    // Once set, no further case starts; the ones not started come back skipped.
    const std::atomic<bool>* stop = nullptr;
};

// Runs every job, each on a worker thread, and returns the outcomes in the order of the list.
std::vector<case_outcome> run_cases(const std::vector<case_job>& a_jobs,
                                    const run_options& a_options);

} // namespace qiro_plugin::cases

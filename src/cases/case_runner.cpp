#include "cases/case_runner.hpp"

#include "core/debug_runner.hpp"
#include "core/pane_text_sink.hpp"
#include "fast_runs/fork_worker.hpp"
#include "platform/data_folder.hpp"
#include "text/string_encode.hpp"
#include "text/utf8_text.hpp"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

namespace qiro_plugin::cases {

namespace {

class recording_alerts : public debugger::alert_sink {
public:
    void show_alert(const std::string& a_key) override { m_keys.push_back(a_key); }
    std::vector<std::string> m_keys;
};

utf16_string utf16(const std::string& a_text) {
    return string_encode::MultiByteUTF8ToWideChar(a_text.c_str());
}

} // namespace

case_run run_case(const test_case& a_case, const debugger::plugin_entry& a_plugin,
                  utility::sandbox_mode a_sandbox,
                  std::vector<std::shared_ptr<debugger::entry_companion>> a_companions,
                  std::shared_ptr<utility::command_executor> a_executor,
                  std::shared_ptr<manager_preference_snapshot> a_settings) {
    debugger::pane_text_sink panes;
    recording_alerts alerts;
    case_run run;
    try {
        debugger::debug_runner runner(panes, alerts);
        debugger::run_request request;
        request.entry = a_case.kind;
        request.plugin = a_plugin;
        request.written_form = utf16(a_case.written_form);
        request.reading = utf16(a_case.reading);
        request.candidate = utf16(a_case.candidate);
        request.options.sandbox = a_sandbox;
        request.options.companions = std::move(a_companions);
        request.options.executor = std::move(a_executor);
        request.options.settings = std::move(a_settings);
        run.report = runner.run(request);
    } catch (const std::exception& error) {
        // The runner turns a run's own failures into its report; this is what is left, such as
        // text that cannot be converted.
        run.report.result = debugger::run_report::outcome::failed;
        run.report.error = error.what();
    }
    run.plugin = a_plugin;
    run.std_output_pane = string_encode::to_utf8_marked(panes.std_output_text());
    run.std_error_pane = string_encode::to_utf8_marked(panes.std_error_output_text());
    run.alerts = std::move(alerts.m_keys);
    return run;
}

std::vector<case_outcome> run_cases(const std::vector<case_job>& a_jobs,
                                    const run_options& a_options) {
    std::vector<case_outcome> outcomes(a_jobs.size());
    if (a_jobs.empty()) {
        return outcomes;
    }
    // Made once before the workers start, so that no two of them race to create it.
    try {
        utility::get_qiro_lumen_data_folder();
    } catch (const std::exception&) {
        // Each run meets the same error and reports it as its own.
    }

    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    const auto workers = static_cast<std::size_t>(
        std::min<std::size_t>(a_options.jobs == 0 ? cores : a_options.jobs, a_jobs.size()));

    // The settings do not change within one session unless their files do.
    const auto settings = std::make_shared<manager_preference_snapshot>();
    std::atomic<std::size_t> next{0};
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<bool> done(a_jobs.size(), false);

    const auto work = [&] {
        // The fast mode's workers of this thread, one per plug-in (folder and file).
        std::map<std::pair<utf16_string, utf16_string>, std::shared_ptr<fast_runs::fork_worker>>
            fork_workers;
        for (std::size_t index = next++; index < a_jobs.size(); index = next++) {
            const auto& job = a_jobs[index];
            const auto started = std::chrono::steady_clock::now();
            case_outcome outcome;
            if (a_options.stop != nullptr && a_options.stop->load()) {
                outcome.skipped = true;
                outcome.check.problems.push_back("not run: the session was stopped");
            } else {
                std::shared_ptr<fast_runs::fork_worker> worker;
                if (a_options.fast && a_options.sandbox == utility::sandbox_mode::off) {
                    auto& slot = fork_workers[job.file->plugin];
                    if (!slot) {
                        slot = std::make_shared<fast_runs::fork_worker>();
                    }
                    worker = slot;
                }
                outcome.run =
                    run_case(*job.the_case, job.file->plugin, a_options.sandbox,
                             a_options.companions
                                 ? a_options.companions()
                                 : std::vector<std::shared_ptr<debugger::entry_companion>>{},
                             worker, settings);
                if (worker) {
                    outcome.fast_fallback = worker->fallback_reason();
                }
                outcome.check = check_case(*job.the_case, outcome.run);
                // A run whose commands the stop ended says nothing about the plug-in.
                if (a_options.stop != nullptr && a_options.stop->load()) {
                    outcome.skipped = true;
                    outcome.check = {false, {"ended when the session was stopped"}, {}};
                }
            }
            outcome.seconds =
                std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
            {
                std::lock_guard lock(mutex);
                outcomes[index] = std::move(outcome);
                done[index] = true;
            }
            changed.notify_all();
        }
    };

    std::vector<std::thread> threads;
    // Whatever ends the wait below, no worker outlives this call.
    struct joiner {
        std::vector<std::thread>& m_threads;
        std::atomic<std::size_t>& m_next;
        std::size_t m_end;
        ~joiner() {
            m_next = m_end;
            for (auto& thread : m_threads) {
                thread.join();
            }
        }
    } join_all{threads, next, a_jobs.size()};
    threads.reserve(workers);
    for (std::size_t count = 0; count < workers; ++count) {
        threads.emplace_back(work);
    }
    for (std::size_t reported = 0; reported < a_jobs.size();) {
        {
            std::unique_lock lock(mutex);
            changed.wait_for(lock, std::chrono::milliseconds(50), [&] { return done[reported]; });
            if (!done[reported]) {
                lock.unlock();
                if (a_options.on_wait) {
                    a_options.on_wait();
                }
                continue;
            }
        }
        // The outcome is complete and no worker touches it again.
        if (a_options.on_done) {
            a_options.on_done(reported, outcomes[reported]);
        }
        ++reported;
    }
    return outcomes;
}

} // namespace qiro_plugin::cases

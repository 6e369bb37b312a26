#include "soak/soak_engine.hpp"

#include "cases/case_runner.hpp"
#include "cases/case_snapshot.hpp"
#include "core/debug_runner.hpp"
#include "core/pane_text_sink.hpp"
#include "fast_runs/fork_worker.hpp"
#include "platform/command_runner.hpp"
#include "platform/data_folder.hpp"
#include "settings/manager_preference_snapshot.hpp"
#include "text/string_encode.hpp"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <thread>

namespace qiro_plugin::soak {

namespace {

using clock_type = std::chrono::steady_clock;
using outcome = debugger::run_report::outcome;

class recording_alerts : public debugger::alert_sink {
public:
    void show_alert(const std::string& a_key) override { m_keys.push_back(a_key); }
    std::vector<std::string> m_keys;
};

std::string utf8(const utf16_string& a_text) {
    try {
        return string_encode::WideCharToMultiByteUTF8(a_text.c_str());
    } catch (const std::exception&) {
        return {};
    }
}

std::size_t utf16_length(const std::string& a_text) {
    try {
        return string_encode::MultiByteUTF8ToWideChar(a_text.c_str()).size();
    } catch (const std::exception&) {
        return a_text.size();
    }
}

// One run of the processing entry; the executor, when given, serves its bridge commands. The
// probes never run: a soak compares the runs themselves, and probes each failure afterwards.
cases::case_run run_input(const debugger::plugin_entry& a_plugin, const soak_input& a_input,
                          const std::shared_ptr<utility::command_executor>& a_executor,
                          const std::shared_ptr<manager_preference_snapshot>& a_settings) {
    debugger::pane_text_sink panes;
    recording_alerts alerts;
    cases::case_run run;
    try {
        debugger::debug_runner runner(panes, alerts);
        auto request = debugger::processing_request(
            a_plugin, string_encode::MultiByteUTF8ToWideChar(a_input.written_form.c_str()),
            string_encode::MultiByteUTF8ToWideChar(a_input.reading.c_str()));
        request.options.probes = debugger::probe_policy::never;
        request.options.executor = a_executor;
        request.options.settings = a_settings;
        run.report = runner.run(request);
    } catch (const std::exception& error) {
        run.report.result = outcome::failed;
        run.report.error = error.what();
    }
    run.std_output_pane = panes.take_std_output_utf8();
    run.std_error_pane = panes.take_std_error_output_utf8();
    run.alerts = std::move(alerts.m_keys);
    return run;
}

void classify(const cases::case_run& a_run, input_outcome& a_outcome) {
    const auto& report = a_run.report;
    if (report.result == outcome::refused) {
        a_outcome.kind = "refused";
        a_outcome.message = report.alert_key.empty() ? report.refusal : report.alert_key;
        return;
    }
    for (const auto& finding : report.findings) {
        if (finding.level == diagnosis::severity::error) {
            a_outcome.kind = finding.code;
            a_outcome.message = finding.message;
            return;
        }
    }
    if (report.result != outcome::completed || !report.document_parsed) {
        a_outcome.kind = "run_failed";
        a_outcome.message =
            report.error.empty() ? "the output is not a result document" : report.error;
        return;
    }
    a_outcome.kind = report.candidates.empty() ? "no_candidate" : "candidates";
}

bool is_failure(const std::string& a_kind) {
    return !a_kind.empty() && a_kind != "candidates" && a_kind != "no_candidate" &&
           a_kind != "refused";
}

// The codes a fast run must share with its faithful run: all but interpreter_slow, which judges
// the interpreter's own start, and a fast run has no start of its own to judge.
std::set<std::string> codes_of(const cases::case_run& a_run) {
    std::set<std::string> codes;
    for (const auto& finding : a_run.report.findings) {
        if (finding.code != diagnosis::codes::interpreter_slow) {
            codes.insert(finding.code);
        }
    }
    return codes;
}

bool same_candidates(const std::vector<message_script::candidate>& a_first,
                     const std::vector<message_script::candidate>& a_second) {
    return std::equal(a_first.begin(), a_first.end(), a_second.begin(), a_second.end(),
                      [](const auto& a_left, const auto& a_right) {
                          return a_left.title == a_right.title &&
                                 a_left.comment == a_right.comment &&
                                 a_left.alternative == a_right.alternative &&
                                 a_left.alternative_alias == a_right.alternative_alias &&
                                 a_left.alternative_type == a_right.alternative_type &&
                                 a_left.info == a_right.info;
                      });
}

// What differs between a fast run and the faithful run of the same input.
std::vector<std::string> differences_of(const cases::case_run& a_fast,
                                        const input_outcome& a_fast_outcome,
                                        const cases::case_run& a_faithful) {
    std::vector<std::string> differences;
    input_outcome faithful;
    classify(a_faithful, faithful);
    if (faithful.kind != a_fast_outcome.kind) {
        differences.push_back("outcome: fast " + a_fast_outcome.kind + ", faithful " +
                              faithful.kind);
    }
    if (a_fast.report.run_std_output != a_faithful.report.run_std_output) {
        differences.push_back("the document (standard output) differs");
    }
    if (!same_candidates(a_fast.report.candidates, a_faithful.report.candidates)) {
        differences.push_back("the candidates differ");
    }
    const auto fast_codes = codes_of(a_fast);
    const auto faithful_codes = codes_of(a_faithful);
    if (fast_codes != faithful_codes) {
        std::string line = "diagnosis codes: fast";
        for (const auto& code : fast_codes) {
            line += " " + code;
        }
        line += "; faithful";
        for (const auto& code : faithful_codes) {
            line += " " + code;
        }
        differences.push_back(line);
    }
    return differences;
}

// The interpreter command of a language name as run reports give it ("Python").
std::string interpreter_of(const std::optional<utf16_string>& a_module_type) {
    if (!a_module_type) {
        return {};
    }
    const std::string name = utf8(*a_module_type);
    if (name == "Perl") {
        return "perl";
    }
    if (name == "Ruby") {
        return "ruby";
    }
    return name == "Python" ? "python" : std::string();
}

// The median start of the bare interpreter through the same shell, in this run.
std::optional<double> interpreter_start_ms(const std::string& a_interpreter) {
    const std::string command = a_interpreter == "python" ? "python -c pass"
                                : a_interpreter.empty()   ? std::string()
                                                          : a_interpreter + " -e 1";
    if (command.empty()) {
        return std::nullopt;
    }
    std::vector<double> times;
    for (int attempt = 0; attempt < 5; ++attempt) {
        std::vector<char> std_output;
        std::vector<char> std_error;
        const auto started = clock_type::now();
        if (utility::run_command(command, {}, std_output, std_error, true) != 0) {
            return std::nullopt;
        }
        times.push_back(
            std::chrono::duration<double, std::milli>(clock_type::now() - started).count());
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

std::vector<std::string> diagnosis_lines(const cases::case_run& a_run) {
    std::vector<std::string> lines;
    for (const auto& finding : a_run.report.findings) {
        std::string place = finding.file.value_or("");
        if (finding.line) {
            place += ":" + std::to_string(*finding.line);
        }
        std::string text = (place.empty() ? std::string() : place + ": ") +
                           std::string(diagnosis::severity_name(finding.level)) + ": " +
                           finding.message;
        std::size_t start = 0;
        while (start <= text.size() && lines.size() < 8) {
            const auto end = text.find('\n', start);
            lines.push_back(text.substr(start, end - start));
            if (end == std::string::npos) {
                break;
            }
            start = end + 1;
        }
    }
    if (lines.empty() && !a_run.report.error.empty()) {
        lines.push_back("error: " + a_run.report.error);
    }
    return lines;
}

} // namespace

soak_report run_soak(const debugger::plugin_entry& a_plugin, std::vector<soak_input> a_inputs,
                     const soak_options& a_options) {
    soak_report report;
    report.inputs = std::move(a_inputs);
    report.outcomes.resize(report.inputs.size());
    const std::size_t total = report.inputs.size();
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    report.jobs = static_cast<unsigned>(std::max<std::size_t>(
        1, std::min<std::size_t>(a_options.jobs == 0 ? cores : a_options.jobs, total)));
    const auto started = clock_type::now();
    try {
        // Made once before the threads start, so that no two race to create it.
        utility::get_qiro_lumen_data_folder();
    } catch (const std::exception&) {
    }

    // Fast and faithful runs alike: the settings do not change within one soak unless their
    // files do.
    const auto settings = std::make_shared<manager_preference_snapshot>();
    std::mutex mutex;
    std::condition_variable changed;
    std::size_t next = 0;
    std::size_t done = 0;
    unsigned active = report.jobs;
    std::vector<std::string> fallbacks;
    std::string language;
    const auto stopped = [&a_options] {
        return a_options.stop != nullptr && a_options.stop->load();
    };

    // A stop ends this soak's commands only: in the window, a plug-in run may be going on too.
    const auto scope = utility::new_command_scope();
    const auto work = [&] {
        const utility::command_scope_guard in_scope(scope);
        std::shared_ptr<fast_runs::fork_worker> worker;
        if (a_options.fast) {
            worker = std::make_shared<fast_runs::fork_worker>();
        }
        for (;;) {
            std::size_t index = 0;
            {
                std::lock_guard lock(mutex);
                if (next >= total || stopped()) {
                    break;
                }
                index = next++;
            }
            const auto& input = report.inputs[index];
            input_outcome result;
            const auto served_before = worker ? worker->served_count() : 0;
            const auto run_started = clock_type::now();
            auto run = run_input(a_plugin, input, worker, settings);
            result.ms =
                std::chrono::duration<double, std::milli>(clock_type::now() - run_started).count();
            result.fast = worker && worker->served_count() != served_before;
            classify(run, result);
            // The faithful run is the reference: a sample and every failure run again so.
            if (result.fast &&
                (is_failure(result.kind) ||
                 index % std::max<std::size_t>(1, a_options.faithful_every) == 0) &&
                !stopped()) {
                const auto faithful = run_input(a_plugin, input, nullptr, settings);
                result.compared = true;
                result.differences = differences_of(run, result, faithful);
            }
            if (stopped()) {
                break; // a run the interrupt ended says nothing about the plug-in
            }
            {
                std::lock_guard lock(mutex);
                if (language.empty()) {
                    language = interpreter_of(run.report.module_type);
                }
                report.outcomes[index] = std::move(result);
                ++done;
            }
            changed.notify_all();
        }
        std::lock_guard lock(mutex);
        if (worker && !worker->fallback_reason().empty()) {
            fallbacks.push_back(worker->fallback_reason());
        }
        --active;
        changed.notify_all();
    };

    {
        std::vector<std::thread> threads;
        struct joiner {
            std::vector<std::thread>& m_threads;
            ~joiner() {
                for (auto& thread : m_threads) {
                    thread.join();
                }
            }
        } join_all{threads};
        for (unsigned count = 0; count < report.jobs; ++count) {
            threads.emplace_back(work);
        }
        std::unique_lock lock(mutex);
        while (active > 0) {
            changed.wait_for(lock, std::chrono::milliseconds(100));
            if (stopped()) {
                // A run that started after the interrupt's kill is ended too.
                utility::kill_commands_in(scope);
                continue;
            }
            if (a_options.on_progress) {
                const std::size_t now_done = done;
                lock.unlock();
                a_options.on_progress(now_done, total);
                lock.lock();
            }
        }
    }
    report.done = done;
    report.interrupted = done < total;
    report.language = language;
    if (!fallbacks.empty()) {
        report.fallback_reason = fallbacks.front();
    }
    if (a_options.on_progress) {
        a_options.on_progress(done, total);
    }

    // Counts and distinct failures, in the order of the inputs.
    std::map<std::pair<std::string, std::string>, std::size_t> failure_index;
    for (std::size_t index = 0; index < total; ++index) {
        const auto& result = report.outcomes[index];
        if (result.kind.empty()) {
            continue;
        }
        report.fast_count += result.fast ? 1 : 0;
        report.compared_count += result.compared ? 1 : 0;
        if (!result.differences.empty()) {
            report.differing.push_back(index);
        }
        auto count =
            std::find_if(report.counts.begin(), report.counts.end(),
                         [&](const auto& a_entry) { return a_entry.first == result.kind; });
        if (count == report.counts.end()) {
            report.counts.emplace_back(result.kind, 1);
        } else {
            ++count->second;
        }
        if (!is_failure(result.kind)) {
            continue;
        }
        const auto key = std::make_pair(result.kind, result.message);
        const auto found = failure_index.find(key);
        if (found == failure_index.end()) {
            failure_index.emplace(key, report.failures.size());
            report.failures.push_back({result.kind, result.message, 1, index, {}, {}});
            continue;
        }
        auto& failure = report.failures[found->second];
        ++failure.count;
        if (utf16_length(report.inputs[index].written_form) <
            utf16_length(report.inputs[failure.shortest].written_form)) {
            failure.shortest = index;
        }
    }
    // Each distinct failure's shortest input, run faithfully with the probes of a run.
    for (auto& failure : report.failures) {
        if (stopped()) {
            break;
        }
        cases::test_case the_case;
        the_case.written_form = report.inputs[failure.shortest].written_form;
        the_case.reading = report.inputs[failure.shortest].reading;
        failure.run = cases::run_case(the_case, a_plugin);
        failure.diagnosis_lines = diagnosis_lines(failure.run);
    }
    // The soak's own time; the floor measured next is not part of it.
    report.wall_seconds = std::chrono::duration<double>(clock_type::now() - started).count();
    if (!stopped()) {
        report.interpreter_start_ms = interpreter_start_ms(report.language);
    }
    return report;
}

double latency_percentile(const soak_report& a_report, double a_percent) {
    std::vector<double> times;
    for (const auto& result : a_report.outcomes) {
        if (!result.kind.empty()) {
            times.push_back(result.ms);
        }
    }
    if (times.empty()) {
        return 0.0;
    }
    std::sort(times.begin(), times.end());
    const double rank = a_percent / 100.0 * static_cast<double>(times.size());
    std::size_t position = static_cast<std::size_t>(rank);
    if (static_cast<double>(position) < rank) {
        ++position;
    }
    return times[std::clamp<std::size_t>(position, 1, times.size()) - 1];
}

std::vector<std::size_t> slowest_inputs(const soak_report& a_report, std::size_t a_count) {
    std::vector<std::size_t> ran;
    for (std::size_t index = 0; index < a_report.outcomes.size(); ++index) {
        if (!a_report.outcomes[index].kind.empty()) {
            ran.push_back(index);
        }
    }
    std::stable_sort(ran.begin(), ran.end(), [&](std::size_t a_left, std::size_t a_right) {
        return a_report.outcomes[a_left].ms > a_report.outcomes[a_right].ms;
    });
    ran.resize(std::min(ran.size(), a_count));
    return ran;
}

bool soak_failed(const soak_report& a_report) {
    return !a_report.failures.empty() || !a_report.differing.empty();
}

std::string save_failure_cases(const soak_report& a_report, const std::string& a_cases_path,
                               std::optional<std::size_t> a_only) {
    namespace fs = std::filesystem;
    nlohmann::ordered_json document = {{"cases", nlohmann::ordered_json::array()}};
    std::error_code error;
    if (fs::exists(a_cases_path, error)) {
        cases::cases_file file = cases::read_cases_file(a_cases_path, {});
        if (!file.document.is_object() || !file.document.contains("cases") ||
            !file.document["cases"].is_array()) {
            const auto problem =
                file.problems.empty() ? cases::file_problem{} : file.problems.front();
            return a_cases_path + ":" + std::to_string(problem.line) + ":" +
                   std::to_string(problem.column) + ": " + problem.message;
        }
        document = std::move(file.document);
    }
    auto& list = document["cases"];
    const auto taken = [&list](const std::string& a_name) {
        return std::any_of(list.begin(), list.end(), [&](const auto& a_item) {
            return a_item.is_object() && a_item.value("name", std::string()) == a_name;
        });
    };
    for (std::size_t index = 0; index < a_report.failures.size(); ++index) {
        if (a_only && *a_only != index) {
            continue;
        }
        const auto& failure = a_report.failures[index];
        const auto& input = a_report.inputs[failure.shortest];
        const std::string base = "soak " + failure.code;
        std::string name = base;
        for (int number = 2; taken(name); ++number) {
            name = base + " (" + std::to_string(number) + ")";
        }
        nlohmann::ordered_json item;
        item["name"] = name;
        item["written_form"] = input.written_form;
        if (!input.reading.empty()) {
            item["reading"] = input.reading;
        }
        list.push_back(std::move(item));
    }
    return cases::write_cases_document(a_cases_path, document);
}

} // namespace qiro_plugin::soak

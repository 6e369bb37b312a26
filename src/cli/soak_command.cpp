#include "cli/soak_command.hpp"

#include "cli/cli_support.hpp"
#include "platform/command_runner.hpp"
#include "soak/soak_engine.hpp"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <memory>
#include <unistd.h>

namespace qiro_plugin::cli {

namespace {

std::atomic<bool> g_interrupted{false};
volatile std::sig_atomic_t g_signal = 0;

// Async-signal-safe: the runs in progress end at once, and the soak unwinds on its own, so that
// its workers, folders and bridge files go before the program ends by the same signal.
void interrupt_soak(int a_signal) {
    g_signal = a_signal;
    g_interrupted.store(true);
    utility::kill_running_commands();
}

std::string quoted(const std::string& a_text) {
    return nlohmann::json(a_text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string milliseconds(double a_value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f ms", a_value);
    return text;
}

// "[#####.....] 120/1000  35.2/s  0:25 left" on a terminal's standard error.
void draw_progress(std::size_t a_done, std::size_t a_total,
                   std::chrono::steady_clock::time_point a_started) {
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - a_started).count();
    const double rate = seconds > 0 ? static_cast<double>(a_done) / seconds : 0.0;
    const int width = 30;
    const int filled = a_total == 0 ? width : static_cast<int>(width * a_done / a_total);
    std::string bar(static_cast<std::size_t>(filled), '#');
    bar.resize(width, '.');
    char line[160];
    if (rate > 0 && a_done < a_total) {
        const auto left = static_cast<long>(static_cast<double>(a_total - a_done) / rate);
        std::snprintf(line, sizeof line, "\r[%s] %zu/%zu  %.1f/s  %ld:%02ld left ", bar.c_str(),
                      a_done, a_total, rate, left / 60, left % 60);
    } else {
        std::snprintf(line, sizeof line, "\r[%s] %zu/%zu  %.1f/s          ", bar.c_str(), a_done,
                      a_total, rate);
    }
    std::cerr << line << std::flush;
}

std::vector<std::size_t> over_budget(const soak::soak_report& a_report,
                                     const std::optional<double>& a_budget) {
    std::vector<std::size_t> slow;
    if (!a_budget) {
        return slow;
    }
    for (std::size_t index = 0; index < a_report.outcomes.size(); ++index) {
        const auto& result = a_report.outcomes[index];
        if (!result.kind.empty() && result.ms > *a_budget) {
            slow.push_back(index);
        }
    }
    return slow;
}

nlohmann::ordered_json json_report(const soak::soak_report& a_report,
                                   const soak_command_options& a_options) {
    using json = nlohmann::ordered_json;
    const auto input_json = [&](std::size_t a_index) {
        json item = {{"written_form", a_report.inputs[a_index].written_form},
                     {"reading", a_report.inputs[a_index].reading}};
        if (!a_report.outcomes[a_index].kind.empty()) {
            item["ms"] = a_report.outcomes[a_index].ms;
        }
        return item;
    };
    json report = {{"plugin", a_options.plugin},          {"language", a_report.language},
                   {"inputs", a_report.inputs.size()},    {"done", a_report.done},
                   {"interrupted", a_report.interrupted}, {"jobs", a_report.jobs}};
    json differences = json::array();
    for (const auto index : a_report.differing) {
        json item = input_json(index);
        item["differences"] = a_report.outcomes[index].differences;
        differences.push_back(item);
    }
    report["fast"] = {{"served", a_report.fast_count},
                      {"fallback", a_report.fallback_reason.empty()
                                       ? json(nullptr)
                                       : json(a_report.fallback_reason)},
                      {"compared", a_report.compared_count},
                      {"differences", differences}};
    json counts = json::object();
    for (const auto& [kind, count] : a_report.counts) {
        counts[kind] = count;
    }
    report["counts"] = counts;
    json failures = json::array();
    for (const auto& failure : a_report.failures) {
        json item = input_json(failure.shortest);
        item["code"] = failure.code;
        item["message"] = failure.message;
        item["count"] = failure.count;
        item["diagnosis"] = failure.diagnosis_lines;
        failures.push_back(item);
    }
    report["failures"] = failures;
    report["latency_ms"] = {{"p50", soak::latency_percentile(a_report, 50)},
                            {"p95", soak::latency_percentile(a_report, 95)},
                            {"p99", soak::latency_percentile(a_report, 99)},
                            {"max", soak::latency_percentile(a_report, 100)}};
    report["interpreter_start_ms"] =
        a_report.interpreter_start_ms ? json(*a_report.interpreter_start_ms) : json(nullptr);
    json slowest = json::array();
    for (const auto index : soak::slowest_inputs(a_report, 5)) {
        slowest.push_back(input_json(index));
    }
    report["slowest"] = slowest;
    json slow = json::array();
    for (const auto index : over_budget(a_report, a_options.budget_ms)) {
        slow.push_back(input_json(index));
    }
    report["over_budget"] = slow;
    report["wall_seconds"] = a_report.wall_seconds;
    return report;
}

void print_text_report(const soak::soak_report& a_report, const soak_command_options& a_options) {
    auto& out = std::cout;
    out << "soak: " << a_options.plugin << " ("
        << (a_report.language.empty() ? "?" : a_report.language) << "), " << a_report.done << " of "
        << a_report.inputs.size() << " inputs, -j " << a_report.jobs
        << (a_report.interrupted ? ", interrupted" : "") << "\n";
    if (!a_report.fallback_reason.empty()) {
        out << "fast mode off, every input ran faithfully: " << a_report.fallback_reason << "\n";
    } else {
        out << "fast mode: " << a_report.fast_count << " inputs in fork workers; "
            << a_report.compared_count << " run again faithfully, "
            << (a_report.differing.empty() ? "all the same"
                                           : std::to_string(a_report.differing.size()) + " differ")
            << "\n";
    }
    out << "outcomes:\n";
    for (const auto& [kind, count] : a_report.counts) {
        out << "  " << kind << std::string(kind.size() < 24 ? 24 - kind.size() : 1, ' ') << count
            << "\n";
    }
    out << "latency: p50 " << milliseconds(soak::latency_percentile(a_report, 50)) << ", p95 "
        << milliseconds(soak::latency_percentile(a_report, 95)) << ", p99 "
        << milliseconds(soak::latency_percentile(a_report, 99)) << ", max "
        << milliseconds(soak::latency_percentile(a_report, 100));
    if (a_report.interpreter_start_ms) {
        out << "; the bare " << a_report.language << " starts in "
            << milliseconds(*a_report.interpreter_start_ms);
    }
    out << "\nslowest:";
    for (const auto index : soak::slowest_inputs(a_report, 5)) {
        out << " " << quoted(a_report.inputs[index].written_form) << " "
            << milliseconds(a_report.outcomes[index].ms) << ";";
    }
    out << "\n";
    if (a_options.budget_ms) {
        const auto slow = over_budget(a_report, a_options.budget_ms);
        out << slow.size() << " inputs over the budget of " << milliseconds(*a_options.budget_ms)
            << (slow.empty() ? "" : ":");
        for (std::size_t shown = 0; shown < slow.size() && shown < 20; ++shown) {
            out << " " << quoted(a_report.inputs[slow[shown]].written_form) << " "
                << milliseconds(a_report.outcomes[slow[shown]].ms) << ";";
        }
        out << "\n";
    }
    if (!a_report.failures.empty()) {
        out << a_report.failures.size() << " distinct failures:\n";
    }
    for (const auto& failure : a_report.failures) {
        const auto& input = a_report.inputs[failure.shortest];
        out << "  " << failure.code << ": " << failure.message.substr(0, failure.message.find('\n'))
            << " (" << failure.count << " inputs)\n    shortest: " << quoted(input.written_form)
            << (input.reading.empty() ? "" : " reading " + quoted(input.reading)) << "\n";
        for (const auto& line : failure.diagnosis_lines) {
            out << "      " << line << "\n";
        }
    }
    if (!a_report.differing.empty()) {
        out << "fast and faithful runs differ (a finding of its own):\n";
        for (const auto index : a_report.differing) {
            for (const auto& difference : a_report.outcomes[index].differences) {
                out << "  " << quoted(a_report.inputs[index].written_form) << ": " << difference
                    << "\n";
            }
        }
    }
    const double rate = a_report.wall_seconds > 0
                            ? static_cast<double>(a_report.done) / a_report.wall_seconds
                            : 0.0;
    char line[96];
    std::snprintf(line, sizeof line, "%.1f s, %.1f inputs/s\n", a_report.wall_seconds, rate);
    out << line;
}

} // namespace

int command_soak(const soak_command_options& a_options) {
    const auto plugin = resolve_plugin(a_options.plugin, a_options.plugin_folder);
    if (!plugin) {
        return exit_bad_usage;
    }
    std::vector<soak::soak_input> inputs;
    try {
        for (const auto& name :
             a_options.corpora.empty() ? std::vector<std::string>{"edge"} : a_options.corpora) {
            auto corpus = soak::load_corpus(name);
            inputs.insert(inputs.end(), std::make_move_iterator(corpus.begin()),
                          std::make_move_iterator(corpus.end()));
        }
    } catch (const soak::corpus_error& error) {
        print_error(error.what());
        return exit_bad_usage;
    }
    inputs = soak::sample_inputs(std::move(inputs), a_options.limit, a_options.seed);

    struct sigaction action {};
    action.sa_handler = interrupt_soak;
    sigemptyset(&action.sa_mask);
    for (const int signal_number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction previous {};
        // A signal the caller chose to ignore (nohup) stays ignored.
        if (sigaction(signal_number, nullptr, &previous) == 0 && previous.sa_handler == SIG_IGN) {
            continue;
        }
        sigaction(signal_number, &action, nullptr);
    }
    soak::soak_options options;
    options.jobs = a_options.jobs;
    options.budget_ms = a_options.budget_ms;
    options.stop = &g_interrupted;
    const auto started = std::chrono::steady_clock::now();
    const bool terminal = !a_options.json && ::isatty(STDERR_FILENO) == 1;
    if (terminal) {
        options.on_progress = [started](std::size_t a_done, std::size_t a_total) {
            draw_progress(a_done, a_total, started);
        };
    }
    const auto report = soak::run_soak(*plugin, std::move(inputs), options);
    if (terminal) {
        std::cerr << "\r" << std::string(78, ' ') << "\r" << std::flush;
    }
    if (g_interrupted.load()) {
        print_error("interrupted after " + std::to_string(report.done) + " inputs");
        const int signal_number = g_signal;
        std::signal(signal_number, SIG_DFL);
        std::raise(signal_number);
        return exit_not_run;
    }
    if (a_options.json) {
        std::cout << json_report(report, a_options)
                         .dump(2, ' ', false, nlohmann::json::error_handler_t::replace)
                  << "\n";
    } else {
        print_text_report(report, a_options);
    }
    if (!a_options.save_cases.empty() && !report.failures.empty()) {
        const std::string error = soak::save_failure_cases(report, a_options.save_cases);
        if (!error.empty()) {
            print_error("the cases could not be saved: " + error);
            return exit_not_run;
        }
        std::cerr << "qiro-lumen: " << report.failures.size() << " cases appended to "
                  << a_options.save_cases << "\n";
    }
    return soak::soak_failed(report) ? exit_not_run : exit_success;
}

cli_command add_soak_command(CLI::App& a_app) {
    auto options = std::make_shared<soak_command_options>();
    auto* soak = a_app.add_subcommand(
        "soak", "Run a plug-in against a corpus of written forms and report what failed, in a "
                "fast mode that forks each run from one loaded plug-in (a sample and every "
                "failure run again faithfully).\nExit status: 0 no input failed; 1 an input "
                "failed or a fast run differed from its faithful one; 2 bad usage.");
    soak->add_option("PLUGIN", options->plugin,
                     "the plug-in: a path to its file, or a file name in the plug-in folder")
        ->required();
    soak->add_option("--corpus", options->corpora,
                     "edge (built in), skk (SKK-JISYO.L of the package skkdic) or a file of "
                     "one form per line with an optional TAB and reading (repeatable; "
                     "default: edge)")
        ->allow_extra_args(false);
    soak->add_option("-j,--jobs", options->jobs, "inputs run at once (default: one per core)")
        ->check(CLI::Range(1u, 256u));
    soak->add_option("--limit", options->limit, "run a sample of this many inputs");
    soak->add_option("--seed", options->seed, "the sample's seed (default: 1)");
    soak->add_option("--budget", options->budget_ms, "list the inputs slower than this, in ms");
    soak->add_option("--save-cases", options->save_cases,
                     "append one case per distinct failure to this cases file");
    soak->add_flag("--json", options->json, "print one JSON object instead of the report");
    soak->add_option("--plugin-folder", options->plugin_folder, plugin_folder_help);
    return {soak, [options] { return command_soak(*options); }};
}

} // namespace qiro_plugin::cli

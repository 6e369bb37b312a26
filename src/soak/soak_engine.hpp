#pragma once
// A plug-in against many written forms: each input a run of the processing entry, in the fast
// mode where the plug-in allows it, with a sample and every failure run again faithfully.

#include "cases/case_check.hpp"
#include "core/plugin_discovery.hpp"
#include "soak/corpus.hpp"

#include <atomic>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qiro_plugin::soak {

struct soak_options {
    unsigned jobs = 1; // runs at once, each thread with its own worker; 0: one per core
    bool fast = true;  // false: every input the faithful way
    std::size_t faithful_every = 100; // besides every failure, 1 input in this many is compared
    std::optional<double> budget_ms;  // inputs slower than this are listed
    // Called on the calling thread about every 100 ms and at the end: inputs done, of all.
    std::function<void(std::size_t a_done, std::size_t a_total)> on_progress;
    // Once set, no further input starts; the report then says interrupted.
    const std::atomic<bool>* stop = nullptr;
};

// What one input gave.
struct input_outcome {
    // "candidates", "no_candidate", "refused", a diagnosis code of severity error, or
    // "run_failed" (the run ended with an error no finding names).
    std::string kind;
    std::string message;                  // the first error finding's message (or the run's error)
    double ms = 0.0;                      // the whole run, as the author would wait for it
    bool fast = false;                    // served by a fork worker
    bool compared = false;                // also run faithfully
    std::vector<std::string> differences; // fast against faithful; empty when the same
};

struct distinct_failure {
    std::string code;
    std::string message;
    std::size_t count = 0;
    std::size_t shortest = 0; // index of the shortest input (UTF-16 units, then first)
    std::vector<std::string> diagnosis_lines; // its faithful run's findings, first lines
    cases::case_run run;                      // that faithful run (probes as in run)
};

struct soak_report {
    std::vector<soak_input> inputs;
    std::vector<input_outcome> outcomes; // by input; kind empty for inputs not run
    std::size_t done = 0;
    bool interrupted = false;
    std::string language; // the interpreter command that ran the plug-in, when known
    // Fast mode: inputs served by workers, and why it fell back when it did.
    std::size_t fast_count = 0;
    std::string fallback_reason;
    std::size_t compared_count = 0;
    std::vector<std::size_t> differing;     // inputs whose fast and faithful runs differ
    std::vector<distinct_failure> failures; // by first occurrence
    std::vector<std::pair<std::string, std::size_t>> counts; // kind, count; by first occurrence
    // The bare interpreter's start in this run (median of several), as the floor of a run.
    std::optional<double> interpreter_start_ms;
    double wall_seconds = 0.0;
    unsigned jobs = 1;
};

// Runs every input against the plug-in. Never throws for a plug-in's failure.
soak_report run_soak(const debugger::plugin_entry& a_plugin, std::vector<soak_input> a_inputs,
                     const soak_options& a_options);

// The latency percentile (0-100) of the inputs that ran, nearest rank; 0 when none did.
double latency_percentile(const soak_report& a_report, double a_percent);

// Inputs that ran, slowest first, at most a_count.
std::vector<std::size_t> slowest_inputs(const soak_report& a_report, std::size_t a_count);

// True when any input failed (a kind other than candidates, no_candidate and refused) or a fast
// run differed from its faithful one.
bool soak_failed(const soak_report& a_report);

// Appends one case per distinct failure (its shortest input, no expectation beyond a run free
// of errors, so it fails until the plug-in is fixed); a_only, the failure of that index alone.
// An error text, or empty.
std::string save_failure_cases(const soak_report& a_report, const std::string& a_cases_path,
                               std::optional<std::size_t> a_only = std::nullopt);

} // namespace qiro_plugin::soak

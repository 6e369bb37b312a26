// Soak throughput, inputs per second on one core (-j 1): the fast mode (fork workers, with its
// one-in-100 faithful check) against faithful runs, beside the bare interpreter's start, for
// each sample plug-in, all in one run. Run through bench/soak_bench.sh (scratch HOME, system
// interpreters first on PATH).

#include "core/plugin_discovery.hpp"
#include "platform/command_runner.hpp"
#include "soak/soak_engine.hpp"
#include "text/string_encode.hpp"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

using namespace qiro_plugin;

// The samples beside the benchmark's build: build/bin/plugin.
debugger::plugin_entry sample(const std::string& a_file) {
    const std::string folder =
        (std::filesystem::path(QIRO_BENCH_BINARY_DIR) / "bin/plugin").string() + "/";
    return {string_encode::MultiByteUTF8ToWideChar(folder.c_str()),
            string_encode::MultiByteUTF8ToWideChar(a_file.c_str())};
}

// Forms with readings from SKK-JISYO.L when it is there, else the edge corpus over again.
std::vector<soak::soak_input> inputs(std::size_t a_count) {
    std::vector<soak::soak_input> all;
    try {
        all = soak::read_skk_dictionary(soak::skk_dictionary_path);
    } catch (const soak::corpus_error&) {
        while (all.size() < a_count) {
            auto edge = soak::edge_corpus();
            all.insert(all.end(), edge.begin(), edge.end());
        }
    }
    return soak::sample_inputs(std::move(all), a_count, 1);
}

void soak_inputs(benchmark::State& a_state, const std::string& a_file, bool a_fast,
                 std::size_t a_count) {
    const auto forms = inputs(a_count);
    for (auto _ : a_state) {
        soak::soak_options options;
        options.jobs = 1;
        options.fast = a_fast;
        const auto report = soak::run_soak(sample(a_file), forms, options);
        a_state.SetIterationTime(report.wall_seconds);
        a_state.counters["inputs_per_s"] =
            static_cast<double>(report.done) / std::max(report.wall_seconds, 1e-9);
        a_state.counters["served_fast"] = static_cast<double>(report.fast_count);
        if (soak::soak_failed(report)) {
            a_state.SkipWithError("the soak found failures or differences");
        }
    }
}

// The bare interpreter through the same shell: the floor of one faithful command.
void interpreter_start(benchmark::State& a_state, const std::string& a_command) {
    for (auto _ : a_state) {
        std::vector<char> std_output;
        std::vector<char> std_error;
        const auto started = std::chrono::steady_clock::now();
        utility::run_command(a_command, {}, std_output, std_error, true);
        a_state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
    }
    a_state.counters["starts_per_s"] =
        benchmark::Counter(static_cast<double>(a_state.iterations()), benchmark::Counter::kIsRate);
}

} // namespace

BENCHMARK_CAPTURE(interpreter_start, perl, "perl -e 1")
    ->UseManualTime()
    ->Iterations(40)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(soak_inputs, perl_fast, "sample_perl.pl", true, 1000)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(soak_inputs, perl_faithful, "sample_perl.pl", false, 60)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(interpreter_start, python, "python -c pass")
    ->UseManualTime()
    ->Iterations(40)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(soak_inputs, python_fast, "sample_python.py", true, 1000)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(soak_inputs, python_faithful, "sample_python.py", false, 60)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(interpreter_start, ruby, "ruby -e 1")
    ->UseManualTime()
    ->Iterations(40)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(soak_inputs, ruby_fast, "sample_ruby.rb", true, 1000)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(soak_inputs, ruby_faithful, "sample_ruby.rb", false, 60)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

// The command runner's cost for a trivial shell command against a bare spawn-and-wait of the
// same command: the difference is what the runner adds to every plug-in run.

#include "platform/command_runner.hpp"

#include <benchmark/benchmark.h>

#include <array>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace {

void bare_spawn_and_wait(benchmark::State& a_state) {
    std::string shell = "/bin/sh";
    std::string option = "-c";
    std::string line = "true";
    std::array<char*, 4> arguments{shell.data(), option.data(), line.data(), nullptr};
    for (auto _ : a_state) {
        pid_t pid = 0;
        if (posix_spawn(&pid, shell.c_str(), nullptr, nullptr, arguments.data(), environ) != 0) {
            a_state.SkipWithError("posix_spawn failed");
            break;
        }
        int status = 0;
        waitpid(pid, &status, 0);
        benchmark::DoNotOptimize(status);
    }
}

void run_command_true(benchmark::State& a_state) {
    std::vector<char> std_output;
    std::vector<char> std_error;
    for (auto _ : a_state) {
        int result = qiro_plugin::utility::run_command("true", {}, std_output, std_error, true);
        if (result != 0) {
            a_state.SkipWithError("run_command failed");
            break;
        }
        benchmark::DoNotOptimize(result);
    }
}

void run_command_small_output(benchmark::State& a_state) {
    std::vector<char> std_output;
    std::vector<char> std_error;
    for (auto _ : a_state) {
        int result = qiro_plugin::utility::run_command("echo syntax ok; echo warn >&2", {},
                                                       std_output, std_error, true);
        benchmark::DoNotOptimize(result);
        benchmark::DoNotOptimize(std_output.data());
    }
}

void run_command_large_output(benchmark::State& a_state) {
    const std::string line = "head -c " + std::to_string(a_state.range(0)) + " /dev/zero";
    std::vector<char> std_output;
    std::vector<char> std_error;
    for (auto _ : a_state) {
        int result = qiro_plugin::utility::run_command(line, {}, std_output, std_error, true);
        benchmark::DoNotOptimize(result);
    }
    a_state.SetBytesProcessed(static_cast<std::int64_t>(a_state.iterations()) * a_state.range(0));
}

} // namespace

BENCHMARK(bare_spawn_and_wait)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(run_command_true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(run_command_small_output)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(run_command_large_output)
    ->Arg(1 << 20)
    ->Arg(64 << 20)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// What the diagnosis adds to a good run: the analysis of a sample plug-in's real outputs (its
// companion document read from disk included) against a bare libxml2 parse of the same result
// document, the least any reading of the run costs. A failed run's analysis is shown beside.

#include "core/debug_runner.hpp"
#include "core/pane_text_sink.hpp"
#include "diagnosis/analyze.hpp"

#include <benchmark/benchmark.h>
#include <libxml/parser.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace {

namespace fs = std::filesystem;
using namespace qiro_plugin;

struct no_alerts : debugger::alert_sink {
    void show_alert(const std::string&) override {}
};

// One real run of the Python sample, from the plug-in folder beside the programs.
const diagnosis::run_evidence& sample_evidence() {
    static const diagnosis::run_evidence evidence = [] {
        const fs::path home = fs::temp_directory_path() / "qiro-diagnosis-bench";
        fs::create_directories(home);
        ::setenv("HOME", home.c_str(), 1);
        const std::string folder =
            (fs::canonical("/proc/self/exe").parent_path().parent_path() / "bin" / "plugin")
                .string() +
            "/";
        debugger::pane_text_sink panes;
        no_alerts alerts;
        debugger::debug_runner runner(panes, alerts);
        const auto report = runner.run(debugger::processing_request(
            {utf16_string(folder.begin(), folder.end()), u"sample_python.py"}, u"変換"));
        fs::remove_all(home);
        if (report.candidates.empty()) {
            throw std::runtime_error("the sample gave no candidate");
        }
        diagnosis::run_evidence result;
        result.plugin_folder = folder;
        result.plugin_file = "sample_python.py";
        result.language = "python";
        result.instance_made = true;
        result.syntax_check = {true, false, "syntax ok", "", false, false, 0, 20.0, 15.0};
        result.run = {
            true,          false, report.run_std_output, report.run_std_error, false, false, 0,
            report.run_ms, 15.0};
        result.document_parsed = report.document_parsed;
        result.candidate_count = report.candidates.size();
        return result;
    }();
    return evidence;
}

void diagnose_good_run(benchmark::State& a_state) {
    const auto& evidence = sample_evidence();
    for (auto _ : a_state) {
        auto findings = diagnosis::diagnose(evidence, diagnosis::ui_language::english);
        benchmark::DoNotOptimize(findings);
    }
}
BENCHMARK(diagnose_good_run)->Unit(benchmark::kMicrosecond);

void bare_libxml2_parse(benchmark::State& a_state) {
    const std::string& document = sample_evidence().run.std_output;
    for (auto _ : a_state) {
        xmlDocPtr parsed = xmlReadMemory(document.data(), static_cast<int>(document.size()),
                                         nullptr, nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR);
        benchmark::DoNotOptimize(parsed);
        xmlFreeDoc(parsed);
    }
}
BENCHMARK(bare_libxml2_parse)->Unit(benchmark::kMicrosecond);

void diagnose_failed_run(benchmark::State& a_state) {
    auto evidence = sample_evidence();
    evidence.run.std_output = "debug: looking up\n" + evidence.run.std_output;
    evidence.run.std_error = "Traceback (most recent call last):\n"
                             "  File \"/tmp/0123456789ABCDEF0123456789ABCDEF01234567.py\", line "
                             "214, in <module>\n    main()\n"
                             "  File \"" +
                             evidence.plugin_folder +
                             "sample_python.py\", line 9, in qiro_plugin_run_process\n"
                             "    return lookup(request)\nKeyError: 'x'\n";
    evidence.document_parsed = false;
    evidence.candidate_count = 0;
    for (auto _ : a_state) {
        auto findings = diagnosis::diagnose(evidence, diagnosis::ui_language::english);
        benchmark::DoNotOptimize(findings);
    }
}
BENCHMARK(diagnose_failed_run)->Unit(benchmark::kMicrosecond);

} // namespace

#include "cli/test_command.hpp"

#include "cases/case_runner.hpp"
#include "cases/case_snapshot.hpp"
#include "cases/junit_report.hpp"
#include "cli/cli_support.hpp"
#include "cli/debug_option.hpp"
#include "cli/sandbox_option.hpp"
#include "core/coverage_companion.hpp"
#include "coverage/coverage_writers.hpp"
#include "platform/command_runner.hpp"
#include "text/string_encode.hpp"
#include "text/utf8_text.hpp"

#include "build_version.hpp"

#include <CLI/CLI.hpp>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <set>

namespace qiro_plugin::cli {

namespace {

namespace fs = std::filesystem;

// Set by an interrupt: the cases running are ended and no further one starts, so that each run
// still removes its bridge file on its way out.
std::atomic<bool> g_interrupted{false};

void stop_session(int) {
    g_interrupted = true;
    utility::kill_running_commands();
}

// SIGINT, SIGTERM and SIGHUP stop the session instead of ending the process at once; a signal
// the caller chose to ignore stays ignored.
void stop_session_on_termination_signals() {
    struct sigaction action {};
    action.sa_handler = stop_session;
    sigemptyset(&action.sa_mask);
    for (const int signal_number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction previous {};
        if (sigaction(signal_number, nullptr, &previous) == 0 && previous.sa_handler == SIG_IGN) {
            continue;
        }
        sigaction(signal_number, &action, nullptr);
    }
}
using cases::cases_file;

struct session {
    std::vector<std::unique_ptr<cases_file>> files;
    std::set<fs::path> seen;
    bool bad_usage = false;

    void add(const fs::path& a_cases, const std::optional<fs::path>& a_plugin) {
        std::error_code error;
        const fs::path canonical = fs::weakly_canonical(a_cases, error);
        if (!seen.insert(error ? a_cases : canonical).second) {
            return;
        }
        debugger::plugin_entry plugin;
        if (a_plugin) {
            std::string folder = a_plugin->parent_path().string();
            if (folder.empty() || folder.back() != '/') {
                folder += '/';
            }
            plugin = {
                string_encode::MultiByteFilePathToWideChar(folder.c_str()),
                string_encode::MultiByteFilePathToWideChar(a_plugin->filename().string().c_str())};
        }
        auto file = std::make_unique<cases_file>(cases::read_cases_file(a_cases, plugin));
        if (!a_plugin) {
            file->cases.clear();
            file->problems.push_back({0, 0,
                                      "no plug-in beside it (" + file->path.stem().stem().string() +
                                          ".pl, .py or .rb)"});
        }
        files.push_back(std::move(file));
    }

    // Every plug-in of the folder with a cases file, and every cases file without a plug-in.
    void add_folder(const fs::path& a_folder) {
        const auto folder = string_encode::MultiByteFilePathToWideChar(
            (a_folder.string() + (a_folder.string().ends_with('/') ? "" : "/")).c_str());
        for (const auto& [plugin_folder, name] :
             debugger::find_plugin_module(folder, debugger::plugin_extensions())) {
            const fs::path plugin = fs::path(string_encode::to_utf8_marked(plugin_folder)) /
                                    string_encode::to_utf8_marked(name);
            std::error_code error;
            if (fs::is_regular_file(cases::cases_path_for(plugin), error)) {
                add(cases::cases_path_for(plugin), plugin);
            }
        }
        std::error_code error;
        std::vector<fs::path> orphans;
        for (const auto& entry : fs::directory_iterator(a_folder, error)) {
            const std::string name = entry.path().filename().string();
            if (name.ends_with(".cases.json") && !cases::plugin_for_cases(entry.path())) {
                orphans.push_back(entry.path());
            }
        }
        std::sort(orphans.begin(), orphans.end());
        for (const auto& orphan : orphans) {
            add(orphan, std::nullopt);
        }
    }

    void add_path(const std::string& a_path) {
        std::error_code error;
        const fs::path path = fs::absolute(a_path, error).lexically_normal();
        if (fs::is_directory(path, error)) {
            add_folder(path);
        } else if (!fs::is_regular_file(path, error)) {
            print_error("no file or folder \"" + a_path + "\"");
            bad_usage = true;
        } else if (path.filename().string().ends_with(".cases.json")) {
            add(path, cases::plugin_for_cases(path));
        } else if (fs::is_regular_file(cases::cases_path_for(path), error)) {
            add(cases::cases_path_for(path), path);
        } else {
            print_error("no cases file for " + a_path + ": write them into " +
                        cases::cases_path_for(path).string());
            bad_usage = true;
        }
    }
};

std::string file_label(const cases_file& a_file) {
    return a_file.path.filename().string();
}

void print_problems(const cases_file& a_file) {
    for (const auto& problem : a_file.problems) {
        std::string place = a_file.path.string();
        if (problem.line > 0) {
            place.append(":").append(std::to_string(problem.line));
            place.append(":").append(std::to_string(problem.column));
        }
        std::cerr << place << ": error: " << problem.message << '\n';
    }
}

void print_outcome(const cases_file& a_file, const cases::test_case& a_case,
                   const cases::case_outcome& a_outcome) {
    if (a_outcome.skipped) {
        std::cout << "SKIP " << file_label(a_file) << ": " << a_case.name << '\n';
        return;
    }
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.2f s", a_outcome.seconds);
    std::cout << (a_outcome.check.passed ? "PASS " : "FAIL ") << file_label(a_file) << ": "
              << a_case.name << " (" << seconds << ")\n";
    for (const auto& problem : a_outcome.check.problems) {
        std::cout << "    " << problem << '\n';
    }
    if (!a_outcome.check.diff.empty()) {
        std::cout << "    candidates (- expected, + actual):\n";
        for (const auto& line : a_outcome.check.diff) {
            std::cout << "    " << line << '\n';
        }
    }
    std::cout.flush();
}

bool wanted(const test_options& a_options, const cases::test_case& a_case) {
    return a_options.case_names.empty() ||
           std::find(a_options.case_names.begin(), a_options.case_names.end(), a_case.name) !=
               a_options.case_names.end();
}

// Writes the tracefile and the Cobertura document, prints one line per plug-in; false when a
// document could not be written or a plug-in's line coverage is below the threshold.
bool report_coverage(const test_options& a_options,
                     const debugger::coverage_collection& a_coverage) {
    for (const auto& problem : a_coverage.problems()) {
        std::cerr << "qiro-lumen: warning: " << problem << '\n';
    }
    const auto files = a_coverage.files();
    const fs::path folder = a_options.coverage_folder;
    std::error_code error;
    fs::create_directories(folder, error);
    const auto timestamp = std::chrono::duration_cast<std::chrono::milliseconds>(
                               std::chrono::system_clock::now().time_since_epoch())
                               .count();
    bool good = true;
    for (const auto& [name, text] :
         {std::pair{"lcov.info", coverage::lcov_tracefile(files)},
          std::pair{"cobertura.xml",
                    coverage::cobertura_xml(files, build_info::version_text("qiro-lumen"),
                                            static_cast<std::uint64_t>(timestamp))}}) {
        std::ofstream file(folder / name, std::ios::binary | std::ios::trunc);
        file << text;
        file.close();
        if (!file) {
            print_error("cannot write " + (folder / name).string());
            good = false;
        }
    }
    for (const auto& file : files) {
        const auto summary = coverage::summarize(file);
        std::cout << coverage::summary_line(fs::path(file.path).filename().string(), summary)
                  << '\n';
        const double percent = summary.lines_found == 0
                                   ? 100.0
                                   : 100.0 * static_cast<double>(summary.lines_hit) /
                                         static_cast<double>(summary.lines_found);
        if (percent < a_options.fail_under) {
            char text[160];
            std::snprintf(text, sizeof text, "%s: %.1f %% of its lines reached, under %g %%",
                          fs::path(file.path).filename().c_str(), percent, a_options.fail_under);
            print_error(text);
            good = false;
        }
    }
    std::cout << "coverage: " << (folder / "lcov.info").string() << ", "
              << (folder / "cobertura.xml").string() << '\n';
    return good;
}

} // namespace

// What a shell reports for a command ended by SIGINT.
constexpr int exit_interrupted = 130;

int command_test(const test_options& a_options) {
    session found;
    if (a_options.paths.empty()) {
        const std::string folder =
            string_encode::to_utf8_marked(chosen_plugin_folder(a_options.plugin_folder));
        std::error_code error;
        if (!fs::is_directory(folder, error)) {
            print_error("no plug-in folder " + folder);
            return exit_bad_usage;
        }
        found.add_folder(folder);
    }
    for (const auto& path : a_options.paths) {
        found.add_path(locate_named_file(path, a_options.plugin_folder).string());
    }
    if (found.bad_usage) {
        return exit_bad_usage;
    }
    if (found.files.empty()) {
        print_error("no cases files found: a plug-in's cases go into NAME.cases.json beside "
                    "NAME.py (or .rb, .pl)");
        return exit_bad_usage;
    }

    std::vector<cases::case_job> jobs;
    std::vector<std::pair<std::size_t, std::size_t>> places; // file, case
    bool bad_file = false;
    for (std::size_t file = 0; file < found.files.size(); ++file) {
        print_problems(*found.files[file]);
        bad_file = bad_file || !found.files[file]->problems.empty();
        for (std::size_t index = 0; index < found.files[file]->cases.size(); ++index) {
            const auto& the_case = found.files[file]->cases[index];
            if (wanted(a_options, the_case)) {
                jobs.push_back({found.files[file].get(), &the_case});
                places.emplace_back(file, index);
            }
        }
    }
    for (const auto& name : a_options.case_names) {
        if (std::none_of(jobs.begin(), jobs.end(),
                         [&](const auto& a_job) { return a_job.the_case->name == name; })) {
            print_error("no case named \"" + name + "\"");
            return exit_bad_usage;
        }
    }

    if (!a_options.debug.empty() && !a_options.coverage_folder.empty()) {
        print_error("--debug and --coverage do not combine: a debugger's pauses would be measured "
                    "as the case's run");
        return exit_bad_usage;
    }
    // A fork worker loads the plug-in once, before any case's run, and the tool joins only the
    // entry's command: what runs while the plug-in loads would go unmeasured.
    if (a_options.fast && !a_options.coverage_folder.empty()) {
        print_error("--fast and --coverage do not combine: the fast mode loads each plug-in once "
                    "for all its cases, outside the coverage tool, so the lines that run while it "
                    "loads would count as never reached; run --coverage without --fast");
        return exit_bad_usage;
    }
    if (!a_options.debug.empty() && jobs.size() != 1) {
        print_error("--debug debugs one case: name it with --case NAME");
        return exit_bad_usage;
    }

    stop_session_on_termination_signals();
    cases::run_options options;
    if (auto debug = debug_companion_of(a_options.debug)) {
        options.companions = [debug] {
            return std::vector<std::shared_ptr<debugger::entry_companion>>{debug};
        };
    }
    options.sandbox = sandbox_mode_of(a_options.sandbox);
    options.fast = a_options.fast;
    options.jobs = a_options.jobs;
    options.stop = &g_interrupted;
    // Each case's entry joins its language's coverage tool through its environment alone.
    std::optional<debugger::coverage_collection> coverage;
    if (!a_options.coverage_folder.empty()) {
        options.companions = [&coverage] {
            return std::vector<std::shared_ptr<debugger::entry_companion>>{coverage->companion()};
        };
        coverage.emplace();
    }
    // A command started between the interrupt and its kill is ended here.
    options.on_wait = [] {
        if (g_interrupted) {
            utility::kill_running_commands();
        }
    };
    std::set<std::string> fallbacks;
    options.on_done = [&](std::size_t a_index, const cases::case_outcome& a_outcome) {
        print_outcome(*jobs[a_index].file, *jobs[a_index].the_case, a_outcome);
        const std::string note = file_label(*jobs[a_index].file) + ": " + a_outcome.fast_fallback;
        if (!a_outcome.fast_fallback.empty() && fallbacks.insert(note).second) {
            print_error("fast mode off, ran faithfully: " + note);
        }
    };
    const auto outcomes = cases::run_cases(jobs, options);
    if (g_interrupted) {
        print_error("interrupted: the cases not yet run were skipped");
        return exit_interrupted;
    }

    std::size_t passed = 0;
    std::size_t failed = 0;
    std::vector<cases::suite_result> suites(found.files.size());
    for (std::size_t file = 0; file < found.files.size(); ++file) {
        suites[file].file = found.files[file].get();
        suites[file].outcomes.assign(found.files[file]->cases.size(), nullptr);
        failed += found.files[file]->problems.size();
    }
    for (std::size_t job = 0; job < jobs.size(); ++job) {
        suites[places[job].first].outcomes[places[job].second] = &outcomes[job];
        (outcomes[job].check.passed ? passed : failed) += 1;
    }

    bool write_failed = false;
    if (a_options.update) {
        for (std::size_t file = 0; file < found.files.size(); ++file) {
            std::vector<std::pair<std::size_t, const cases::case_run*>> runs;
            for (std::size_t index = 0; index < suites[file].outcomes.size(); ++index) {
                if (const auto* outcome = suites[file].outcomes[index]) {
                    runs.emplace_back(index, &outcome->run);
                }
            }
            if (runs.empty()) {
                continue;
            }
            // Rewriting a file means rewriting its broken parts too: those are the author's to fix.
            if (!found.files[file]->problems.empty()) {
                print_error("not updating " + found.files[file]->path.string() +
                            ": fix the errors above first");
                continue;
            }
            const auto changes = cases::update_expectations(*found.files[file], runs);
            bool any = false;
            for (const auto& change : changes) {
                any = any || change.changed;
                std::cout << (change.changed ? "updated " : "unchanged ")
                          << file_label(*found.files[file]) << ": " << change.name << '\n';
                for (const auto& line : change.lines) {
                    std::cout << "    " << line << '\n';
                }
            }
            if (any) {
                const auto error = cases::write_cases_document(found.files[file]->path,
                                                               found.files[file]->document);
                if (!error.empty()) {
                    print_error(error);
                    write_failed = true;
                }
            }
        }
    }

    if (!a_options.junit_file.empty()) {
        std::ofstream junit(a_options.junit_file, std::ios::binary | std::ios::trunc);
        junit << cases::junit_xml(suites);
        if (!junit.good()) {
            print_error("cannot write " + a_options.junit_file);
            write_failed = true;
        }
    }

    std::cout << passed << " passed, " << failed << " failed\n";
    const bool coverage_good = !coverage || report_coverage(a_options, *coverage);
    if (bad_file || write_failed) {
        return exit_bad_usage;
    }
    if (a_options.update) {
        return exit_success;
    }
    return failed == 0 && coverage_good ? exit_success : exit_not_run;
}

cli_command add_test_command(CLI::App& a_app) {
    auto options = std::make_shared<test_options>();
    auto* test = a_app.add_subcommand(
        "test", "Run the cases kept beside plug-ins (NAME.cases.json beside NAME.py) and report "
                "which pass.\nExit status: 0 all passed; 1 a case failed (or, with --fail-under, a "
                "plug-in's coverage is too low); 2 bad usage or a bad cases file.");
    test->add_option("PATH", options->paths,
                     "plug-ins, cases files or folders (default: the plug-in folder)");
    test->add_option("-j,--jobs", options->jobs, "cases run at once (default: one per core)")
        ->check(CLI::Range(1u, 256u));
    test->add_option("--junit", options->junit_file, "also write JUnit XML for CI to FILE");
    test->add_flag("--fast", options->fast,
                   "fast mode: one worker per plug-in and job loads the plug-in once and forks "
                   "each case's run from it (state kept between calls is never seen; a plug-in "
                   "that starts threads while it loads runs faithfully)");
    test->add_flag("--update", options->update,
                   "write what the runs gave as the cases' expectations, and show the changes");
    test->add_option("--case", options->case_names, "run only the case of this name (repeatable)")
        ->allow_extra_args(false);
    test->add_option("--plugin-folder", options->plugin_folder, plugin_folder_help);
    add_sandbox_option(*test, options->sandbox);
    add_debug_option(*test, options->debug);
    auto* coverage = test->add_flag("--coverage{coverage}", options->coverage_folder,
                                    "run each case under its language's coverage tool and write "
                                    "DIR/lcov.info and DIR/cobertura.xml (default DIR: coverage)")
                         ->option_text("[=DIR]");
    test->add_option("--fail-under", options->fail_under,
                     "with --coverage: fail when a plug-in's cases reach less than PERCENT of "
                     "its lines")
        ->check(CLI::Range(0.0, 100.0))
        ->option_text("PERCENT")
        ->needs(coverage);
    return {test, [options] { return command_test(*options); }};
}

} // namespace qiro_plugin::cli

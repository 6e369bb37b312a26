#include "core/debug_runner.hpp"
#include "core/pane_text_sink.hpp"
#include "diagnosis/analyze.hpp"
#include "platform/command_runner.hpp"
#include "support/run_fakes.hpp"
#include "support/scratch_folder.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <limits>
#include <optional>

namespace qiro_plugin::debugger {
namespace {

namespace fs = std::filesystem;
using diagnosis::finding;

// Real runs of the fixture plug-ins, in a home folder of their own.
class diagnosis_run : public ::testing::Test {
protected:
    diagnosis_run() : m_saved_path(std::getenv("PATH")) {
        ::setenv("HOME", m_home.path().c_str(), 1);
    }
    ~diagnosis_run() override { ::setenv("PATH", m_saved_path.c_str(), 1); }

    static run_report run(const fs::path& a_folder, const std::string& a_file,
                          probe_policy a_policy = probe_policy::after_failure) {
        pane_text_sink panes;
        testing::recording_sinks alerts;
        debug_runner runner(panes, alerts);
        const std::string folder = a_folder.string() + "/";
        auto request = processing_request({utf16_string(folder.begin(), folder.end()),
                                           utf16_string(a_file.begin(), a_file.end())},
                                          u"変換");
        request.options.probes = a_policy;
        return runner.run(request);
    }

    static const finding* find(const run_report& a_report, const std::string& a_code) {
        const auto& all = a_report.findings;
        const auto found = std::find_if(
            all.begin(), all.end(), [&](const finding& a_item) { return a_item.code == a_code; });
        return found == all.end() ? nullptr : &*found;
    }

    // The fixture's run has a finding of the code, placed in a_place_file at a_line.
    static void expect_finding(const std::string& a_file, const std::string& a_code,
                               std::optional<std::uint32_t> a_line, const run_report& a_report,
                               const std::string& a_place_file) {
        const finding* item = find(a_report, a_code);
        std::string codes;
        for (const auto& other : a_report.findings) {
            codes += other.code + ": " + other.message + "\n";
        }
        ASSERT_NE(item, nullptr) << a_file << " gave\n" << codes;
        EXPECT_EQ(item->line, a_line) << a_file << ": " << item->message;
        if (a_line) {
            ASSERT_TRUE(item->file) << a_file;
            EXPECT_EQ(fs::path(*item->file).filename(), a_place_file) << a_file;
        }
        EXPECT_FALSE(item->message.empty()) << a_file;
        EXPECT_EQ(item->message.find("0000"), std::string::npos)
            << "no bridge file name: " << item->message;
    }

    test_support::scratch_folder m_home{"qiro-diagnosis"};
    std::string m_saved_path;
    const fs::path m_fixtures = fs::path(QIRO_TEST_DATA_DIR) / "diagnosis";
    const fs::path m_samples = fs::path(QIRO_BINARY_DIR) / "bin" / "plugin";
};

TEST_F(diagnosis_run, each_mistake_gives_its_code_and_place_in_every_language) {
    // The mistakes placed at a line, at that line in Python, Ruby and Perl, then those each
    // bridge reports in its own way.
    std::vector<std::pair<std::string, std::array<std::optional<std::uint32_t>, 3>>> mistakes{
        {"syntax_error", {4, 3, 6}}, {"load_failed", {1, 1, 1}}, {"plugin_exception", {2, 3, 4}}};
    for (const char* code : {"entry_missing", "wrong_return_shape", "candidate_dropped"}) {
        mistakes.push_back({code, {}});
    }
    const char* const extensions[] = {".py", ".rb", ".pl"};
    // A mistake's three runs at a time: they wait on their interpreters far more than they
    // compute.
    for (const auto& [code, lines] : mistakes) {
        std::vector<std::future<run_report>> batch;
        for (const char* extension : extensions) {
            batch.push_back(std::async(std::launch::async, [this, file = code + extension] {
                return run(m_fixtures, file);
            }));
        }
        for (std::size_t language = 0; language < 3; ++language) {
            const std::string file = code + extensions[language];
            expect_finding(file, code, lines[language], batch[language].get(), file);
        }
    }
    // What is found in the companion document or in the bytes of the outputs alone, the same
    // for every language.
    expect_finding("companion_xml_invalid.py", "companion_xml_invalid", 5,
                   run(m_fixtures, "companion_xml_invalid.py"), "companion_xml_invalid.xml");
    for (const std::string code :
         {"stray_output", "document_invalid", "not_utf8", "output_too_large", "stream_cut"}) {
        expect_finding(code + ".py", code, {}, run(m_fixtures, code + ".py"), code + ".py");
    }
    expect_finding("no_language.txt", "no_language", {}, run(m_fixtures, "no_language.txt"),
                   "no_language.txt");
}

// Mistakes authors make, each read as what it is: the code, the line in the author's file, and
// words of the author's language and situation (in the message or the hint).
TEST_F(diagnosis_run, each_mistake_is_told_in_the_authors_terms) {
    using diagnosis::severity;
    struct row {
        const char* file;
        const char* code;
        std::optional<std::uint32_t> line;
        severity level;
        const char* said;   // in the message or the hint
        const char* unsaid; // in neither; empty: no such text
        probe_policy policy = probe_policy::after_failure;
    };
    const row rows[] = {
        {"load_failed.pl", "load_failed", 1, severity::error, "does not compile", "compiles but"},
        {"python_dropped_many.py",
         "candidate_dropped",
         {},
         severity::warning,
         "30 candidates are dropped (2, 3, 4, 5, 6, ...)",
         "",
         probe_policy::always},
        {"python_dropped_all.py",
         "candidate_dropped",
         {},
         severity::error,
         "2 candidates are dropped (1, 2)",
         ""},
        {"ruby_missing_end.rb", "syntax_error", 7, severity::error, "the if on line 3",
         "ruby_missing_end.rb"},
        {"perl_die_newline.pl", "plugin_exception", 4, severity::error, "no word for this reading",
         ""},
        {"ruby_class.rb", "entry_missing", 1, severity::error,
         "\"class Qiro_plugin\" on line 1 declares a class, not a module", ""},
        {"perl_package_case.pl", "entry_missing", 1, severity::error,
         "\"package Qiro_Plugin;\" on line 1", ""},
        {"python_parameters.py", "entry_missing", 3, severity::error,
         "takes 0 parameters; the bridge passes 1", ""},
        {"perl_flat_list.pl", "wrong_return_shape", 6, severity::error,
         "return (candidate => \\@list);", "stopped with an error"},
        {"ruby_relative.rb", "load_failed", 1, severity::error,
         "relative to the plug-in file's folder", "Perl"},
        {"python_recursion.py", "plugin_exception", 2, severity::error,
         "python_recursion.py:2 in walk × ", ""},
        {"perl_warning_first.pl", "plugin_exception", 8, severity::error,
         "stopped with an error: 変換できません", "Wide character"},
        {"perl_undef.pl", "wrong_return_shape", {}, severity::error, "returned undef", ""},
        {"perl_no_true_value.pl", "load_failed", 8, severity::error, "does not end in a true value",
         "[bridge]"},
        {"python_relative_file.py", "plugin_exception", 2, severity::error,
         "plug-in file's own folder", ""},
        {"python_input.py", "plugin_exception", 2, severity::error, "no standard input", ""},
        {"python_shift_jis.py", "syntax_error", 2, severity::error, "Save it as UTF-8", ""},
    };
    std::vector<std::future<run_report>> reports;
    for (const auto& item : rows) {
        reports.push_back(std::async(
            std::launch::async, [this, &item] { return run(m_fixtures, item.file, item.policy); }));
        if (reports.size() % 3 == 0) {
            reports[reports.size() - 3].wait();
        }
    }
    for (std::size_t index = 0; index < std::size(rows); ++index) {
        const auto& [file, code, line, level, said, unsaid, policy] = rows[index];
        const auto report = reports[index].get();
        expect_finding(file, code, line, report, file);
        ASSERT_FALSE(report.findings.empty()) << file;
        // The first finding is the mistake itself, said on one line as compilers do.
        const finding& first = report.findings.front();
        EXPECT_EQ(first.code, code) << file << ": " << first.message;
        EXPECT_EQ(first.level, level) << file << ": " << first.message;
        EXPECT_EQ(first.message.find('\n'), std::string::npos) << file << ": " << first.message;
        // Folded: one finding of the kind, besides notes such as the warnings before an error.
        EXPECT_EQ(std::count_if(report.findings.begin(), report.findings.end(),
                                [&](const finding& a_item) {
                                    return a_item.code == code && a_item.level != severity::note;
                                }),
                  1)
            << file << ": one finding of the kind";
        const std::string words = first.message + "\n" + first.hint;
        EXPECT_NE(words.find(said), std::string::npos) << file << ": " << words;
        if (*unsaid != '\0') {
            EXPECT_EQ(words.find(unsaid), std::string::npos) << file << ": " << words;
        }
    }
}

// A lone surrogate (or in Perl a code point past U+10FFFF) in a returned string reaches the
// output in the lax form, the document is refused as the input method refuses it, and the
// diagnosis says where and why.
TEST_F(diagnosis_run, characters_utf8_cannot_carry_fail_the_run_and_are_explained) {
    const struct {
        const char* file;
        const char* bytes;
        const char* cause;
    } cases[] = {
        {"lone_surrogate.py", "smile \xED\xA0\xBD", "lone surrogate"},
        {"lone_surrogate.pl", "smile \xED\xA0\xBD", "lone surrogate"},
        {"above_unicode.pl", "far \xF4\x90\x80\x80", "past U+10FFFF"},
    };
    for (const auto& [file, bytes, cause] : cases) {
        const auto report = run(m_fixtures, file);
        EXPECT_FALSE(report.document_parsed) << file;
        EXPECT_TRUE(report.candidates.empty()) << file;
        const auto at = report.run_std_output.find(bytes);
        const finding* item = find(report, "not_utf8");
        if (at == std::string::npos || item == nullptr) {
            ADD_FAILURE() << file << ": " << report.run_std_output;
            continue;
        }
        expect_finding(file, "not_utf8", {}, report, file);
        // The fault starts after the word and its blank.
        EXPECT_EQ(item->offset, at + std::string_view(bytes).find(' ') + 1) << file;
        EXPECT_NE(item->hint.find(cause), std::string::npos) << file << ": " << item->hint;
    }
}

// The bridge reads the first 100 candidates: the probe names the 101st and not the 100th.
TEST_F(diagnosis_run, the_probe_drops_candidates_from_the_101st) {
    for (const char* file : {"many_candidates.py", "many_candidates.rb", "many_candidates.pl"}) {
        for (const int count : {100, 101}) {
            ::setenv("QIRO_TEST_CANDIDATES", std::to_string(count).c_str(), 1);
            const auto report = run(m_fixtures, file, probe_policy::always);
            EXPECT_EQ(report.candidates.size(), 100U) << file << " " << count;
            std::vector<std::string> dropped;
            for (const auto& item : report.findings) {
                if (item.code == "candidate_dropped") {
                    dropped.push_back(item.message);
                }
            }
            if (count == 100) {
                EXPECT_TRUE(dropped.empty()) << file << ": " << dropped.front();
            } else {
                ASSERT_EQ(dropped.size(), 1U) << file;
                EXPECT_NE(dropped.front().find("first 100 candidates"), std::string::npos)
                    << file << ": " << dropped.front();
            }
        }
    }
    ::unsetenv("QIRO_TEST_CANDIDATES");
}

TEST_F(diagnosis_run, missing_and_slow_interpreters_are_named) {
    const fs::path empty = m_home.path() / "empty-bin";
    const fs::path shims = m_home.path() / "shim-bin";
    fs::create_directories(empty);
    fs::create_directories(shims);
    // A shim that works for a while before it starts the real interpreter, as a version
    // manager's does: twice what the check allows in the slowest-starting language, measured
    // on this machine, so that the test holds on any processor.
    const std::string loop = "i=0; while [ $i -lt $n ]; do i=$((i+1)); done";
    const double sample_iterations = 20000;
    double sample_ms = std::numeric_limits<double>::infinity();
    for (int attempt = 0; attempt < 2; ++attempt) {
        std::vector<char> output;
        std::vector<char> error;
        utility::run_command_report report;
        ASSERT_EQ(utility::run_command("n=20000; " + loop, {}, output, error, true, &report), 0);
        ASSERT_TRUE(report.cpu_ms);
        sample_ms = std::min(sample_ms, *report.cpu_ms);
    }
    const double allowed_ms =
        (diagnosis::expected_start_ms("ruby") + 100.0) * diagnosis::cpu_time_scale();
    const auto iterations =
        static_cast<long>(2 * allowed_ms / std::max(sample_ms, 1.0) * sample_iterations);
    for (const auto& [command, real] :
         {std::pair{"perl", "/usr/bin/perl"}, std::pair{"ruby", "/usr/bin/ruby"},
          std::pair{"python", "/usr/bin/python3"}}) {
        test_support::write_script(shims / command, "n=" + std::to_string(iterations) + "; " +
                                                        loop + "\nexec " + real + " \"$@\"\n");
    }
    for (const auto& [folder, code] :
         {std::pair{empty, "interpreter_missing"}, std::pair{shims, "interpreter_slow"}}) {
        const std::string path = folder == empty ? "" : ":/usr/bin:/bin";
        ::setenv("PATH", (folder.string() + path).c_str(), 1);
        for (const char* file : {"sample_python.py", "sample_ruby.rb", "sample_perl.pl"}) {
            expect_finding(file, code, {}, run(m_samples, file), file);
        }
    }
}

TEST_F(diagnosis_run, a_good_run_spawns_only_the_two_faithful_commands) {
    struct row {
        fs::path folder;
        const char* file;
        probe_policy policy;
        std::uint64_t commands; // syntax check, run, and the probe when there is one
    };
    const row rows[] = {
        {m_samples, "sample_python.py", probe_policy::after_failure, 2},
        {m_samples, "sample_ruby.rb", probe_policy::after_failure, 2},
        {m_samples, "sample_perl.pl", probe_policy::after_failure, 2},
        {m_samples, "sample_python.py", probe_policy::always, 3},
        {m_fixtures, "wrong_return_shape.py", probe_policy::after_failure, 3},
        {m_fixtures, "wrong_return_shape.py", probe_policy::never, 2},
    };
    for (const auto& [folder, file, policy, commands] : rows) {
        const auto before = utility::started_command_count();
        const auto report = run(folder, file, policy);
        EXPECT_EQ(utility::started_command_count() - before, commands) << file;
        if (folder == m_samples) {
            EXPECT_FALSE(report.candidates.empty()) << file;
            EXPECT_FALSE(diagnosis::has_error(report.findings)) << file;
        }
    }
}

// The runner ends a hang the same way whatever the language.
TEST_F(diagnosis_run, a_hang_is_reported_with_its_partial_standard_error) {
    const auto before = utility::started_command_count();
    const auto report = run(m_fixtures, "timed_out.py");
    EXPECT_EQ(utility::started_command_count() - before, 2U) << "no probe of a hang";
    const finding* item = find(report, "timed_out");
    ASSERT_NE(item, nullptr);
    EXPECT_NE(item->hint.find("waiting for the server"), std::string::npos) << item->hint;
    ASSERT_TRUE(report.timed_out_after_s);
    EXPECT_GE(*report.timed_out_after_s, 30.0);
}

} // namespace
} // namespace qiro_plugin::debugger

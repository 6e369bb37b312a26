// Plug-ins that misbehave on purpose, run through qiro-lumen as a process: whatever the plug-in
// does, the program ends, reports it, leaves no file or process of its own behind, and the next
// ordinary run works.
#include "support/cli_process.hpp"
#include "support/process_scan.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <future>
#include <set>
#include <sys/stat.h>
#include <thread>

namespace qiro_plugin::cli::testing {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t stream_limit = 64 * 1024 * 1024;
constexpr std::size_t document_limit = 10 * 1024 * 1024;
const char* const extensions[] = {".pl", ".rb", ".py"};

// A plug-in in the language of a_extension whose run entry does a_body first, then returns one
// candidate: its own file name when a_own_name, else "ok".
std::string plugin_source(const std::string& a_extension, const std::string& a_body,
                          bool a_own_name = false) {
    if (a_extension == ".pl") {
        return "package Qiro_plugin;\nuse File::Basename;\nsub run_process {\n" + a_body +
               ";\nreturn ('candidate' => [{'hyoki' => " +
               (a_own_name ? "basename(__FILE__)" : "'ok'") + "}]);\n}\n1;\n";
    }
    if (a_extension == ".rb") {
        return "module Qiro_plugin\ndef run_process(request)\n" + a_body +
               "\n{'candidate' => [{'hyoki' => " +
               (a_own_name ? "File.basename(__FILE__)" : "'ok'") + "}]}\nend\nend\n";
    }
    return "import os, signal, subprocess, sys, time\ndef qiro_plugin_run_process(request):\n    " +
           a_body + "\n    return {'candidate': [{'hyoki': " +
           (a_own_name ? "os.path.basename(__file__)" : "'ok'") + "}]}\n";
}

// One misbehaviour in each language that shows it; an empty body means "not in this language".
struct hostile_case {
    const char* name;
    std::string bodies[3]; // Perl, Ruby, Python
    std::set<int> statuses;
    std::set<std::string> left_in_data_folder = {}; // files the plug-in itself made
};

// A sandbox of its own per run, so that runs can go in parallel; everything a run starts
// carries a mark in its environment, and its temporary folder is private.
class hostile_run {
public:
    hostile_run() {
        m_sandbox.environment["QIRO_HOSTILE_MARK"] = m_mark;
        m_sandbox.environment["TMPDIR"] = (m_sandbox.root() / "tmp").string();
        fs::create_directories(m_sandbox.root() / "tmp");
        // The ordinary run first: it makes the data folder, whose content is then known.
        expect_ordinary_run_works();
        m_data_before = test_support::names_in(data_folder());
    }

    fs::path data_folder() const {
        return m_sandbox.home() / "Library" / "Preferences" / "QIRO Lumen";
    }
    fs::path plugins() const { return m_sandbox.plugins(); }
    void set(const std::string& a_name, const std::string& a_value) {
        m_sandbox.environment[a_name] = a_value;
    }

    process_result run(const std::string& a_plugin, bool a_json = true) const {
        std::vector<std::string> arguments{"run", "--plugin-folder", plugins().string()};
        if (a_json) {
            arguments.push_back("--json");
        }
        arguments.insert(arguments.end(), {a_plugin, "変換"});
        return m_sandbox.run(arguments);
    }

    void expect_ordinary_run_works() const {
        const auto result = run("echo_request.py", false);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_THAT(result.out, ::testing::HasSubstr("-- 1 candidate"));
    }

    // Nothing of the run is left: no process, no bridge file, nothing in the temporary folder.
    void expect_nothing_left(const std::set<std::string>& a_made_by_plugin, const char* a_case) {
        EXPECT_TRUE(
            wait_for([this] { return test_support::processes_mentioning(m_mark, "environ") == 0; },
                     std::chrono::seconds(3)))
            << a_case;
        auto expected = m_data_before;
        expected.insert(a_made_by_plugin.begin(), a_made_by_plugin.end());
        EXPECT_EQ(test_support::names_in(data_folder()), expected) << a_case;
        EXPECT_THAT(test_support::names_in(m_sandbox.root() / "tmp"), ::testing::IsEmpty())
            << a_case;
        expect_ordinary_run_works();
    }

private:
    cli_sandbox m_sandbox;
    std::string m_mark = "QIRO_HOSTILE_MARK=" + m_sandbox.root().filename().string();
    std::set<std::string> m_data_before;
};

// Runs each case in each of its languages; every run in a sandbox of its own, all at once, so
// that cases which end at the 30-second time-out cost that time once.
void run_cases(const std::vector<hostile_case>& a_cases) {
    std::vector<std::future<void>> runs;
    for (const auto& the_case : a_cases) {
        for (int language = 0; language < 3; ++language) {
            if (the_case.bodies[language].empty()) {
                continue;
            }
            auto one = [&the_case, language] {
                hostile_run run;
                const std::string file = std::string("hostile") + extensions[language];
                test_support::write_file(
                    run.plugins() / file,
                    plugin_source(extensions[language], the_case.bodies[language]));
                const auto result = run.run(file);
                const std::string label = std::string(the_case.name) + " " + file;
                EXPECT_THAT(the_case.statuses, ::testing::Contains(result.status))
                    << label << "\n"
                    << result.err.substr(0, 2000);
                if (result.status == 0) {
                    EXPECT_EQ(parse_json(result)["candidates"][0]["title"], "ok") << label;
                }
                run.expect_nothing_left(the_case.left_in_data_folder, label.c_str());
            };
            runs.push_back(std::async(std::launch::async, one));
        }
    }
    for (auto& run : runs) {
        run.get();
    }
}

TEST(hostile, endless_output_hangs_and_lingering_children_end_at_the_time_out) {
    run_cases({{"endless output",
                {"$| = 1; print 'x' x 65536 while 1",
                 "loop { $stdout.write('x' * 65536); $stderr.write('y' * 65536) }",
                 "while True: sys.stderr.write('x' * 65536)"},
                {1}},
               {"hang", {"sleep 3600", "sleep 3600", "time.sleep(3600)"}, {1}},
               {"child keeps the pipes open",
                {"system('sleep 3600 &')", "Process.detach(spawn('sleep', '3600'))",
                 "subprocess.Popen(['sleep', '3600'])"},
                {1}}});
}

TEST(hostile, crashes_and_plugins_that_touch_their_own_files) {
    run_cases({{"SIGSEGV",
                {"kill 'SEGV', $$", "Process.kill(:SEGV, Process.pid)",
                 "os.kill(os.getpid(), signal.SIGSEGV)"},
                {1}},
               {"abort",
                {"require POSIX; POSIX::abort()", "Process.kill(:ABRT, Process.pid)", "os.abort()"},
                {1}},
               {"deletes its own file",
                {"unlink __FILE__", "File.delete(__FILE__)", "os.remove(__file__)"},
                {0}},
               {"rewrites its own file",
                {"open(my $f, '>', __FILE__); print $f 'sub {'; close $f",
                 "File.write(__FILE__, 'def (')", "open(__file__, 'w').write('def (')"},
                {0}},
               {"deletes the bridge it runs from",
                {"unlink $0", "File.delete($0)", "os.remove(sys.argv[0])"},
                {0}},
               {"writes into the data folder",
                {"open(my $f, '>', 'note.txt'); close $f", "File.write('note.txt', '')",
                 "open('note.txt', 'w').close()"},
                {0},
                {"note.txt"}}});
}

// The streams are cut and read by the runner whatever the language; Python floods them.
TEST(hostile, a_flood_keeps_its_first_64_mib_and_the_candidates) {
    hostile_run run;
    test_support::write_file(
        run.plugins() / "flood.py",
        plugin_source(".py", "[sys.stderr.write('z' * 1048576) for _ in range(70)]"));
    const auto result = run.run("flood.py", false);
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, ::testing::HasSubstr("-- 1 candidate\n1. ok\n"));
    // The pane holds the kept 64 MiB exactly; the diagnosis then says that the rest was cut.
    const std::string pane = "\r\n" + std::string(stream_limit, 'z') + "\r\n";
    EXPECT_TRUE(result.err.compare(0, pane.size(), pane) == 0);
    EXPECT_THAT(result.err.substr(std::min(pane.size(), result.err.size())),
                ::testing::HasSubstr("was cut at 64 MiB"));
    run.expect_nothing_left({}, "flood");
}

TEST(hostile, a_result_document_one_byte_over_the_limit_loses_nothing) {
    // The bridges write at most 100 short items, so the plug-in writes the document itself,
    // QIRO_SIZE bytes of items padded with line feeds, and leaves before the bridge can.
    hostile_run run;
    test_support::write_file(
        run.plugins() / "big.py",
        plugin_source(
            ".py",
            R"(h = '<?xml version="1.0" encoding="UTF-8" ?>\n\n<itemlist>\n'; i = '\t<item type="script_candidate">\n\t\t<title>a</title>\n\t</item>\n'; f = '</itemlist>\n'; r = int(os.environ['QIRO_SIZE']) - len(h) - len(f); k = r // len(i); sys.stdout.write(h + i * k + '\n' * (r - k * len(i)) + f); sys.stdout.flush(); os._exit(0))"));
    run.set("QIRO_SIZE", std::to_string(document_limit));
    auto result = run.run("big.py");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(parse_json(result)["run_stdout"].get<std::string>().size(), document_limit);
    run.set("QIRO_SIZE", std::to_string(document_limit + 1));
    result = run.run("big.py");
    // Over the reader's limit the run either reports the document as not parsed or ends
    // with the run error; either way no candidate comes from it.
    EXPECT_THAT((std::set<int>{1, 3}), ::testing::Contains(result.status));
    const auto report = parse_json(result);
    EXPECT_THAT(report["candidates"], ::testing::IsEmpty());
    if (result.status == 1) {
        EXPECT_EQ(report["run_stdout"].get<std::string>().size(), document_limit + 1);
    }
    run.expect_nothing_left({}, "big document");
}

TEST(hostile, file_names_and_companion_documents_that_fight_back) {
    const std::string names[] = {"a;b|c&d$(touch pwned)`touch pwned`'e\"f<g>*?[h] ~!#", "new\nline",
                                 "変換 プラグイン"};
    for (const char* extension : extensions) {
        hostile_run run;
        for (const auto& name : names) {
            const std::string file = name + extension;
            test_support::write_file(run.plugins() / file, plugin_source(extension, "", true));
            // With a preference screen the plug-in also gets its settings folder's path.
            test_support::write_file(
                run.plugins() / (name + ".xml"),
                "<plugin_preference><name>" + std::string("x") +
                    "</name><preference>true</preference></plugin_preference>");
            const auto result = run.run(file);
            EXPECT_EQ(result.status, 0) << file << "\n" << result.err;
            // A title's line break reads as a blank, as every field's does.
            std::string title = file;
            std::replace(title.begin(), title.end(), '\n', ' ');
            EXPECT_EQ(parse_json(result)["candidates"][0]["title"], title);
        }
        run.expect_nothing_left({"x"}, extension);
    }

    // The companion document cannot be read or is too long: the plug-in still runs.
    hostile_run run;
    const auto xml = run.plugins() / "odd.xml";
    const std::function<void()> make_odd[] = {
        [&] { fs::create_directory(xml); },
        [&] { ::mkfifo(xml.c_str(), 0600); },
        [&] { fs::create_symlink(run.plugins() / "missing", xml); },
        [&] { fs::create_symlink(xml, xml); },
        [&] {
            test_support::write_file(xml, "<plugin_preference/>");
            fs::permissions(xml, fs::perms::none);
        },
        [&] {
            test_support::write_file(xml, "<plugin_preference><name>" +
                                              std::string(11 * 1024 * 1024, 'n') +
                                              "</name></plugin_preference>");
        }};
    test_support::write_file(run.plugins() / "odd.py", plugin_source(".py", "pass"));
    for (const auto& make : make_odd) {
        make();
        const auto result = run.run("odd.py");
        // An 11 MiB document is refused by the reader, which may end the run with its error.
        EXPECT_THAT((std::set<int>{0, 3}), ::testing::Contains(result.status)) << xml;
        fs::remove_all(xml);
    }
    run.expect_nothing_left({}, "companion documents");
}

} // namespace
} // namespace qiro_plugin::cli::testing

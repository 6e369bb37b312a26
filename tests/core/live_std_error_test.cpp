#include "core/debug_runner.hpp"
#include "core/live_std_error.hpp"
#include "core/pane_text_sink.hpp"
#include "platform/command_runner.hpp"
#include "support/run_fakes.hpp"
#include "support/scratch_folder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace qiro_plugin::debugger {
namespace {

TEST(std_error_tail, keeps_the_last_lines_and_bytes_cut_between_characters) {
    EXPECT_EQ(std_error_tail("one\r\ntwo\nthree\nfour\n", 2, 100), "three\nfour");
    EXPECT_EQ(std_error_tail("one\ntwo\nthree, unfinished", 2, 100), "two\nthree, unfinished");
    EXPECT_EQ(std_error_tail("only\n", 3, 100), "only");
    EXPECT_EQ(std_error_tail("text\n", 0, 100), "");
    // "変換" is E5 A4 89 E6 8F 9B: four bytes back start inside the first character.
    EXPECT_EQ(std_error_tail("x\xE5\xA4\x89\xE6\x8F\x9B", 4, 4), "換");
    // The child is half-way through a character: it shows at the next look.
    EXPECT_EQ(std_error_tail("a\n\xE5\xA4", 4, 100), "a");
    EXPECT_EQ(std_error_tail("a\nb\xF0\x9F\x98", 4, 100), "a\nb");
    // Bytes that are not UTF-8 are marked, so the text is always UTF-8.
    EXPECT_EQ(std_error_tail("\xFF\xFE ok\n", 4, 100), "\uFFFD\uFFFD ok");
}

// What the window is told while the entry runs, and what its panes get.
class watching_sink : public pane_text_sink {
public:
    void show_std_error_so_far(const std::string& a_last_lines) override {
        shown.push_back(a_last_lines);
        if (stop_on_first) {
            utility::stop_running_commands();
        }
    }
    std::vector<std::string> shown;
    bool stop_on_first = false;
};

// The entry writes its progress on standard error, then goes on until it is stopped, or writes
// more and ends once the run has been told of the first line.
TEST(live_std_error, a_run_shows_progress_apart_from_the_panes_and_a_stop_leaves_them_alone) {
    test_support::scratch_folder home;
    ::setenv("HOME", home.path().c_str(), 1);
    ::setenv("PATH", ("/usr/bin:/bin:" + std::string(std::getenv("PATH"))).c_str(), 1);
    const auto go_on = home.path() / "go_on";
    test_support::write_file(home.path() / "slow.py",
                             "import os, sys, time\n"
                             "def qiro_plugin_run_process(request):\n"
                             "    print('step 1', file=sys.stderr, flush=True)\n"
                             "    while not os.path.exists('" +
                                 go_on.string() +
                                 "'):\n"
                                 "        time.sleep(0.01)\n"
                                 "    print('step 2', file=sys.stderr, flush=True)\n"
                                 "    return {'candidate': [{'hyoki': 'x'}]}\n");
    const std::string folder = home.path().string() + "/";
    const plugin_entry plugin{utf16_string(folder.begin(), folder.end()), u"slow.py"};
    watching_sink panes;
    testing::recording_sinks alerts;
    debug_runner runner(panes, alerts);

    panes.stop_on_first = true;
    const auto stopped = runner.run(processing_request(plugin, u"x"));
    ASSERT_EQ(panes.shown.size(), 1u);
    EXPECT_EQ(panes.shown.front(), "step 1");
    ASSERT_TRUE(stopped.timed_out_after_s.has_value());
    // The syntax check's outputs once, nothing of the stopped entry.
    EXPECT_EQ(panes.std_output_utf8(), "syntax ok\r\n");
    EXPECT_EQ(panes.std_error_output_utf8(), "\r\n");
    EXPECT_TRUE(stopped.run_std_output.empty() && stopped.run_std_error.empty());

    panes.stop_on_first = false;
    panes.shown.clear();
    test_support::write_file(go_on, "");
    const auto completed = runner.run(processing_request(plugin, u"x"));
    ASSERT_EQ(completed.candidates.size(), 1u);
    ASSERT_FALSE(panes.shown.empty());
    EXPECT_EQ(panes.shown.back(), "step 1\nstep 2");
    EXPECT_EQ(panes.std_error_output_utf8(), "\r\nstep 1\nstep 2\n\r\n");
    EXPECT_EQ(alerts.log(), "");
}

} // namespace
} // namespace qiro_plugin::debugger

#include "runtime/runtime_fixture.hpp"
#include "support/process_scan.hpp"

#include <gtest/gtest.h>

#include <signal.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

namespace {

class sleeping_plugin : public qiro_test::runtime_fixture {};

} // namespace

TEST_F(sleeping_plugin, run_that_never_answers_is_abandoned_and_leaves_nothing) {
    qiro_test::write_file(m_plugins / "sleeps.py",
                          "import os, time\ndef qiro_plugin_run_process(request):\n"
                          "    with open(os.environ['QIRO_TEST_ECHO_FILE'], 'w') as echo_file:\n"
                          "        echo_file.write(str(os.getpid()))\n"
                          "    while True:\n        time.sleep(3600)\n");
    const auto instance = checked_instance(m_plugins, "sleeps.py");
    EXPECT_TRUE(process(*instance)->get_candidates().empty());
    // The abandoned command changes nothing: the outputs are still the syntax check's.
    EXPECT_EQ(instance->get_last_std_output_string(), "syntax ok");
    EXPECT_TRUE(instance->get_load_error_message().empty());
    EXPECT_TRUE(bridge_files().empty());

    const std::string pid_text = qiro_test::read_file(m_echo_file);
    ASSERT_FALSE(pid_text.empty());
    EXPECT_TRUE(test_support::wait_for([&] { return test_support::is_ended(pid_text); },
                                       std::chrono::seconds(5)));
}

#include "diagnosis/analyze.hpp"

#include <gtest/gtest.h>

namespace qiro_plugin::diagnosis {
namespace {

bool reported_slow(const std::string& a_language, double a_cpu_ms, double a_scale) {
    run_evidence evidence;
    evidence.language = a_language;
    evidence.instance_made = true;
    evidence.syntax_check.ran = true;
    evidence.syntax_check.cpu_ms = a_cpu_ms;
    evidence.cpu_time_scale = a_scale;
    for (const auto& found : diagnose(evidence, ui_language::english)) {
        if (found.code == codes::interpreter_slow) {
            return true;
        }
    }
    return false;
}

// On a processor three times slower or faster than the reference one, a plain start is not
// reported and a start with a shim's work of the same proportion is.
TEST(start_time, a_slow_start_is_judged_against_the_machines_speed) {
    for (const double scale : {1.0 / 3.0, 1.0, 3.0}) {
        for (const char* language : {"perl", "ruby", "python"}) {
            const double plain = expected_start_ms(language) * scale;
            EXPECT_FALSE(reported_slow(language, plain, scale)) << language << " at " << scale;
            EXPECT_FALSE(reported_slow(language, plain + 90.0 * scale, scale))
                << language << " at " << scale;
            EXPECT_TRUE(reported_slow(language, plain + 110.0 * scale, scale))
                << language << " at " << scale;
        }
    }
    // Measured once, then the same for the whole process.
    const double measured = cpu_time_scale();
    EXPECT_GE(measured, 0.1);
    EXPECT_LE(measured, 10.0);
    EXPECT_EQ(cpu_time_scale(), measured);
}

} // namespace
} // namespace qiro_plugin::diagnosis

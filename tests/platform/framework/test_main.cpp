// Runs the cases inside a widget application on a private home folder.
#include <QApplication>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // The D-Bus connection runs threads of its own, so death tests start afresh.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    setenv("QT_QPA_PLATFORM", "offscreen", 0);

    // Qt may keep caches under the home folder; death-test children reuse the parent's.
    std::filesystem::path home;
    if (std::getenv("QIRO_FRAMEWORK_TEST_HOME") == nullptr) {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "qiro-framework-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            return 2;
        }
        home = pattern;
        setenv("QIRO_FRAMEWORK_TEST_HOME", pattern.c_str(), 1);
        setenv("HOME", pattern.c_str(), 1);
        unsetenv("XDG_CACHE_HOME");
        unsetenv("XDG_CONFIG_HOME");
    }

    int result = 0;
    {
        QApplication application(argc, argv);
        result = RUN_ALL_TESTS();
    }
    if (!home.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(home, ignored);
    }
    return result;
}

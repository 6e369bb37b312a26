// Runs the cases inside a core application, with a private folder as the home folder.
#include <QCoreApplication>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // The D-Bus connection runs threads of its own, so death tests start afresh.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // Death-test children reuse their parent's folder, which the parent removes at the end.
    std::string folder;
    if (std::getenv("QIRO_FRAMEWORK_TEST_FOLDER") == nullptr) {
        folder = (std::filesystem::temp_directory_path() / "qiro-framework-XXXXXX").string();
        if (mkdtemp(folder.data()) == nullptr) {
            return 2;
        }
        setenv("QIRO_FRAMEWORK_TEST_FOLDER", folder.c_str(), 1);
        setenv("HOME", folder.c_str(), 1);
    }
    QCoreApplication application(argc, argv);
    const int result = RUN_ALL_TESTS();
    if (!folder.empty()) {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    return result;
}

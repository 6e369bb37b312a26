// Runs the cases inside a core application, with a private folder as the home folder.
#include "support/scratch_folder.hpp"

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // The D-Bus connection runs threads of its own, so death tests start afresh.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // Death-test children reuse their parent's folder, which the parent removes at the end.
    std::optional<test_support::scratch_folder> folder;
    if (std::getenv("QIRO_FRAMEWORK_TEST_FOLDER") == nullptr) {
        folder.emplace("qiro-framework");
        setenv("QIRO_FRAMEWORK_TEST_FOLDER", folder->path().c_str(), 1);
        setenv("HOME", folder->path().c_str(), 1);
    }
    QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

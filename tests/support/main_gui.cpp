// Test entry point for widget tests (run on the offscreen platform).
#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char **argv) {
    // What Qt and GLib keep in the run-time folder goes to one of the test's own.
    QTemporaryDir runtime(QDir::tempPath() + QStringLiteral("/kestrel-test-run-XXXXXX"));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

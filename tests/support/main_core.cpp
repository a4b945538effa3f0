// Test entry point for tests that need an event loop but no display.
#include <QCoreApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char **argv) {
    // What Qt and GLib keep in the run-time folder goes to one of the test's own.
    QTemporaryDir runtime(QDir::tempPath() + QStringLiteral("/kestrel-test-run-XXXXXX"));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
    QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

// Test entry point for tests that need an event loop but no display.
#include <QCoreApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char **argv) {
    QTemporaryDir runtime; // what Qt and GLib keep in the run-time folder goes with it
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
    QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

// Test entry point for widget tests (run on the offscreen platform).
#include <QApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char **argv) {
    QTemporaryDir runtime; // what Qt and GLib keep in the run-time folder goes with it
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

// Test entry point: widget tests (KESTREL_TEST_WIDGETS) run on the offscreen
// platform; the others have an event loop but no display.
#ifdef KESTREL_TEST_WIDGETS
#include <QApplication>
using Application = QApplication;
#else
#include <QCoreApplication>
using Application = QCoreApplication;
#endif
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char **argv) {
    QTemporaryDir runtime; // what Qt and GLib keep in the run-time folder goes with it
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
    Application application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

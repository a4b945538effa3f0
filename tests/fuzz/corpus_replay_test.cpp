// Every input a fuzzer kept runs through its target again, quickly and keeping
// the target's properties; the sanitizer build checks the memory side of that.
#include "tests/fuzz/fuzztarget.h"

#include <QDir>
#include <QElapsedTimer>
#include <gtest/gtest.h>

std::map<std::string, FuzzTarget> &FuzzTargets() {
    static std::map<std::string, FuzzTarget> targets;
    return targets;
}

void FuzzCheckFailed(const char *condition, const char *file, int line) {
    ADD_FAILURE_AT(file, line) << "the input breaks " << condition;
}

TEST(FuzzCorpora, EveryKeptInputRunsCleanAndQuickly) {
    EXPECT_EQ(FuzzTargets().size(), 4u);
    for (const auto &[name, target] : FuzzTargets()) {
        const QDir corpus(QStringLiteral(KESTREL_FUZZ_CORPORA "/") + QString::fromStdString(name));
        EXPECT_GE(corpus.entryList(QDir::Files).size(), 10) << name;
        for (const QFileInfo &file : corpus.entryInfoList(QDir::Files)) {
            SCOPED_TRACE(file.filePath().toStdString());
            QFile input(file.filePath());
            ASSERT_TRUE(input.open(QIODevice::ReadOnly));
            const QByteArray bytes = input.readAll();
            QElapsedTimer timer;
            timer.start();
            target(reinterpret_cast<const std::uint8_t *>(bytes.constData()), bytes.size());
            EXPECT_LT(timer.elapsed(), 2000);
        }
    }
}

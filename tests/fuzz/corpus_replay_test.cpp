// Every input the fuzzer keeps loads without crashing, hanging or leaking; the
// sanitizer build checks the memory side of that.
#include <QDir>
#include <QElapsedTimer>
#include <gtest/gtest.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

TEST(PrefsFileCorpus, EveryKeptInputLoadsQuickly) {
    const QDir corpus(QStringLiteral(KESTREL_PREFS_CORPUS));
    const QStringList files = corpus.entryList(QDir::Files);
    ASSERT_GE(files.size(), 10);
    for (const QString &name : files) {
        QFile file(corpus.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QElapsedTimer timer;
        timer.start();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.constData()),
                               std::size_t(bytes.size()));
        EXPECT_LT(timer.elapsed(), 2000) << name.toStdString();
    }
}

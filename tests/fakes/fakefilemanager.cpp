// A stand-in for the desktop's file manager, for the tests. "LOG [--silent]" owns
// org.freedesktop.FileManager1 and records each call (silent, it never answers);
// "--program LOG ARG..." records how it was started, as an application, and exits.
// Each record is a line of JSON in LOG: {"method", "uris", "pid", "token"}, the
// token being the startup id a call carried or the program was started with.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

QString logPath;
bool silent = false;

void Record(const QString &method, const QStringList &uris, const QString &token) {
    QFile file(logPath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    const QJsonObject record{{u"method"_s, method},
                             {u"uris"_s, QJsonArray::fromStringList(uris)},
                             {u"pid"_s, qint64(::getpid())},
                             {u"token"_s, token}};
    file.write(QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n');
}

class FileManager1 : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public Q_SLOTS:
    void ShowFolders(const QStringList &uris, const QString &token) { Answer(uris, token); }
    void ShowItems(const QStringList &uris, const QString &token) { Answer(uris, token); }
    void ShowItemProperties(const QStringList &uris, const QString &token) { Answer(uris, token); }

private:
    void Answer(const QStringList &uris, const QString &token) {
        Record(message().member(), uris, token);
        setDelayedReply(silent); // and never replies
    }
};

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    QStringList arguments = application.arguments().mid(1);
    if (arguments.size() >= 2 && arguments.first() == u"--program"_s) {
        logPath = arguments[1];
        Record(u"Program"_s, arguments.mid(2), qEnvironmentVariable("DESKTOP_STARTUP_ID"));
        return 0;
    }
    if (arguments.isEmpty() || arguments.size() > 2)
        return 2;
    logPath = arguments.first();
    silent = arguments.value(1) == u"--silent"_s;

    FileManager1 service;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(u"/org/freedesktop/FileManager1"_s, &service,
                            QDBusConnection::ExportAllSlots) ||
        !bus.registerService(u"org.freedesktop.FileManager1"_s))
        return 1;
    Record(u"Started"_s, {}, {});
    return application.exec();
}

#include "fakefilemanager.moc"

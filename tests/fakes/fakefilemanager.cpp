// A stand-in for the desktop's file manager, for the tests.
//
//   kestrel-fake-filemanager LOG [--silent]   owns org.freedesktop.FileManager1 on
//                                             the session bus and records each call;
//                                             silent, it never answers one
//   kestrel-fake-filemanager --program LOG ARG...  records how it was started, then
//                                             exits (an application opening files)
//
// Every record is one line of JSON appended to LOG: {"method", "uris", "pid",
// "token"}, the token being the startup id a call carried or the one the
// program was started with.
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QObject>
#include <QStringList>

#include <unistd.h>

namespace {

QString logPath;
bool silent = false;

void Record(const QString &method, const QStringList &uris, const QString &token) {
    QFile file(logPath);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return;
    QJsonObject record{{QStringLiteral("method"), method},
                       {QStringLiteral("uris"), QJsonArray::fromStringList(uris)},
                       {QStringLiteral("pid"), qint64(::getpid())},
                       {QStringLiteral("token"), token}};
    file.write(QJsonDocument(record).toJson(QJsonDocument::Compact) + '\n');
}

class FileManager1 : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public Q_SLOTS:
    void ShowFolders(const QStringList &uris, const QString &token) {
        Answer(QStringLiteral("ShowFolders"), uris, token);
    }
    void ShowItems(const QStringList &uris, const QString &token) {
        Answer(QStringLiteral("ShowItems"), uris, token);
    }
    void ShowItemProperties(const QStringList &uris, const QString &token) {
        Answer(QStringLiteral("ShowItemProperties"), uris, token);
    }

private:
    void Answer(const QString &method, const QStringList &uris, const QString &token) {
        Record(method, uris, token);
        setDelayedReply(silent); // and never replies
    }
};

} // namespace

int main(int argc, char **argv) {
    QCoreApplication application(argc, argv);
    QStringList arguments = application.arguments().mid(1);
    if (arguments.size() >= 2 && arguments.first() == QStringLiteral("--program")) {
        logPath = arguments[1];
        Record(QStringLiteral("Program"), arguments.mid(2),
               qEnvironmentVariable("DESKTOP_STARTUP_ID"));
        return 0;
    }
    if (arguments.isEmpty() || arguments.size() > 2)
        return 2;
    logPath = arguments.first();
    silent = arguments.value(1) == QStringLiteral("--silent");

    FileManager1 service;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &service,
                            QDBusConnection::ExportAllSlots) ||
        !bus.registerService(QStringLiteral("org.freedesktop.FileManager1")))
        return 1;
    Record(QStringLiteral("Started"), {}, {});
    return application.exec();
}

#include "fakefilemanager.moc"

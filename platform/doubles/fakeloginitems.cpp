#include "platform/doubles/fakeloginitems.h"

namespace platform {

QList<LoginItem> FakeLoginItems::items(LoginItemsScope scope) {
    return scope == LoginItemsScope::CurrentUser ? currentUser : anyUser;
}

bool FakeLoginItems::remove(LoginItemsScope scope, const QString &entryName) {
    auto &list = scope == LoginItemsScope::CurrentUser ? currentUser : anyUser;
    if (failWrites)
        return false;
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (list[i].entryName == entryName) {
            list.removeAt(i);
            return true;
        }
    }
    return false;
}

bool FakeLoginItems::add(LoginItemsScope scope, const QByteArray &path, bool hide) {
    auto &list = scope == LoginItemsScope::CurrentUser ? currentUser : anyUser;
    if (failWrites)
        return false;
    list.append({QStringLiteral("added-%1").arg(nextEntry++), path, hide});
    return true;
}

bool FakeLoginItems::isKestrelMenuProgram(const QByteArray &path) {
    return kestrelPrograms.contains(path) || (self && path == *self);
}

bool FakeLoginItems::isThisProgram(const QByteArray &path) {
    return self && path == *self;
}

std::optional<QByteArray> FakeLoginItems::thisProgramPath() {
    return self;
}

} // namespace platform

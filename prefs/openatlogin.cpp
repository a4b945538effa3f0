#include "prefs/openatlogin.h"

#include "core/settings.h"
#include "platform/loginitems.h"
#include "platform/service.h"

#include <cstring>
#include <optional>

namespace {

char ReturnCharacterArray[1025];

std::optional<platform::LoginItemsScope> ScopeOf(LoginItemsUser user) {
    switch (user) {
    case kLoginItemsCurrentUser:
        return platform::LoginItemsScope::CurrentUser;
    case kLoginItemsAnyUser:
        return platform::LoginItemsScope::AnyUser;
    default:
        return std::nullopt;
    }
}

platform::LoginItems &Store() {
    return platform::service<platform::LoginItems>();
}

// Copies into the shared buffer, cut to fit with its terminating zero.
const char *ReturnText(const QByteArray &text) {
    const std::size_t length =
        std::min<std::size_t>(std::size_t(text.size()), sizeof ReturnCharacterArray - 1);
    std::memcpy(ReturnCharacterArray, text.constData(), length);
    ReturnCharacterArray[length] = '\0';
    return ReturnCharacterArray;
}

} // namespace

qsizetype GetCountOfLoginItems(LoginItemsUser user) {
    const auto scope = ScopeOf(user);
    return scope ? Store().items(*scope).size() : 0;
}

const char *ReturnLoginItemPropertyAtIndex(LoginItemsUser user, int property, qint32 index) {
    const auto scope = ScopeOf(user);
    if (property < kLoginItemPath || property > kLoginItemHide || index < 0 || !scope)
        return nullptr;
    const QList<platform::LoginItem> items = Store().items(*scope);
    if (index >= items.size())
        return nullptr;
    const platform::LoginItem &item = items.at(index);

    if (property == kLoginItemHide) {
        if (!item.hide)
            return nullptr;
        return ReturnText(*item.hide ? "true" : "false");
    }
    if (!item.path)
        return nullptr;
    if (property == kLoginItemPath)
        return ReturnText(*item.path);
    // The last non-empty piece between slashes; a trailing slash is ignored.
    const QList<QByteArray> pieces = QByteArray(ReturnText(*item.path)).split('/');
    for (auto piece = pieces.crbegin(); piece != pieces.crend(); ++piece) {
        if (!piece->isEmpty())
            return ReturnText(*piece);
    }
    return nullptr;
}

bool RemoveLoginItemAtIndex(LoginItemsUser user, qint32 index) {
    const auto scope = ScopeOf(user);
    if (!scope || index < 0)
        return false;
    const QList<platform::LoginItem> items = Store().items(*scope);
    if (index > items.size() - 1)
        return false;
    return Store().remove(*scope, items.at(index).entryName);
}

bool AddLoginItemWithPropertiesToUser(LoginItemsUser user, const char *path, bool hide) {
    const auto scope = ScopeOf(user);
    if (!scope || path == nullptr)
        return false;
    return Store().add(*scope, QByteArray(path), hide);
}

void ApplyOpenAtStartupSetting() {
    platform::LoginItems &store = Store();
    const std::optional<QByteArray> self = store.thisProgramPath();
    bool wanted = generalSettings.openAtStartup != 0 && self.has_value();

    // From the end, so that removals leave the indices still to visit valid.
    for (qsizetype index = GetCountOfLoginItems(kLoginItemsCurrentUser) - 1; index >= 0; --index) {
        const char *path =
            ReturnLoginItemPropertyAtIndex(kLoginItemsCurrentUser, kLoginItemPath, qint32(index));
        if (path == nullptr)
            continue;
        const QByteArray program(path);
        if (!store.isKestrelMenuProgram(program))
            continue;
        if (!wanted || !store.isThisProgram(program)) {
            RemoveLoginItemAtIndex(kLoginItemsCurrentUser, qint32(index));
            continue;
        }
        wanted = false; // this copy's entry stays; any other found later is a duplicate
    }
    if (wanted)
        AddLoginItemWithPropertiesToUser(kLoginItemsCurrentUser, self->constData(), false);
}

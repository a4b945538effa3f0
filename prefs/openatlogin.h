// Open at login: keeps exactly one login item for this copy of the program
// while openAtStartup is set, and none otherwise.
#pragma once

#include <QtGlobal>

// Which list a routine works on. Only these two values are accepted.
using LoginItemsUser = int;
inline constexpr LoginItemsUser kLoginItemsCurrentUser = 1;
inline constexpr LoginItemsUser kLoginItemsAnyUser = 2;

enum LoginItemProperty : int {
    kLoginItemPath = 1, // the full path
    kLoginItemName = 2, // the last component of the path
    kLoginItemHide = 3, // "true" or "false"
};

qsizetype GetCountOfLoginItems(LoginItemsUser user);
// Text in a buffer shared by every call, valid until the next call; null when
// there is no such property.
const char *ReturnLoginItemPropertyAtIndex(LoginItemsUser user, int property, qint32 index);
bool RemoveLoginItemAtIndex(LoginItemsUser user, qint32 index);
bool AddLoginItemWithPropertiesToUser(LoginItemsUser user, const char *path, bool hide);
void ApplyOpenAtStartupSetting();

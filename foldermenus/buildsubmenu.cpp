#include "foldermenus/buildsubmenu.h"

#include "foldermenus/foldermenu.h"
#include "foldermenus/foldermenumodel.h"
#include "foldermenus/folderreading.h"

QPointer<FolderMenu> subMenuRef[kDepthMenuCount];
std::uint32_t subMenuItems[kDepthMenuCount];

namespace {

bool ShowsIcons(std::int32_t depth, std::uint32_t found) {
    if (depth == 0)
        return (generalSettings.mainMenuIcons & 0xFF) != 0;
    // The limit is signed but compared unsigned: a negative limit never hides icons.
    const auto limit = std::uint32_t(std::int32_t(generalSettings.subMenuIconLimit));
    return generalSettings.subMenuIcons != 0 && found <= limit;
}

OSStatus ShowFolderItems(FolderMenu *menu, std::int32_t depth,
                         const std::shared_ptr<const FolderListing> &listing) {
    menu->model()->setListing(listing, ShowsIcons(depth, listing->found));
    if (subMenuRef[depth] == menu)
        subMenuItems[depth] = std::uint32_t(menu->model()->rowCount());
    return listing->status;
}

} // namespace

OSStatus BuildSubMenu(std::int32_t depth, const FSSpec *folderSpec) {
    if (depth < 0 || depth >= kDepthMenuCount || subMenuRef[depth] == nullptr)
        return paramErr;
    FolderMenu *menu = subMenuRef[depth];

    // The previous folder items go; the menu's own items below them stay.
    menu->model()->clear();
    subMenuItems[depth] = 0;

    auto reading = std::make_unique<FolderReading>(
        folderSpec != nullptr ? folderSpec->path : QByteArray(), depth);
    if (reading->waitFor(kLoadingDelayMs))
        return ShowFolderItems(menu, depth, reading->listing());
    menu->model()->setLoading(std::move(reading), [menu = QPointer(menu), depth](auto listing) {
        if (menu != nullptr)
            ShowFolderItems(menu, depth, listing);
    });
    subMenuItems[depth] = 1;
    return noErr;
}

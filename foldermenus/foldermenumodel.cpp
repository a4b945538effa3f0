#include "foldermenus/foldermenumodel.h"

#include "foldermenus/folderreading.h"
#include "foldermenus/menuicons.h"
#include "resources/menus.h"

FolderMenuModel::FolderMenuModel(QObject *parent) : QAbstractListModel(parent) {}

FolderMenuModel::~FolderMenuModel() = default;

int FolderMenuModel::rowCount(const QModelIndex &parent) const {
    if (parent.isValid())
        return 0;
    if (listing_ != nullptr && !listing_->entries.empty())
        return int(listing_->entries.size());
    return standIn() == StandIn::None ? 0 : 1;
}

FolderMenuModel::StandIn FolderMenuModel::standIn() const {
    if (loading_)
        return StandIn::Loading;
    if (listing_ != nullptr && listing_->entries.empty())
        return StandIn::Empty;
    return StandIn::None;
}

const FolderEntry *FolderMenuModel::entry(int row) const {
    if (listing_ == nullptr || row < 0 || std::size_t(row) >= listing_->entries.size())
        return nullptr;
    return &listing_->entries[std::size_t(row)];
}

QString FolderMenuModel::text(int row) const {
    if (const FolderEntry *folderEntry = entry(row))
        return folderEntry->separator ? QString() : folderEntry->text;
    switch (standIn()) {
    case StandIn::Loading:
        return LoadingFolderText();
    case StandIn::Empty:
        return EmptyFolderText();
    case StandIn::None:
        break;
    }
    return {};
}

QIcon FolderMenuModel::icon(int row) const {
    const FolderEntry *folderEntry = entry(row);
    if (!showIcons_ || folderEntry == nullptr || folderEntry->separator)
        return {};
    return FolderEntryIcon(*folderEntry);
}

QVariant FolderMenuModel::data(const QModelIndex &index, int role) const {
    if (!index.isValid())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return text(index.row());
    case Qt::DecorationRole:
        return icon(index.row());
    default:
        return {};
    }
}

void FolderMenuModel::setListing(std::shared_ptr<const FolderListing> listing, bool showIcons) {
    beginResetModel();
    reading_.reset();
    loading_ = false;
    listing_ = std::move(listing);
    showIcons_ = showIcons;
    endResetModel();
    Q_EMIT listingShown(listing_ != nullptr ? listing_->status : OSErr(noErr));
}

void FolderMenuModel::setLoading(
    std::unique_ptr<FolderReading> reading,
    std::function<void(std::shared_ptr<const FolderListing>)> arrived) {
    beginResetModel();
    listing_.reset();
    loading_ = true;
    showIcons_ = false;
    reading_ = std::move(reading);
    reading_->whenReady(this, [this, arrived = std::move(arrived)] {
        // The reading goes with the loading row; its answer stays.
        const std::shared_ptr<const FolderListing> listing = reading_->listing();
        arrived(listing);
    });
    endResetModel();
}

void FolderMenuModel::clear() {
    beginResetModel();
    reading_.reset();
    listing_.reset();
    loading_ = false;
    showIcons_ = false;
    endResetModel();
}

void FolderMenuModel::abandonReading() {
    reading_.reset();
}

QByteArray FolderItemPath(const FolderMenuModel *model, int item) {
    const FolderEntry *folderEntry = model != nullptr ? model->entry(item - 1) : nullptr;
    return folderEntry != nullptr ? folderEntry->path : QByteArray();
}

// The folder items of one menu: what a reading of its folder found, or the
// one row that stands in while there is nothing to show (the folder is still
// being read, or shows nothing).
#pragma once

#include "foldermenus/folderentries.h"

#include <QAbstractListModel>
#include <QIcon>

#include <functional>
#include <memory>

class FolderReading;

class FolderMenuModel final : public QAbstractListModel {
    Q_OBJECT
public:
    // What stands in the menu while no folder item does.
    enum class StandIn { None, Empty, Loading };

    explicit FolderMenuModel(QObject *parent = nullptr);
    ~FolderMenuModel() override;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

    // Shows the entries of `listing`, or the empty row when it has none.
    void setListing(std::shared_ptr<const FolderListing> listing, bool showIcons);
    // Shows the loading row until `reading` ends; then `arrived` is called
    // (and is expected to show the listing).
    void setLoading(std::unique_ptr<FolderReading> reading,
                    std::function<void(std::shared_ptr<const FolderListing>)> arrived);
    // No rows at all; a reading under way is abandoned.
    void clear();
    // Abandons a reading under way; the loading row stays.
    void abandonReading();

    // Whether the rows are a finished reading's (not loading, not cleared).
    bool isComplete() const { return listing_ != nullptr; }
    // Whether a reading is under way for the rows (not abandoned).
    bool isReading() const { return reading_ != nullptr; }
    StandIn standIn() const;
    // The entry behind a row; null for the stand-in row.
    const FolderEntry *entry(int row) const;
    // What a row shows, as written (no mnemonics).
    QString text(int row) const;
    // A row's icon, looked up when asked; null when the menu shows none.
    QIcon icon(int row) const;
    bool showsIcons() const { return showIcons_; }

Q_SIGNALS:
    // A listing is shown; `status` says why the folder could not be read, if not.
    void listingShown(OSErr status);

private:
    std::shared_ptr<const FolderListing> listing_;
    std::unique_ptr<FolderReading> reading_;
    bool loading_ = false;
    bool showIcons_ = false;
};

// The path stored on folder item `item` (from 1) of a model; empty for the
// stand-in row and for numbers past the folder items.
QByteArray FolderItemPath(const FolderMenuModel *model, int item);

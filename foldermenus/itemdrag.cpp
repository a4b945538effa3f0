#include "foldermenus/itemdrag.h"

#include "core/folders.h"
#include "foldermenus/foldermenu.h"
#include "foldermenus/foldermenumodel.h"

#include <QDrag>
#include <QFile>
#include <QLoggingCategory>
#include <QMimeData>
#include <QStyle>

Q_DECLARE_LOGGING_CATEGORY(lcMenuChoice)

Qt::DropAction DragItemOut(FolderMenu *menu, int item) {
    const QByteArray path = FolderItemPath(menu, item);
    if (path.isEmpty())
        return Qt::IgnoreAction;
    auto *data = new QMimeData;
    data->setData(QStringLiteral("text/uri-list"), FileUriFromPath(path) + "\r\n");
    data->setText(QFile::decodeName(path));
    auto *drag = new QDrag(menu);
    drag->setMimeData(data);
    const int size = menu->style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, menu);
    if (const QIcon icon = menu->model()->icon(item - 1); !icon.isNull())
        drag->setPixmap(icon.pixmap(QSize(size, size), menu->devicePixelRatioF()));
    qCDebug(lcMenuChoice, "dragging %s out of the menu", path.constData());
    const Qt::DropAction done =
        drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
    qCDebug(lcMenuChoice, "drag ended: action %d", int(done));
    return done;
}

// Drops: arbitrary bytes as the URI list of a drag. Every line that is an
// address is an item; a local file's path is absolute, holds no NUL byte and
// names the file its address does.
#include "core/folders.h"
#include "tests/fuzz/fuzztarget.h"
#include "titles/titledrops.h"

#include <QMimeData>

KESTREL_FUZZ_TARGET(droppeduris) {
    QMimeData mime;
    mime.setData(QStringLiteral("text/uri-list"),
                 QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    for (const DragItem &item : DragFromMimeData(&mime).items) {
        FUZZ_CHECK(!item.flavors.empty() && item.flavors.back().type == kDragFlavorTypeURL);
        const QByteArray &uri = item.flavors.back().data;
        FUZZ_CHECK(!uri.isEmpty() && !uri.startsWith('#') && !uri.contains('\n'));
        if (item.flavors.size() == 1)
            continue;
        FUZZ_CHECK(item.flavors.size() == 2 && item.flavors[0].type == kDragFlavorTypeHFS);
        const QByteArray &path = item.flavors[0].data;
        FUZZ_CHECK(path.startsWith('/') && !path.contains('\0'));
        // The same file, told to the file manager and dropped back.
        FUZZ_CHECK(LocalPathFromUri(FileUriFromPath(path)) == path);
    }
    return 0;
}

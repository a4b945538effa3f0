// ".hidden" files: arbitrary bytes as the names a folder hides. Each name is
// the end of a terminated line, in the order of the lines, 1 to 255 bytes long.
#include "foldermenus/folderentries.h"
#include "tests/fuzz/fuzztarget.h"

KESTREL_FUZZ_TARGET(hiddennames) {
    const QByteArray contents(reinterpret_cast<const char *>(data), qsizetype(size));
    qsizetype from = 0;
    for (const QByteArray &name : HiddenNamesFromFile(contents)) {
        FUZZ_CHECK(!name.isEmpty() && name.size() < 256);
        FUZZ_CHECK(!name.contains('\n') && !name.contains('\r'));
        const qsizetype lf = contents.indexOf(name + '\n', from);
        const qsizetype cr = contents.indexOf(name + '\r', from);
        FUZZ_CHECK(lf >= 0 || cr >= 0);
        from = (lf < 0 || (cr >= 0 && cr < lf) ? cr : lf) + name.size() + 1;
    }
    return 0;
}

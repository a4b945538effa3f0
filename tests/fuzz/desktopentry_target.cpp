// Desktop entries: arbitrary bytes read as a *.desktop file, and whatever the
// menus and launching take from one. The program an entry starts comes back
// unchanged from the autostart entry written for it.
#include "core/desktopentry.h"
#include "platform/xdgautostart.h"
#include "tests/fuzz/fuzztarget.h"

KESTREL_FUZZ_TARGET(desktopentry) {
    const auto entry =
        DesktopEntry::parse(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!entry)
        return 0;
    for (const char *key : {"Type", "Icon", "Exec", "URL", platform::kHideKey})
        entry->value(QLatin1String(key));
    for (const char *locale : {"de_AT.UTF-8@euro", "sr@latin", "C", ""})
        entry->localizedValue(QStringLiteral("Name"), QLatin1String(locale));
    entry->boolValue(QStringLiteral("NoDisplay"), false);
    entry->isDisabled();
    entry->isShownIn("ubuntu:GNOME");

    const auto program = entry->execProgram();
    FUZZ_CHECK(!program || !program->isEmpty());
    // Only absolute paths are written, and only as UTF-8.
    if (!program || !program->startsWith('/'))
        return 0;
    if (const auto text = platform::XdgAutostart::entryText(*program, false)) {
        const auto written = DesktopEntry::parse(*text);
        FUZZ_CHECK(written && written->execProgram() == program);
        FUZZ_CHECK(written->value(QStringLiteral("TryExec")) == QString::fromUtf8(*program));
        FUZZ_CHECK(!written->isDisabled());
    }
    return 0;
}

#include "core/desktopentry.h"
#include "platform/mountinfo.h"

#include <gtest/gtest.h>

namespace {

std::optional<DesktopEntry> Parse(const QByteArray &keys) {
    return DesktopEntry::parse("[Desktop Entry]\n" + keys);
}

TEST(DesktopEntryTest, ReadsTheMainGroupWithLocalizedNames) {
    const auto entry =
        DesktopEntry::parse("# comment\n[Other Group]\nName=Wrong\n[Desktop Entry]\nName=Files\n"
                            "Name[de]=Dateien\nName[de_AT]=Dateien (AT)\nComment=a\\sb\\nc\\\\d\n");
    ASSERT_TRUE(entry);
    for (const auto &[locale, name] :
         {std::pair{"de_AT.UTF-8", "Dateien (AT)"}, {"de_CH@euro", "Dateien"}, {"fr_FR", "Files"}})
        EXPECT_EQ(entry->localizedValue(QStringLiteral("Name"), QString::fromLatin1(locale)),
                  QString::fromUtf8(name));
    EXPECT_EQ(entry->value(QStringLiteral("Comment")), QStringLiteral("a b\nc\\d"));
    EXPECT_FALSE(entry->value(QStringLiteral("Missing")));

    for (const QByteArray &notAnEntry :
         {QByteArray("[Other]\nName=x\n"), QByteArray("Name=x\n"), QByteArray("\xff\xfe\x00\x01")})
        EXPECT_FALSE(DesktopEntry::parse(notAnEntry)) << notAnEntry.constData();
}

// Quoting a program and reading it back is the desktop entry fuzz target's.
TEST(DesktopEntryTest, ExecProgramsComeUnquoted) {
    EXPECT_EQ(Parse("Exec=\"/opt/my app/run\" --x %U\n")->execProgram(), "/opt/my app/run");
    EXPECT_FALSE(Parse("Exec=\"unterminated\n")->execProgram());
    EXPECT_FALSE(Parse("Name=x\n")->execProgram());
}

TEST(DesktopEntryTest, WhereEntriesShow) {
    // The keys; disabled (for autostart too); shown in KDE.
    for (const auto &[keys, disabled, shown] : {
             std::tuple{"Hidden=true\n", true, false},
             {"X-GNOME-Autostart-enabled=false\n", true, true},
             {"Hidden=maybe\n", false, true},
             {"OnlyShowIn=GNOME;XFCE;\n", false, false},
             {"OnlyShowIn=KDE;\nNotShowIn=GNOME;\n", false, true},
             {"NotShowIn=KDE;\n", false, false},
             {"TryExec=sh\n", false, true},
             {"TryExec=/no/such/program\n", false, false},
         }) {
        const auto entry = Parse(keys);
        EXPECT_EQ(entry->isDisabled(), disabled) << keys;
        EXPECT_EQ(entry->isShownIn("ubuntu:KDE"), shown) << keys;
    }
}

TEST(MountInfoTest, MountPointsAreDecodedAndIdentifiedByMountId) {
    const QByteArray table = "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                             "97 22 0:50 / /media/My\\040Disk\\134x rw - vfat /dev/sdb1 rw\n"
                             "short line\n"
                             "\n";
    const QList<platform::MountEntry> entries = platform::ParseMountInfo(table);
    ASSERT_EQ(entries.size(), 2);
    EXPECT_EQ(entries[0], (platform::MountEntry{"22", "/"}));
    EXPECT_EQ(entries[1], (platform::MountEntry{"97", "/media/My Disk\\x"}));
}

} // namespace

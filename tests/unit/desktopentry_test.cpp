#include "core/desktopentry.h"
#include "platform/mountinfo.h"

#include <gtest/gtest.h>

namespace {

TEST(DesktopEntryTest, ReadsTheMainGroupWithLocalizedNames) {
    bool hasMainGroup = false;
    const DesktopEntry entry = DesktopEntry::parse(
        "# comment\n[Other Group]\nName=Wrong\n[Desktop Entry]\nName=Files\n"
        "Name[de]=Dateien\nName[de_AT]=Dateien (AT)\nName=Second\nComment=a\\sb\\nc\\\\d\n"
        "  Spaced  =  value  \n",
        &hasMainGroup);
    EXPECT_TRUE(hasMainGroup);
    EXPECT_EQ(entry.localizedValue(QStringLiteral("Name"), QStringLiteral("de_AT.UTF-8")),
              QStringLiteral("Dateien (AT)"));
    EXPECT_EQ(entry.localizedValue(QStringLiteral("Name"), QStringLiteral("de_CH")),
              QStringLiteral("Dateien"));
    EXPECT_EQ(entry.localizedValue(QStringLiteral("Name"), QStringLiteral("fr_FR")),
              QStringLiteral("Files"))
        << "the first occurrence of a key counts";
    EXPECT_EQ(entry.value(QStringLiteral("Comment")), QStringLiteral("a b\nc\\d"));
    EXPECT_EQ(entry.value(QStringLiteral("Spaced")), QStringLiteral("value"));
    EXPECT_FALSE(entry.value(QStringLiteral("Missing")).has_value());

    DesktopEntry::parse("[Other]\nName=x\n", &hasMainGroup);
    EXPECT_FALSE(hasMainGroup);
}

TEST(DesktopEntryTest, ExecLinesSplitAsTheDesktopRunsThem) {
    using Args = QList<QByteArray>;
    EXPECT_EQ(SplitExecLine("/usr/bin/app --x %U"), (Args{"/usr/bin/app", "--x", "%U"}));
    EXPECT_EQ(SplitExecLine("\"/opt/my app/run\" \"a \\\"q\\\" \\$ \\\\ b\""),
              (Args{"/opt/my app/run", "a \"q\" $ \\ b"}));
    EXPECT_EQ(SplitExecLine("  spaced\t\targs  "), (Args{"spaced", "args"}));
    EXPECT_FALSE(SplitExecLine("\"unterminated").has_value());

    for (const QByteArray &program :
         {QByteArray("/plain/kestrel-menu"), QByteArray("/with space/x"),
          QByteArray("/q\"uote/`tick`/$var/back\\slash/100%/'single'/semi;colon")}) {
        const auto quoted = QuoteExecArgument(program);
        ASSERT_TRUE(quoted.has_value()) << program.constData();
        const DesktopEntry entry =
            DesktopEntry::parse("[Desktop Entry]\nExec=" + EscapeDesktopValue(*quoted) + " %f\n");
        EXPECT_EQ(entry.execProgram(), program);
    }
    EXPECT_FALSE(QuoteExecArgument("/line\nbreak").has_value());
}

TEST(DesktopEntryTest, DisabledEntries) {
    EXPECT_TRUE(DesktopEntry::parse("[Desktop Entry]\nHidden=true\n").isDisabled());
    EXPECT_TRUE(
        DesktopEntry::parse("[Desktop Entry]\nX-GNOME-Autostart-enabled=false\n").isDisabled());
    EXPECT_FALSE(DesktopEntry::parse("[Desktop Entry]\nHidden=false\n").isDisabled());
    EXPECT_FALSE(DesktopEntry::parse("[Desktop Entry]\nHidden=maybe\n").isDisabled());
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

#include "dialogs/aboutbox.h"

#include "platform/launcher.h"
#include "platform/service.h"
#include "titles/userinteraction.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

namespace {

// The box itself: item 1 closes it, item 2 leads to the user guide.
int RunAboutBox() {
    QMessageBox box(QMessageBox::NoIcon, QApplication::translate("About", "About Kestrel Menu"),
                    QApplication::translate("About", "Kestrel Menu %1")
                        .arg(QApplication::applicationVersion()));
    box.setObjectName(QStringLiteral("aboutBox"));
    box.setIconPixmap(QIcon(QStringLiteral(":/images/rainbow.png")).pixmap(QSize(35, 22) * 2));
    box.setInformativeText(QApplication::translate(
        "About", "Folder menus at the left end of the top bar.\n\nClick the title to open "
                 "the menu; drop files on it to add them."));
    QPushButton *ok = box.addButton(QMessageBox::Ok);
    QPushButton *guide =
        box.addButton(QApplication::translate("About", "&User Guide"), QMessageBox::HelpRole);
    ok->setObjectName(QStringLiteral("aboutOk"));
    guide->setObjectName(QStringLiteral("aboutGuide"));
    box.setDefaultButton(ok);
    box.setEscapeButton(ok);
    box.exec();
    return box.clickedButton() == guide ? kAboutGuideItem : kAboutOkItem;
}

} // namespace

QByteArray ProductPageURL() {
    // Installed: <prefix>/bin/kestrel-menu and <prefix>/share/doc/kestrel-menu/guide.html;
    // the build tree mirrors that layout.
    const QDir program(QCoreApplication::applicationDirPath());
    const QString guide =
        QDir::cleanPath(program.filePath(QStringLiteral("../share/doc/kestrel-menu/guide.html")));
    return QUrl::fromLocalFile(guide).toEncoded();
}

OSStatus OpenURL(const char *url, long length) {
    if (!platform::hasService<platform::Launcher>())
        return paramErr;
    // Whether a browser could open it is not the caller's concern.
    platform::service<platform::Launcher>().openUrl(QByteArray(url, qsizetype(length)));
    return noErr;
}

OSStatus OpenURLString(ConstStr255Param url) {
    return OpenURL(reinterpret_cast<const char *>(url + 1), url[0]);
}

void ShowAboutDialog() {
    ProcessSerialNumber previousFront;
    BeginUserInteraction(&previousFront);
    if (RunAboutBox() == kAboutGuideItem) {
        const QByteArray page = ProductPageURL();
        if (page.size() <= 255) {
            Str255 url;
            SetPString(url, std::string_view(page.constData(), std::size_t(page.size())));
            OpenURLString(url);
        } else {
            OpenURL(page.constData(), long(page.size()));
        }
        // The browser stays in front.
        EndUserInteraction(nullptr);
    } else {
        EndUserInteraction(&previousFront);
    }
}

#include "dialogs/aboutbox.h"

#include "platform/launcher.h"
#include "platform/service.h"
#include "titles/userinteraction.h"

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>

namespace {

QString Tr(const char *text) {
    return QApplication::translate("About", text);
}

// The box itself: item 1 closes it, item 2 leads to the web page, item 3 to the guide.
int RunAboutBox() {
    QMessageBox box(QMessageBox::NoIcon, Tr("About Kestrel Menu"),
                    Tr("Kestrel Menu %1").arg(QApplication::applicationVersion()));
    box.setObjectName(QStringLiteral("aboutBox"));
    box.setIconPixmap(QIcon(QStringLiteral(":/images/kestrel-menu.svg"))
                          .pixmap(QSize(64, 64), box.devicePixelRatioF()));
    box.setTextFormat(Qt::PlainText);
    box.setInformativeText(
        Tr("Folder menus at the left end of the top bar. Click the title to open the menu; drop "
           "files on it to add them.\n\nFree software under the %1.")
            .arg(QStringLiteral(KESTREL_LICENCE)));
    QPushButton *ok = box.addButton(QMessageBox::Ok);
    QPushButton *web = box.addButton(Tr("&Web Page"), QMessageBox::HelpRole);
    QPushButton *guide = box.addButton(Tr("&User Guide"), QMessageBox::HelpRole);
    ok->setObjectName(QStringLiteral("aboutOk"));
    web->setObjectName(QStringLiteral("aboutWebPage"));
    guide->setObjectName(QStringLiteral("aboutGuide"));
    box.setDefaultButton(ok);
    box.setEscapeButton(ok);
    box.exec();
    if (box.clickedButton() == web)
        return kAboutWebPageItem;
    return box.clickedButton() == guide ? kAboutGuideItem : kAboutOkItem;
}

void OpenAddress(const QByteArray &address) {
    if (address.size() <= 255) {
        Str255 url;
        SetPString(url, std::string_view(address.constData(), std::size_t(address.size())));
        OpenURLString(url);
    } else {
        OpenURL(address.constData(), long(address.size()));
    }
}

} // namespace

QByteArray ProductPageURL() {
    return QByteArrayLiteral(KESTREL_HOMEPAGE);
}

QByteArray UserGuideURL() {
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
    const int item = RunAboutBox();
    if (item == kAboutOkItem) {
        EndUserInteraction(&previousFront);
        return;
    }
    OpenAddress(item == kAboutWebPageItem ? ProductPageURL() : UserGuideURL());
    // The browser stays in front.
    EndUserInteraction(nullptr);
}

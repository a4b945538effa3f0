#include "finder/openwithchooser.h"

#include "titles/userinteraction.h"

#include <QApplication>
#include <QCheckBox>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace {

QString Tr(const char *text) {
    return QCoreApplication::translate("Finder", text);
}

void AddApplications(QListWidget *list, const QList<platform::ApplicationInfo> &applications) {
    for (const platform::ApplicationInfo &application : applications) {
        // Every row keeps the place of an icon, so that the names line up.
        static const QIcon fallback =
            QIcon::fromTheme(QStringLiteral("application-x-executable"),
                             QApplication::style()->standardIcon(QStyle::SP_FileIcon));
        const QIcon icon = application.iconName.isEmpty()
                               ? fallback
                               : QIcon::fromTheme(application.iconName, fallback);
        auto *item = new QListWidgetItem(icon, application.name, list);
        item->setData(Qt::UserRole, application.id);
    }
}

} // namespace

ApplicationChoice ChooseApplication(const QString &itemName, const platform::FileType &type,
                                    const QList<platform::ApplicationInfo> &declared,
                                    const QList<platform::ApplicationInfo> &others) {
    QDialog dialog;
    dialog.setObjectName(QStringLiteral("openWithChooser"));
    dialog.setWindowTitle(Tr("Open With"));
    auto *layout = new QVBoxLayout(&dialog);
    auto *label = new QLabel(Tr("Choose an application to open “%1”.").arg(itemName), &dialog);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    layout->addWidget(label);

    auto *list = new QListWidget(&dialog);
    AddApplications(list, declared);
    if (!declared.isEmpty() && !others.isEmpty()) {
        // A heading between the two groups, which cannot itself be chosen.
        auto *heading = new QListWidgetItem(Tr("Other Applications"), list);
        heading->setFlags(Qt::NoItemFlags);
        QFont font = heading->font();
        font.setBold(true);
        heading->setFont(font);
    }
    AddApplications(list, others);
    list->setCurrentRow(0);
    list->setMinimumSize(list->fontMetrics().averageCharWidth() * 44,
                         list->fontMetrics().height() * 16);
    label->setBuddy(list);
    layout->addWidget(list);

    const QString kind = type.description.isEmpty() ? type.contentType : type.description;
    auto *makeDefault = new QCheckBox(Tr("&Use as default for %1").arg(kind), &dialog);
    makeDefault->setEnabled(!type.contentType.isEmpty());
    layout->addWidget(makeDefault);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, &dialog);
    QPushButton *open = buttons->addButton(Tr("&Open"), QDialogButtonBox::AcceptRole);
    open->setDefault(true);
    const auto updateOpen = [&] {
        open->setEnabled(list->currentItem() != nullptr &&
                         !list->currentItem()->data(Qt::UserRole).isNull());
    };
    updateOpen();
    QObject::connect(list, &QListWidget::currentItemChanged, &dialog, updateOpen);
    QObject::connect(list, &QListWidget::itemActivated, &dialog, [&](QListWidgetItem *item) {
        if (!item->data(Qt::UserRole).isNull())
            dialog.accept();
    });
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    list->setFocus();

    ProcessSerialNumber previousFront;
    BeginUserInteraction(&previousFront);
    ApplicationChoice choice;
    if (dialog.exec() == QDialog::Accepted && open->isEnabled()) {
        choice.id = list->currentItem()->data(Qt::UserRole).toByteArray();
        choice.makeDefault = makeDefault->isChecked();
    }
    EndUserInteraction(&previousFront);
    return choice;
}

#include "finder/choosers.h"

#include "core/errors.h"
#include "finder/alias.h"
#include "titles/userinteraction.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>

#include <sys/stat.h>

namespace {

// The item chooser: one item, starting in the home folder. The desktop's own
// dialog is used where there is one (through the portal or the platform
// theme); it chooses files only. Qt's own dialog, where there is no other,
// chooses any item: "Choose" on a selected folder, link or bundle takes it,
// while a double click still goes into a folder.
class ObjectChooser final : public QFileDialog {
public:
    ObjectChooser()
        : QFileDialog(nullptr, QCoreApplication::translate("Choosers", "Choose an Item"),
                      QDir::homePath()) {
        setFileMode(QFileDialog::ExistingFile);
        setAcceptMode(QFileDialog::AcceptOpen);
        setOption(QFileDialog::DontResolveSymlinks, true);
        setLabelText(QFileDialog::Accept, QCoreApplication::translate("Choosers", "Choose"));
    }

    QByteArray chosen;

    void accept() override {
        const QStringList files = selectedFiles();
        if (files.size() == 1) {
            const QByteArray path = QFile::encodeName(files.first());
            struct stat info;
            if (::lstat(path.constData(), &info) == 0) {
                chosen = path;
                QDialog::accept();
                return;
            }
        }
        QFileDialog::accept();
    }
};

} // namespace

bool SelectNewFolder(FSSpec *folder) {
    ProcessSerialNumber previousFront;
    BeginUserInteraction(&previousFront);
    bool result = false;
    if (!folder->path.startsWith('/')) {
        TestError(paramErr);
    } else {
        QFileDialog dialog(nullptr, QCoreApplication::translate("Choosers", "Choose a Folder"),
                           QFile::decodeName(folder->path));
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly, true);
        // A cancel is the user's answer, not an error: nothing is reported.
        if (dialog.exec() == QDialog::Accepted && dialog.selectedFiles().size() == 1) {
            FSSpec chosen{QFile::encodeName(dialog.selectedFiles().first())};
            // A link to a folder stands for the folder it points to.
            ResolveAliasFile(&chosen, true, nullptr, nullptr);
            *folder = chosen;
            result = true;
        }
    }
    EndUserInteraction(&previousFront);
    return result;
}

bool SelectAnObject(FSSpec *object) {
    ProcessSerialNumber previousFront;
    BeginUserInteraction(&previousFront);
    bool result = false;
    ObjectChooser dialog;
    if (dialog.exec() == QDialog::Accepted && !dialog.chosen.isEmpty()) {
        object->path = dialog.chosen;
        result = true;
    }
    EndUserInteraction(&previousFront);
    return result;
}

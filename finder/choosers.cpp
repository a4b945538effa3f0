#include "finder/choosers.h"

#include "core/errors.h"
#include "finder/alias.h"
#include "titles/userinteraction.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileDialog>

#include <sys/stat.h>

namespace {

// The item chooser: one item of any kind. The file dialog chooses either files
// or folders; here "Open" on a selected folder, link or bundle chooses it,
// while a double click still goes into a folder.
class ObjectChooser final : public QFileDialog {
public:
    ObjectChooser()
        : QFileDialog(nullptr, QCoreApplication::translate("Choosers", "Choose an Item")) {
        setFileMode(QFileDialog::ExistingFile);
        setAcceptMode(QFileDialog::AcceptOpen);
        setOption(QFileDialog::DontResolveSymlinks, true);
        // The desktop's own dialogs choose files only.
        setOption(QFileDialog::DontUseNativeDialog, true);
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

#include "app/file_dialogs.h"

#include <QFileDialog>

#include "app/qt_text.h"

namespace stalwick {

std::vector<std::wstring> AskForInputFiles(QWidget* owner, const QString& startDirectory) {
    QFileDialog dialog(owner, QStringLiteral("Open Veltrosyn Wireless Raw Data File..."),
                       startDirectory, QStringLiteral("Veltrosyn Wireless Raw Data Files (*.ord)"));
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setDefaultSuffix(QStringLiteral("ord"));
    std::vector<std::wstring> paths;
    if (dialog.exec() != QDialog::Accepted) return paths;
    for (const QString& path : dialog.selectedFiles()) paths.push_back(ToWidePath(path));
    return paths;
}

std::wstring AskForOutputDirectory(QWidget* owner, const QString& startDirectory) {
    QFileDialog dialog(owner, QStringLiteral("Select Data Directory"), startDirectory);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    if (dialog.exec() != QDialog::Accepted) return {};
    return ToWidePath(dialog.selectedFiles().constFirst());
}

}  // namespace stalwick

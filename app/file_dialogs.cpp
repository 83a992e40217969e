// SPDX-License-Identifier: BSD-3-Clause
#include "app/file_dialogs.h"

#include <algorithm>

#include <QDateTime>
#include <QFileDialog>
#include <QHeaderView>
#include <QLocale>
#include <QScreen>
#include <QStyle>
#include <QTreeView>

#include "app/qt_text.h"

namespace stalwick {

namespace {

// The widest text that should be readable in each column. Names of recordings are long: date,
// animal, task.
QStringList WidestTexts() {
    const QDateTime longest(QDate(2026, 12, 30), QTime(20, 20, 20));
    return {QStringLiteral("2026-12-30_animal07_open-field-2.ord"), QStringLiteral("1023.99 MiB"),
            QStringLiteral("Recording file"),
            QLocale::system().toString(longest, QLocale::ShortFormat)};
}

// Qt's own dialog opens narrower than its columns. The system's dialog has its own size, and none
// of these parts.
void ShowAllColumns(QFileDialog& dialog) {
    const auto* list = dialog.findChild<QTreeView*>(QStringLiteral("treeView"));
    const auto* places = dialog.findChild<QWidget*>(QStringLiteral("sidebar"));
    if (list == nullptr || places == nullptr) return;
    QHeaderView* const header = list->header();
    const QFontMetrics metrics = list->fontMetrics();
    const QStringList texts = WidestTexts();
    const int margin = dialog.style()->pixelMetric(QStyle::PM_SmallIconSize) * 2;
    for (int column = 0; column < std::min(header->count(), static_cast<int>(texts.size()));
         ++column) {
        header->resizeSection(column, metrics.horizontalAdvance(texts[column]) + margin);
    }
    const int room = 4 * dialog.style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    const int wanted = places->sizeHint().width() + header->length() + room;
    const QSize size = dialog.sizeHint();
    dialog.resize(QSize(std::max(size.width(), wanted), size.height())
                      .boundedTo(dialog.screen()->availableSize()));
}

}  // namespace

std::vector<std::wstring> AskForInputFiles(QWidget* owner, const QString& startDirectory) {
    QFileDialog dialog(owner, QStringLiteral("Open Veltrosyn Wireless Raw Data File..."),
                       startDirectory, QStringLiteral("Veltrosyn Wireless Raw Data Files (*.ord)"));
    dialog.setFileMode(QFileDialog::ExistingFiles);
    dialog.setDefaultSuffix(QStringLiteral("ord"));
    ShowAllColumns(dialog);
    std::vector<std::wstring> paths;
    if (dialog.exec() != QDialog::Accepted) return paths;
    for (const QString& path : dialog.selectedFiles()) paths.push_back(ToWidePath(path));
    return paths;
}

std::wstring AskForOutputDirectory(QWidget* owner, const QString& startDirectory) {
    QFileDialog dialog(owner, QStringLiteral("Select Data Directory"), startDirectory);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    ShowAllColumns(dialog);
    if (dialog.exec() != QDialog::Accepted) return {};
    return ToWidePath(dialog.selectedFiles().constFirst());
}

}  // namespace stalwick

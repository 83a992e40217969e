// SPDX-License-Identifier: BSD-3-Clause

// Draws the program's windows into PNG files: window_screenshots DIRECTORY light|dark RECORDING...
// The scale is Qt's own (QT_SCALE_FACTOR). scripts/screenshots.sh makes the recordings.

#include <cstdio>

#include <QDir>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMimeData>
#include <QStyle>
#include <QStyleFactory>
#include <QTimer>
#include <QTreeWidget>

#include "app/about_dlg.h"
#include "app/app_identity.h"
#include "app/control_ids.h"
#include "app/message_box.h"
#include "app/progress_dlg.h"
#include "app/qt_text.h"
#include "app/stalwick_app.h"
#include "app/stalwick_dlg.h"
#include "engine/output_directory.h"

namespace {

using namespace stalwick;

QPalette DarkPalette() {
    QPalette palette(QColor(0x45, 0x45, 0x45), QColor(0x3a, 0x3a, 0x3a));
    palette.setColor(QPalette::Base, QColor(0x1e, 0x1e, 0x1e));
    palette.setColor(QPalette::AlternateBase, QColor(0x2d, 0x2d, 0x2d));
    palette.setColor(QPalette::Highlight, QColor(0x2a, 0x82, 0xda));
    return palette;
}

class Screenshots {
  public:
    Screenshots(const QString& directory, const QString& theme)
        : prefix_(QDir(directory).filePath(theme)),
          suffix_(QString::number(qRound(qApp->devicePixelRatio() * 100))) {}

    void Save(QWidget& window, const QString& name) {
        const QString path =
            prefix_ + QLatin1Char('-') + suffix_ + QLatin1Char('-') + name + QStringLiteral(".png");
        QCoreApplication::processEvents();
        if (window.grab().save(path)) return;
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        failed_ = true;
    }

    bool Failed() const { return failed_; }

  private:
    QString prefix_;
    QString suffix_;
    bool failed_ = false;
};

void Drop(StalwickDlg& dialog, const QStringList& paths) {
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& path : paths)
        urls += QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath());
    data.setUrls(urls);
    QDragEnterEvent enter({}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&dialog, &enter);
    QDropEvent event({}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&dialog, &event);
}

void SelectFirst(StalwickDlg& dialog) {
    auto* list = dialog.findChild<QTreeWidget*>(ObjectName(ControlId::kFileList));
    list->setCurrentItem(list->topLevelItem(0));
    dialog.OnFileListClick(0);
}

// Boxes with a one-word text and with one that needs more than a line.
void SaveBoxes(Screenshots& screenshots, StalwickDlg& dialog) {
    QMessageBox* box = ShowMessage(&dialog, QMessageBox::NoIcon,
                                   {.caption = ApplicationName(),
                                    .text = QStringLiteral("Processing complete"),
                                    .details = QStringLiteral("rat07.ord: 41 trailing bytes")});
    screenshots.Save(*box, QStringLiteral("box-complete"));
    box->close();
    const QString directory = QStringLiteral("/data/") + QString(120, QLatin1Char('n'));
    box = ShowMessage(&dialog, QMessageBox::Critical,
                      {.caption = QStringLiteral("Data Directory Error"),
                       .text = ToQString(OutputDirectoryErrorText(ToWide(directory))),
                       .details = QStringLiteral("cannot create directory: File name too long"),
                       .showDetails = true});
    screenshots.Save(*box, QStringLiteral("box-error"));
    box->close();
}

// The file dialog runs its own event loop.
void SaveFileDialog(Screenshots& screenshots, StalwickDlg& dialog) {
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, &watch, [&] {
        auto* files = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (files == nullptr) return;
        watch.stop();
        screenshots.Save(*files, QStringLiteral("file-dialog"));
        files->reject();
    });
    watch.start(500);  // by then it lists the directory
    dialog.OnSelectInputFiles();
}

bool SaveAll(const QString& directory, const QString& theme, const QStringList& recordings) {
    Screenshots screenshots(directory, theme);
    StalwickDlg dialog;
    dialog.show();
    screenshots.Save(dialog, QStringLiteral("main-empty"));
    Drop(dialog, recordings);
    SelectFirst(dialog);
    screenshots.Save(dialog, QStringLiteral("main-filled"));
    const QSize firstSize = dialog.size();
    dialog.resize(640, 480);
    screenshots.Save(dialog, QStringLiteral("main-640x480"));
    dialog.resize(firstSize);
    SaveBoxes(screenshots, dialog);
    SaveFileDialog(screenshots, dialog);

    DataProcessor processor;
    processor.recordsProcessed = 128394;
    ProgressDlg progress(&dialog);
    progress.show();
    progress.SetProcessor(&processor);
    auto* label = progress.findChild<QLabel*>(ObjectName(ControlId::kRecordLabel));
    while (label->text().isEmpty()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    screenshots.Save(progress, QStringLiteral("progress"));
    progress.SetProcessor(nullptr);

    CAboutDlg about(&dialog);
    about.show();
    screenshots.Save(about, QStringLiteral("about"));
    return !screenshots.Failed();
}

}  // namespace

int main(int argumentCount, char** arguments) {
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    StalwickApp app(argumentCount, arguments);
    const QStringList given = app.arguments();
    if (given.size() < 4) {
        std::fprintf(stderr, "usage: window_screenshots DIRECTORY light|dark RECORDING...\n");
        return 2;
    }
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("fusion")));
    QApplication::setPalette(given[2] == QStringLiteral("dark")
                                 ? DarkPalette()
                                 : QApplication::style()->standardPalette());
    return SaveAll(given[1], given[2], given.mid(3)) ? 0 : 1;
}

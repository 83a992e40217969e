// SPDX-License-Identifier: BSD-3-Clause
#include "app/main_controls.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QDialog>
#include <QFontDatabase>
#include <QFontInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSplitter>
#include <QStyle>
#include <QTreeWidget>

#include "app/app_identity.h"
#include "app/control_ids.h"
#include "app/qt_text.h"

namespace stalwick {

namespace {

// On Windows the system's fixed font is a bitmap font, and a proportional one may replace it.
QFont FixedPitchFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (QFontInfo(font).fixedPitch()) return font;
    font.setPointSizeF(QFontDatabase::systemFont(QFontDatabase::GeneralFont).pointSizeF());
    for (const char* family : {"Consolas", "Courier New", "Liberation Mono", "DejaVu Sans Mono"}) {
        if (!QFontDatabase::isFixedPitch(QLatin1String(family))) continue;
        font.setFamily(QLatin1String(family));
        break;
    }
    return font;
}

constexpr int kFilenameColumnWidth = 260;
constexpr int kHeaderColumns = 64;  // characters of the header visible at first
constexpr int kHeaderLines = 16;
constexpr int kLeastHeaderColumns = 24;
constexpr int kLeastLines = 4;
constexpr int kFrameWidth = 8;  // of a window, both sides together

QLineEdit* MakeDirectoryBox(ControlId id, const QString& accessibleName) {
    auto* box = Identify(new QLineEdit, id, accessibleName);
    box->setReadOnly(true);
    QObject::connect(box, &QLineEdit::textChanged, box,
                     [box](const QString& path) { box->setToolTip(PathToolTip(path)); });
    return box;
}

// No button is the default one: Enter alone never starts anything.
QPushButton* MakeButton(const QString& text, ControlId id, const QString& accessibleName) {
    auto* button = Identify(new QPushButton(text), id, accessibleName);
    button->setAutoDefault(false);
    return button;
}

QCheckBox* MakeCheckBox(const QString& text, ControlId id, const QString& accessibleName) {
    return Identify(new QCheckBox(text), id, accessibleName);
}

QTreeWidget* MakeFileList() {
    auto* list = Identify(new QTreeWidget, ControlId::kFileList, QStringLiteral("File List"));
    list->setColumnCount(1);
    list->setHeaderLabels({QStringLiteral("Filename")});
    list->setHeaderHidden(true);
    list->header()->resizeSection(0, kFilenameColumnWidth);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setTextElideMode(Qt::ElideMiddle);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setMinimumWidth(kFilenameColumnWidth + 2 * list->frameWidth());
    list->setMinimumHeight(list->fontMetrics().lineSpacing() * kLeastLines);
    return list;
}

QSize TextSize(const QWidget& widget, int columns, int lines) {
    const QFontMetrics metrics = widget.fontMetrics();
    return {metrics.averageCharWidth() * columns, metrics.lineSpacing() * lines};
}

QPlainTextEdit* MakeFileHeader() {
    auto* header =
        Identify(new QPlainTextEdit, ControlId::kFileHeader, QStringLiteral("File Header"));
    header->setFont(FixedPitchFont());
    header->setReadOnly(true);
    header->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    header->setTabChangesFocus(true);
    header->setLineWrapMode(QPlainTextEdit::NoWrap);
    header->setAcceptDrops(false);
    header->setMinimumSize(TextSize(*header, kLeastHeaderColumns, kLeastLines));
    return header;
}

void MakeControls(MainControls& controls) {
    controls.inputDirectory =
        MakeDirectoryBox(ControlId::kInputDirectory, QStringLiteral("Input Directory"));
    controls.selectInputFiles =
        MakeButton(QStringLiteral("Select &Input Files"), ControlId::kSelectInputFiles,
                   QStringLiteral("Select Input Files"));
    controls.outputDirectory =
        MakeDirectoryBox(ControlId::kOutputDirectory, QStringLiteral("Output Directory"));
    controls.selectOutputDirectory =
        MakeButton(QStringLiteral("Select &Output Directory"), ControlId::kSelectOutputDirectory,
                   QStringLiteral("Select Output Directory"));
    controls.fileList = MakeFileList();
    controls.clearList = MakeButton(QStringLiteral("Clear &List"), ControlId::kClearList,
                                    QStringLiteral("Clear List"));
    controls.fileHeader = MakeFileHeader();
    controls.cscOutput = MakeCheckBox(QStringLiteral("&CSC Output"), ControlId::kCscOutput,
                                      QStringLiteral("CSC Output"));
    controls.baseImu =
        MakeCheckBox(QStringLiteral("&Base IMU"), ControlId::kBaseImu, QStringLiteral("Base IMU"));
    controls.afeImu =
        MakeCheckBox(QStringLiteral("&AFE IMU"), ControlId::kAfeImu, QStringLiteral("AFE IMU"));
    controls.ultrasonic = MakeCheckBox(QStringLiteral("&Ultrasonic"), ControlId::kUltrasonic,
                                       QStringLiteral("Ultrasonic"));
    controls.rawDataFileOutput =
        MakeCheckBox(QStringLiteral("&Raw Data File Output"), ControlId::kRawDataFileOutput,
                     QStringLiteral("Raw Data File Output"));
    controls.createNewFiles =
        MakeButton(QStringLiteral("Create &New Files"), ControlId::kCreateNewFiles,
                   QStringLiteral("Create New Files"));
    controls.createNewFiles->setEnabled(false);
    controls.clearList->setEnabled(false);
    controls.legalNotice = Identify(new QLabel, ControlId::kLegalNotice);
    controls.legalNotice->setWordWrap(true);
}

QMenuBar* MakeMenuBar(MainControls& controls) {
    auto* menuBar = new QMenuBar;
    controls.about =
        menuBar->addMenu(QStringLiteral("&Help"))->addAction(QStringLiteral("&About Stalwick..."));
    controls.about->setMenuRole(QAction::AboutRole);
    return menuBar;
}

QLabel* MakeLabel(const QString& text, QWidget* buddy) {
    auto* label = new QLabel(text);
    label->setBuddy(buddy);
    return label;
}

QGroupBox* MakeFileSelection(const MainControls& controls) {
    auto* group = new QGroupBox(QStringLiteral("File &Selection"));
    auto* grid = new QGridLayout(group);
    grid->addWidget(MakeLabel(QStringLiteral("Input &Directory:"), controls.inputDirectory), 0, 0);
    grid->addWidget(controls.inputDirectory, 0, 1);
    grid->addWidget(controls.selectInputFiles, 0, 2);
    grid->addWidget(MakeLabel(QStringLiteral("Output Director&y:"), controls.outputDirectory), 1,
                    0);
    grid->addWidget(controls.outputDirectory, 1, 1);
    grid->addWidget(controls.selectOutputDirectory, 1, 2);
    return group;
}

QGroupBox* MakeFileListGroup(const MainControls& controls) {
    auto* group = new QGroupBox(QStringLiteral("&File List"));
    auto* box = new QVBoxLayout(group);
    box->addWidget(controls.fileList);
    box->addWidget(controls.clearList, 0, Qt::AlignLeft);
    return group;
}

QGroupBox* MakeFileHeaderGroup(const MainControls& controls) {
    auto* group = new QGroupBox(QStringLiteral("File H&eader"));
    auto* box = new QVBoxLayout(group);
    box->addWidget(controls.fileHeader);
    return group;
}

QSplitter* MakeMiddle(const MainControls& controls) {
    auto* splitter = new QSplitter(Qt::Horizontal);
    splitter->addWidget(MakeFileListGroup(controls));
    splitter->addWidget(MakeFileHeaderGroup(controls));
    splitter->setChildrenCollapsible(false);
    splitter->setSizes({400, 600});  // the header's lines are longer than the names
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 1);
    return splitter;
}

QGroupBox* MakeOutputGroup(const MainControls& controls) {
    auto* group = new QGroupBox(QStringLiteral("CSC File Out&put"));
    auto* box = new QHBoxLayout(group);
    for (QCheckBox* checkBox :
         {controls.cscOutput, controls.baseImu, controls.afeImu, controls.ultrasonic}) {
        box->addWidget(checkBox);
        box->addSpacing(box->spacing());
    }
    box->addStretch();
    return group;
}

// The check box is below those of the group above it, the button below the other buttons.
QHBoxLayout* MakeStart(const MainControls& controls) {
    auto* start = new QHBoxLayout;
    start->addWidget(controls.rawDataFileOutput);
    start->addStretch();
    start->addWidget(controls.createNewFiles);
    const QWidget* group = controls.cscOutput->parentWidget();
    const QMargins inner = group->contentsMargins() + group->layout()->contentsMargins();
    start->setContentsMargins(inner.left(), inner.bottom() / 2, inner.right(), inner.bottom() / 2);
    return start;
}

// The buttons of the right-hand edge share one width, with room around the longest text.
void AlignButtons(const MainControls& controls) {
    const int room = controls.selectOutputDirectory->fontMetrics().averageCharWidth() * 4;
    const int width = controls.selectOutputDirectory->sizeHint().width() + room;
    for (QPushButton* button :
         {controls.selectInputFiles, controls.selectOutputDirectory, controls.createNewFiles}) {
        button->setMinimumWidth(width);
    }
}

void SetTabOrder(const MainControls& controls) {
    QWidget* const order[] = {controls.inputDirectory,  controls.selectInputFiles,
                              controls.outputDirectory, controls.selectOutputDirectory,
                              controls.fileList,        controls.clearList,
                              controls.fileHeader,      controls.cscOutput,
                              controls.baseImu,         controls.afeImu,
                              controls.ultrasonic,      controls.rawDataFileOutput,
                              controls.createNewFiles};
    for (std::size_t i = 1; i < std::size(order); ++i) QWidget::setTabOrder(order[i - 1], order[i]);
}

// Room for the beginning of the header, as far as the screen allows.
void SetFirstSize(QDialog& dialog, const MainControls& controls) {
    const QSize more = TextSize(*controls.fileHeader, kHeaderColumns, kHeaderLines) -
                       controls.fileHeader->minimumSize();
    const QSize frame(kFrameWidth, dialog.style()->pixelMetric(QStyle::PM_TitleBarHeight));
    dialog.resize((dialog.minimumSizeHint() + more)
                      .boundedTo(dialog.screen()->availableSize() - frame)
                      .expandedTo(dialog.minimumSizeHint()));
}

}  // namespace

void LookReadOnly(const MainControls& controls, const QPalette& palette) {
    for (QWidget* box : {static_cast<QWidget*>(controls.inputDirectory),
                         static_cast<QWidget*>(controls.outputDirectory),
                         static_cast<QWidget*>(controls.fileHeader)}) {
        QPalette own;
        own.setBrush(QPalette::Base, palette.window());
        box->setPalette(own);
    }
}

MainControls MakeMainControls(QDialog& dialog) {
    MainControls controls;
    MakeControls(controls);
    auto* all = new QVBoxLayout(&dialog);
    all->setMenuBar(MakeMenuBar(controls));
    all->addWidget(MakeFileSelection(controls));
    all->addWidget(MakeMiddle(controls), 1);
    all->addWidget(MakeOutputGroup(controls));
    all->addLayout(MakeStart(controls));
    all->addWidget(controls.legalNotice);
    AlignButtons(controls);
    SetTabOrder(controls);
    LookReadOnly(controls, dialog.palette());
    SetFirstSize(dialog, controls);
    controls.selectInputFiles->setFocus();
    return controls;
}

}  // namespace stalwick

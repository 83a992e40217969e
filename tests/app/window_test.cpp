// SPDX-License-Identifier: BSD-3-Clause
#include "tests/app/window_test.h"

#include <QDragEnterEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextEdit>
#include <QTreeWidget>

#include "app/qt_text.h"
#include "platform/paths.h"
#include "platform/text_encoding.h"
#include "tests/support/engine_run.h"
#include "tests/support/ord_builder.h"

namespace stalwick::test {

namespace {

std::vector<PacketPlan> MakePackets(std::size_t packetCount) {
    RandomRecordingShape shape;
    shape.packetCount = packetCount;
    shape.packet.baseImu = true;
    return MakeRandomPackets(packetCount, shape);
}

QMessageBox* VisibleMessageBox() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
        auto* box = qobject_cast<QMessageBox*>(window);
        if (box != nullptr && box->isVisible()) return box;
    }
    return nullptr;
}

void TypeAndEnter(QFileDialog& dialog, const QString& text) {
    auto* edit = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    edit->setText(text);  // typed key by key, the completer's list would swallow the Enter
    QTest::keyClick(edit, Qt::Key_Return);
}

}  // namespace

std::optional<SeenMessage> TakeMessage() {
    if (!QTest::qWaitFor([] { return VisibleMessageBox() != nullptr; }, kPatienceMs)) return {};
    QPointer<QMessageBox> box = VisibleMessageBox();
    SeenMessage message;
    message.caption = box->windowTitle();
    message.text = box->text();
    message.details = box->detailedText();
    const auto* details = box->findChild<QTextEdit*>();
    message.detailsOpen = details != nullptr && details->isVisible();
    message.icon = box->icon();
    message.buttons = box->standardButtons();
    message.owner = box->parentWidget();
    QTest::mouseClick(box->button(QMessageBox::Ok), Qt::LeftButton);
    if (!QTest::qWaitFor([&] { return box.isNull(); }, kPatienceMs)) return {};
    return message;
}

void Click(QWidget& window, ControlId id) {
    QTest::mouseClick(Find<QWidget>(window, id), Qt::LeftButton);
}

QString PlainText(const QString& text) {
    QString plain = text;
    return plain.remove(QLatin1Char('&'));
}

bool Drop(QWidget& target, const QList<QUrl>& urls, Qt::DropActions offered) {
    QMimeData data;
    data.setUrls(urls);
    QDragEnterEvent enter({}, offered, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QCoreApplication::sendEvent(&target, &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent drop({}, offered, &data, Qt::LeftButton, Qt::NoModifier);
    drop.ignore();
    QCoreApplication::sendEvent(&target, &drop);
    return drop.isAccepted();
}

std::size_t PacketsInFirstBlock(std::size_t packetCount) {
    constexpr std::size_t kBlockBytes = 50000;
    std::size_t count = 0;
    std::size_t bytes = 0;
    for (const PacketPlan& packet : MakePackets(packetCount)) {
        bytes += EncodePacket(packet).size();
        if (bytes <= kBlockBytes) ++count;
    }
    return count;
}

TestWindow::TestWindow() {
    MakeDirectory(InputDirectory());
    dialog.show();
}

// A test that failed half-way must not destroy the dialog of a running conversion.
TestWindow::~TestWindow() {
    gate.AllowAll();
    if (!QTest::qWaitFor([this] { return !dialog.IsConverting(); }, kPatienceMs)) std::abort();
}

std::wstring TestWindow::PathOf(const std::wstring& name) const {
    return InputDirectory() + kPathSeparator + name;
}

std::wstring TestWindow::AddRecording(const std::wstring& name, std::size_t packetCount) {
    return AddFile(name, BuildOrdFile(Version2Header(32).Set("-BaseIMUAvailable", "1"),
                                      MakePackets(packetCount)));
}

std::wstring TestWindow::AddFile(const std::wstring& name, const std::string& bytes) {
    recordings_[name] = bytes;
    WriteFile(PathOf(name), bytes);
    return PathOf(name);
}

void TestWindow::SelectInputFiles(const QStringList& names) {
    WhenShown<QFileDialog>([&](QFileDialog& fileDialog) {
        fileDialog.setDirectory(ToQString(InputDirectory()));
        QStringList quoted;
        for (const QString& name : names) quoted += QLatin1Char('"') + name + QLatin1Char('"');
        TypeAndEnter(fileDialog, quoted.join(QLatin1Char(' ')));
    });
    Click(dialog, ControlId::kSelectInputFiles);
}

void TestWindow::SelectOutputDirectory(const std::wstring& path) {
    WhenShown<QFileDialog>(
        [&](QFileDialog& fileDialog) { TypeAndEnter(fileDialog, ToQString(path)); });
    Click(dialog, ControlId::kSelectOutputDirectory);
}

QString TestWindow::RecordLabel() const {
    return Find<QLabel>(*Progress(), ControlId::kRecordLabel)->text();
}

QString TestWindow::HeaderText() const {
    return Find<QPlainTextEdit>(dialog, ControlId::kFileHeader)->toPlainText();
}

void TestWindow::ClickListItem(int item) {
    auto* list = Find<QTreeWidget>(dialog, ControlId::kFileList);
    const QRect place = list->visualItemRect(list->topLevelItem(item));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place.center());
}

ReferenceConvertResult TestWindow::Reference(const std::wstring& name,
                                             const std::wstring& outputDirectory,
                                             const ReferenceConvertOptions& options,
                                             std::optional<std::size_t> blocksUntilCancel) const {
    ReferenceConvertInput input = ReferenceInput(recordings_.at(name), options, outputDirectory);
    input.fileName = ToUtf8(name);
    input.spansUntilCancel = blocksUntilCancel;
    return ReferenceConvert(input);
}

std::map<std::string, std::string> TestWindow::Outputs(const std::wstring& name,
                                                       const std::wstring& outputDirectory) const {
    return FilesIn(outputDirectory + kPathSeparator + SplitPath(name).name);
}

}  // namespace stalwick::test

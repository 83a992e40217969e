// SPDX-License-Identifier: BSD-3-Clause
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProcess>
#include <QTextDocumentFragment>
#include <QTreeWidget>

#include "app/offered_files.h"
#include "app/qt_text.h"
#include "platform/paths.h"
#include "platform/system_error.h"
#include "tests/app/window_test.h"

using namespace stalwick;
using namespace stalwick::test;

class FileSelectionTest : public QObject {
    Q_OBJECT
  private slots:
    void InputDialogHasItsTitleFilterAndMultipleSelection();
    void InputDialogListsRecordingsOnly();
    void CanceledInputDialogChangesNothing();
    void SelectionReplacesTheEarlierOne();
    void SelectionSetsBothDirectoryBoxesReplacingAnOutputDirectory();
    void SelectionSetsTheOutputDirectoryBeforeTheInputDirectory();
    void OutputDialogHasItsTitleAndStartsInItsBox();
    void CanceledOutputDialogChangesNothing();
    void DroppedRecordingsAreSelected();
    void DropIgnoresOtherFiles();
    void DropWithoutARecordingChangesNothing();
    void DropOnAnyPartOfTheWindowCounts();
    void DropWhileConvertingChangesNothing();
    void DropIsACopyWhateverTheKeysAskFor_data();
    void DropIsACopyWhateverTheKeysAskFor();
    void DropThatMayOnlyMoveIsRefused();
    void DropOfALargeSelectionKeepsItsOrder();
    void RecordingInTheRootDirectoryShowsIt();
    void InputDialogOpensWideEnoughForItsColumns();
    void ClickOnAPipeOrADeviceOpensNothing();
    void ToolTipsShowPathsUnchanged_data();
    void ToolTipsShowPathsUnchanged();
};

namespace {

QLineEdit* Box(TestWindow& window, ControlId id) {
    return Find<QLineEdit>(window.dialog, id);
}

QStringList ListedNames(TestWindow& window) {
    auto* list = Find<QTreeWidget>(window.dialog, ControlId::kFileList);
    QStringList names;
    for (int i = 0; i < list->topLevelItemCount(); ++i) names += list->topLevelItem(i)->text(0);
    return names;
}

QUrl Url(const std::wstring& path) {
    return QUrl::fromLocalFile(ToQString(path));
}

}  // namespace

void FileSelectionTest::InputDialogHasItsTitleFilterAndMultipleSelection() {
    TestWindow window;
    bool seen = false;
    WhenShown<QFileDialog>([&](QFileDialog& dialog) {
        seen = true;
        QCOMPARE(dialog.windowTitle(), "Open Veltrosyn Wireless Raw Data File...");
        QCOMPARE(dialog.nameFilters(), QStringList("Veltrosyn Wireless Raw Data Files (*.ord)"));
        QCOMPARE(dialog.fileMode(), QFileDialog::ExistingFiles);
        QCOMPARE(dialog.acceptMode(), QFileDialog::AcceptOpen);
        QCOMPARE(dialog.defaultSuffix(), "ord");
        dialog.reject();
    });
    Click(window.dialog, ControlId::kSelectInputFiles);
    QVERIFY(seen);
}

void FileSelectionTest::InputDialogListsRecordingsOnly() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.AddRecording(L"B.ORD", 1);
    window.AddFile(L"notes.txt", "text");
    QStringList shown;
    WhenShown<QFileDialog>([&](QFileDialog& dialog) {
        dialog.setDirectory(ToQString(window.InputDirectory()));
        auto* view = dialog.findChild<QAbstractItemView*>(QStringLiteral("listView"));
        QTRY_COMPARE(view->model()->rowCount(view->rootIndex()), 2);
        for (int row = 0; row < 2; ++row) {
            shown += view->model()->index(row, 0, view->rootIndex()).data().toString();
        }
        dialog.reject();
    });
    Click(window.dialog, ControlId::kSelectInputFiles);
    shown.sort(Qt::CaseInsensitive);
    QCOMPARE(shown, QStringList({"a.ord", "B.ORD"}));
}

void FileSelectionTest::CanceledInputDialogChangesNothing() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    Box(window, ControlId::kOutputDirectory)->setText("chosen");
    WhenShown<QFileDialog>([](QFileDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    Click(window.dialog, ControlId::kSelectInputFiles);
    QCOMPARE(ListedNames(window), QStringList("a.ord"));
    QCOMPARE(Box(window, ControlId::kOutputDirectory)->text(), "chosen");
}

void FileSelectionTest::SelectionReplacesTheEarlierOne() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.AddRecording(L"b.ord", 1);
    window.SelectInputFiles({"a.ord"});
    window.SelectInputFiles({"b.ord"});
    QCOMPARE(ListedNames(window), QStringList("b.ord"));
}

void FileSelectionTest::SelectionSetsBothDirectoryBoxesReplacingAnOutputDirectory() {
    TestWindow window;
    const std::wstring output = window.directory.Path(L"out");
    MakeDirectory(output);
    window.SelectOutputDirectory(output);
    QCOMPARE(Box(window, ControlId::kOutputDirectory)->text(), ToQString(output));
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    const QString folder = ToQString(window.InputDirectory());
    QCOMPARE(Box(window, ControlId::kOutputDirectory)->text(), folder);
    QCOMPARE(Box(window, ControlId::kInputDirectory)->text(), folder);
}

void FileSelectionTest::SelectionSetsTheOutputDirectoryBeforeTheInputDirectory() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    QStringList order;
    for (const ControlId id : {ControlId::kInputDirectory, ControlId::kOutputDirectory}) {
        connect(Box(window, id), &QLineEdit::textChanged, this,
                [&order, id] { order += ObjectName(id); });
    }
    window.SelectInputFiles({"a.ord"});
    QCOMPARE(order, QStringList({"1002", "1000"}));
}

void FileSelectionTest::OutputDialogHasItsTitleAndStartsInItsBox() {
    TestWindow window;
    Box(window, ControlId::kOutputDirectory)->setText(ToQString(window.InputDirectory()));
    bool seen = false;
    WhenShown<QFileDialog>([&](QFileDialog& dialog) {
        seen = true;
        QCOMPARE(dialog.windowTitle(), "Select Data Directory");
        QCOMPARE(dialog.fileMode(), QFileDialog::Directory);
        QCOMPARE(ToWidePath(dialog.directory().absolutePath()), window.InputDirectory());
        dialog.reject();
    });
    Click(window.dialog, ControlId::kSelectOutputDirectory);
    QVERIFY(seen);
}

void FileSelectionTest::CanceledOutputDialogChangesNothing() {
    TestWindow window;
    Box(window, ControlId::kOutputDirectory)->setText(ToQString(window.InputDirectory()));
    WhenShown<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    Click(window.dialog, ControlId::kSelectOutputDirectory);
    QCOMPARE(Box(window, ControlId::kOutputDirectory)->text(), ToQString(window.InputDirectory()));
}

void FileSelectionTest::DroppedRecordingsAreSelected() {
    TestWindow window;
    const std::wstring a = window.AddRecording(L"a.ord", 1);
    const std::wstring b = window.AddRecording(L"B.ORD", 1);
    Box(window, ControlId::kOutputDirectory)->setText("elsewhere");
    QVERIFY(Drop(window.dialog, {Url(b), Url(a)}));
    QCOMPARE(ListedNames(window), QStringList({"B.ORD", "a.ord"}));
    QCOMPARE(Box(window, ControlId::kOutputDirectory)->text(), ToQString(window.InputDirectory()));
    QCOMPARE(Box(window, ControlId::kInputDirectory)->text(), ToQString(window.InputDirectory()));
}

void FileSelectionTest::DropIgnoresOtherFiles() {
    TestWindow window;
    const std::wstring a = window.AddRecording(L"a.ord", 1);
    const std::wstring text = window.AddFile(L"notes.txt", "text");
    const std::wstring similar = window.AddFile(L"a.ord.bak", "text");
    MakeDirectory(window.PathOf(L"folder.ord"));
    QVERIFY(Drop(window.dialog,
                 {Url(text), Url(a), Url(similar), Url(window.PathOf(L"folder.ord")),
                  Url(window.PathOf(L"missing.ord")), QUrl("https://example.org/b.ord")}));
    QCOMPARE(ListedNames(window), QStringList("a.ord"));
}

void FileSelectionTest::DropWithoutARecordingChangesNothing() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    QVERIFY(!Drop(window.dialog, {Url(window.AddFile(L"notes.txt", "text"))}));
    QCOMPARE(ListedNames(window), QStringList("a.ord"));
}

// The text boxes would take the path as text.
void FileSelectionTest::DropOnAnyPartOfTheWindowCounts() {
    TestWindow window;
    const QUrl url = Url(window.AddRecording(L"a.ord", 1));
    for (QWidget* part : window.dialog.findChildren<QWidget*>()) {
        if (part->isWindow() || part->window() != &window.dialog) continue;
        QWidget* taker = part;
        while (!taker->acceptDrops()) taker = taker->parentWidget();
        Click(window.dialog, ControlId::kClearList);
        QVERIFY2(Drop(*taker, {url}), qPrintable(part->objectName()));
        QCOMPARE(ListedNames(window), QStringList("a.ord"));
    }
    QCOMPARE(window.HeaderText(), "");
}

void FileSelectionTest::DropWhileConvertingChangesNothing() {
    TestWindow window;
    window.AddRecording(L"a.ord", 5);
    const QUrl other = Url(window.AddRecording(L"b.ord", 5));
    window.SelectInputFiles({"a.ord"});
    window.gate.Allow(0);
    window.ClickStart();
    QVERIFY(!Drop(window.dialog, {other}));
    QCOMPARE(ListedNames(window), QStringList("a.ord"));
    window.gate.AllowAll();
    QVERIFY(TakeMessage());
}

void FileSelectionTest::DropIsACopyWhateverTheKeysAskFor_data() {
    QTest::addColumn<Qt::KeyboardModifiers>("keys");
    QTest::newRow("none") << Qt::KeyboardModifiers();
    QTest::newRow("Shift: move") << Qt::KeyboardModifiers(Qt::ShiftModifier);
    QTest::newRow("Ctrl: copy") << Qt::KeyboardModifiers(Qt::ControlModifier);
    QTest::newRow("both: link") << (Qt::ControlModifier | Qt::ShiftModifier);
}

// After a move, a file manager deletes the source. The events reach the widget the way the window's
// own do.
void FileSelectionTest::DropIsACopyWhateverTheKeysAskFor() {
    QFETCH(Qt::KeyboardModifiers, keys);
    const Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    TestWindow window;
    QMimeData data;
    data.setUrls({Url(window.AddRecording(L"a.ord", 1))});
    const QPoint place = window.dialog.rect().center();
    QDragEnterEvent enter(place, offered, &data, Qt::LeftButton, keys);
    QDragMoveEvent move(place, offered, &data, Qt::LeftButton, keys);
    QDropEvent drop(place, offered, &data, Qt::LeftButton, keys);
    for (QDropEvent* event : {static_cast<QDropEvent*>(&enter), static_cast<QDropEvent*>(&move),
                              static_cast<QDropEvent*>(&drop)}) {
        QCoreApplication::sendEvent(window.dialog.windowHandle(), event);
        QVERIFY(event->isAccepted());
        QCOMPARE(event->dropAction(), Qt::CopyAction);
    }
    QCOMPARE(ListedNames(window), QStringList("a.ord"));
}

void FileSelectionTest::DropThatMayOnlyMoveIsRefused() {
    TestWindow window;
    const QUrl url = Url(window.AddRecording(L"a.ord", 1));
    QVERIFY(!Drop(window.dialog, {url}, Qt::MoveAction));
    QMimeData data;
    data.setUrls({url});
    QDropEvent drop({}, Qt::MoveAction, &data, Qt::LeftButton, {});
    drop.ignore();
    QCoreApplication::sendEvent(&window.dialog, &drop);
    QVERIFY(!drop.isAccepted());
    QCOMPARE(ListedNames(window), QStringList());
}

void FileSelectionTest::DropOfALargeSelectionKeepsItsOrder() {
    TestWindow window;
    QList<QUrl> urls;
    QStringList names;
    for (int i = 0; i < 2000; ++i) {
        const QString name = QStringLiteral("recording-%1.ord").arg((i * 7919) % 2000);
        urls += Url(window.AddFile(ToWide(name), "x"));
        names += name;
    }
    QVERIFY(Drop(window.dialog, urls));
    QCOMPARE(ListedNames(window), names);
}

namespace {

// The tool tip as Qt shows it.
QString Shown(const QString& toolTip) {
    return Qt::mightBeRichText(toolTip) ? QTextDocumentFragment::fromHtml(toolTip).toPlainText()
                                        : toolTip;
}

}  // namespace

void FileSelectionTest::ToolTipsShowPathsUnchanged_data() {
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "trial  2 & 3";
    QTest::newRow("tags") << "trial<i>  2</i>";
    QTest::newRow("entities") << "trial&lt;2";
}

void FileSelectionTest::ToolTipsShowPathsUnchanged() {
    QFETCH(QString, name);
    TestWindow window;
    const std::wstring directory = window.PathOf(ToWide(name));
    const std::wstring path = directory + kPathSeparator + L"a.ord";
    window.dialog.SelectFiles({path});
    const auto* list = Find<QTreeWidget>(window.dialog, ControlId::kFileList);
    QCOMPARE(Shown(list->topLevelItem(0)->toolTip(0)), ToQString(path));
    for (const ControlId box : {ControlId::kInputDirectory, ControlId::kOutputDirectory}) {
        QCOMPARE(Shown(Box(window, box)->toolTip()), ToQString(directory));
    }
}

void FileSelectionTest::RecordingInTheRootDirectoryShowsIt() {
    if (kPathSeparator != L'/') QSKIP("there a drive stands before the separator");
    TestWindow window;
    window.dialog.SelectFiles({L"/a.ord"});
    QCOMPARE(ListedNames(window), QStringList("a.ord"));
    QCOMPARE(Box(window, ControlId::kInputDirectory)->text(), "/");
    QCOMPARE(Box(window, ControlId::kOutputDirectory)->text(), "/");
    QVERIFY(Find<QWidget>(window.dialog, ControlId::kCreateNewFiles)->isEnabled());
}

void FileSelectionTest::InputDialogOpensWideEnoughForItsColumns() {
    TestWindow window;
    int columns = 0;
    int room = 0;
    WhenShown<QFileDialog>([&](QFileDialog& dialog) {
        auto* list = dialog.findChild<QTreeView*>(QStringLiteral("treeView"));
        columns = list->header()->length();
        room = list->viewport()->width();
        dialog.reject();
    });
    Click(window.dialog, ControlId::kSelectInputFiles);
    QVERIFY(columns > 0);
    QVERIFY2(columns <= room, qPrintable(QStringLiteral("%1 of %2").arg(room).arg(columns)));
}

namespace {

// Refuses to open anything, and records the attempt.
class OpenRefusals final : public ForwardingFileCalls {
  public:
    int count = 0;

    SystemErrorCode OpenForReading(const std::wstring& /*path*/, FileHandle& /*handle*/) override {
        ++count;
        return SystemErrorFor(SystemErrorKind::kAccessDenied);
    }
};

}  // namespace

// Opening a pipe means waiting for its writer.
void FileSelectionTest::ClickOnAPipeOrADeviceOpensNothing() {
    if (kPathSeparator != L'/') QSKIP("no such files there");
    TestWindow window;
    const std::wstring pipe = window.PathOf(L"pipe.ord");
    const std::wstring device = window.PathOf(L"device.ord");
    QCOMPARE(QProcess::execute("mkfifo", {ToQString(pipe)}), 0);
    QVERIFY(QFile::link("/dev/tty", ToQString(device)));
    QVERIFY(Drop(window.dialog, {Url(pipe), Url(device), Url(window.AddRecording(L"a.ord", 1))}));
    OpenRefusals refusals;
    for (const int item : {0, 1}) {
        window.ClickListItem(item);
        QCOMPARE(refusals.count, 0);
    }
    QCOMPARE(window.HeaderText(), "");
    window.ClickListItem(2);
    QCOMPARE(refusals.count, 1);
}

STALWICK_WINDOW_TEST_MAIN(FileSelectionTest)

#include "file_selection_test.moc"

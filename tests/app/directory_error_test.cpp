// SPDX-License-Identifier: BSD-3-Clause
#include <system_error>

#include <QLineEdit>

#include "app/qt_text.h"
#include "platform/paths.h"
#include "tests/app/window_test.h"

using namespace stalwick;
using namespace stalwick::test;

// An unavailable output directory: the window reports it and starts nothing.
class DirectoryErrorTest : public QObject {
    Q_OBJECT
  private slots:
    void OutputPathThatIsAFileIsADirectoryError();
    void OutputDirectoryWithoutAParentIsADirectoryError();
    void EmptyDirectoryBoxIsADirectoryError();
    void DirectoryErrorIsOneLineWhateverTheDirectorysName();
    void DirectoryErrorHasTheSystemsReasonInItsDetails();
};

namespace {

void VerifyDirectoryError(TestWindow& window, const QString& directory) {
    Find<QLineEdit>(window.dialog, ControlId::kOutputDirectory)->setText(directory);
    window.dialog.StartConversion();
    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->caption, "Data Directory Error");
    QCOMPARE(message->icon, QMessageBox::Critical);
    QCOMPARE(message->buttons, QMessageBox::Ok);
    QString shown = directory;
    shown.replace("\n", "\\n");
    QCOMPARE(message->text, "Error creating output directory(" + shown +
                                ").  Unable to proceed.  Please make sure the output directory "
                                "location exists.");
    QVERIFY(!window.dialog.IsConverting());
    QVERIFY(window.dialog.isEnabled());
    QVERIFY(!window.Progress()->isVisible());
    QVERIFY(!Exists(window.PathOf(L"a")));
}

}  // namespace

void DirectoryErrorTest::OutputPathThatIsAFileIsADirectoryError() {
    TestWindow window;
    const std::wstring file = window.AddFile(L"file", "no directory");
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    VerifyDirectoryError(window, ToQString(file));
    QCOMPARE(ReadFile(file), std::string("no directory"));
}

void DirectoryErrorTest::OutputDirectoryWithoutAParentIsADirectoryError() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    VerifyDirectoryError(window, ToQString(window.PathOf(L"missing") + L"/level"));
}

void DirectoryErrorTest::EmptyDirectoryBoxIsADirectoryError() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    VerifyDirectoryError(window, "");
}

void DirectoryErrorTest::DirectoryErrorIsOneLineWhateverTheDirectorysName() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    VerifyDirectoryError(window, ToQString(window.PathOf(L"missing\nlines") + L"/level"));
}

void DirectoryErrorTest::DirectoryErrorHasTheSystemsReasonInItsDetails() {
    TestWindow window;
    const QString missing = ToQString(window.PathOf(L"missing") + L"/level");
    Find<QLineEdit>(window.dialog, ControlId::kOutputDirectory)->setText(missing);
    window.dialog.StartConversion();
    const auto message = TakeMessage();
    QVERIFY(message);
    const QString reason = QString::fromStdString(
        std::make_error_code(std::errc::no_such_file_or_directory).message());
    QVERIFY2(message->details.contains(missing), qPrintable(message->details));
    if (kPathSeparator == L'/') {
        QVERIFY2(message->details.endsWith(reason), qPrintable(message->details));
    }
}

STALWICK_WINDOW_TEST_MAIN(DirectoryErrorTest)

#include "directory_error_test.moc"

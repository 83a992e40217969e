// SPDX-License-Identifier: BSD-3-Clause
#include <filesystem>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "app/about_dlg.h"
#include "app/qt_text.h"
#include "platform/paths.h"
#include "platform/program_version.h"
#include "platform/text_encoding.h"
#include "tests/app/window_test.h"

using namespace stalwick;
using namespace stalwick::test;

class AboutAndStartupTest : public QObject {
    Q_OBJECT
  private slots:
    void AboutBoxHasItsTexts_data();
    void AboutBoxHasItsTexts();
    void AboutBoxShowsThePicture();
    void AboutBoxClosesOnOkEnterAndEscape();
    void VersionAgreesWithTheHeaderOfEveryOutput();
    void StartUpRunsTheMainDialogUntilItIsClosed();
    void ClosedDialogEndsStartUpOnlyOnceTheConversionIsOver();
    void StartUpListsTheRecordingsAmongItsArguments();
    void StartUpTakesArgumentsFromTheCurrentDirectory_data();
    void StartUpTakesArgumentsFromTheCurrentDirectory();
    void StartUpWithoutARecordingAmongItsArgumentsIsEmpty();
    void StartUpConvertsARecordingWithANameOfAnyCharacters_data();
    void StartUpConvertsARecordingWithANameOfAnyCharacters();
    void ApplicationHasItsNames();
};

namespace {

// The main dialog's contents when the program starts with the arguments.
struct FirstView {
    QStringList names;
    QStringList paths;
    QString outputDirectory;
    QString inputDirectory;
    bool canStart = false;
};

FirstView StartWith(const std::vector<std::wstring>& arguments) {
    std::vector<std::string> narrow;
    for (const std::wstring& argument : arguments) narrow.push_back(ToUtf8(argument));
    FirstView view;
    WhenShown<StalwickDlg>([&](StalwickDlg& dialog) {
        const auto* list = Find<QTreeWidget>(dialog, ControlId::kFileList);
        for (int i = 0; i < list->topLevelItemCount(); ++i) {
            view.names += list->topLevelItem(i)->text(0);
            view.paths += list->topLevelItem(i)->toolTip(0);
        }
        view.outputDirectory = Find<QLineEdit>(dialog, ControlId::kOutputDirectory)->text();
        view.inputDirectory = Find<QLineEdit>(dialog, ControlId::kInputDirectory)->text();
        view.canStart = Find<QPushButton>(dialog, ControlId::kCreateNewFiles)->isEnabled();
        QVERIFY(dialog.close());
    });
    static_cast<StalwickApp*>(qApp)->InitInstance(narrow);
    return view;
}

}  // namespace

void AboutAndStartupTest::AboutBoxHasItsTexts_data() {
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("name") << "1026"
                          << "Veltrosyn Stalwick";
    QTest::newRow("version") << "1029"
                             << "Version: 1.2.0 64-bit";
    QTest::newRow("build") << "1027"
                           << "Build number: 1941";
    QTest::newRow("legal notice") << "1028"
                                  << "Provided as is, without warranty of any kind. For research "
                                     "use only; not for diagnostic or clinical use.";
}

void AboutAndStartupTest::AboutBoxHasItsTexts() {
    QFETCH(QString, number);
    QFETCH(QString, text);
    CAboutDlg about;
    QCOMPARE(about.windowTitle(), "About Stalwick");
    auto* label = about.findChild<QLabel*>(number);
    QVERIFY(label != nullptr);
    QCOMPARE(label->text(), text);
    about.show();
    QVERIFY(label->width() >= label->minimumSizeHint().width());
    QVERIFY(label->height() >= label->heightForWidth(label->width()));
}

void AboutAndStartupTest::AboutBoxShowsThePicture() {
    CAboutDlg about;
    auto* picture = about.findChild<QLabel*>(QStringLiteral("1025"));
    QVERIFY(picture != nullptr);
    QVERIFY(!picture->pixmap().isNull());
}

void AboutAndStartupTest::AboutBoxClosesOnOkEnterAndEscape() {
    CAboutDlg about;
    auto* ok = about.findChild<QPushButton*>(QStringLiteral("1"));
    QVERIFY(ok != nullptr);
    QCOMPARE(PlainText(ok->text()), "OK");
    about.show();
    QTest::mouseClick(ok, Qt::LeftButton);
    QVERIFY(!about.isVisible());
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
        about.show();
        QTest::keyClick(&about, key);
        QVERIFY(!about.isVisible());
    }
}

void AboutAndStartupTest::VersionAgreesWithTheHeaderOfEveryOutput() {
    TestWindow window;
    window.AddRecording(L"a.ord", 1);
    window.SelectInputFiles({"a.ord"});
    window.ClickStart();
    QVERIFY(TakeMessage());
    const QString version = QStringLiteral("\"Veltrosyn Stalwick\" \"%1.%2.%3.%4\"")
                                .arg(kVersionMajor)
                                .arg(kVersionMinor)
                                .arg(kVersionPatch)
                                .arg(kBuildNumber);
    const auto outputs = window.Outputs(L"a.ord", window.InputDirectory());
    QCOMPARE(outputs.size(), std::size_t{33});
    for (const auto& [name, bytes] : outputs) {
        QVERIFY2(bytes.substr(0, 16384).find(version.toStdString()) != std::string::npos,
                 name.c_str());
    }
}

void AboutAndStartupTest::StartUpRunsTheMainDialogUntilItIsClosed() {
    bool wasModal = false;
    WhenShown<StalwickDlg>([&](StalwickDlg& dialog) {
        wasModal = dialog.isModal();
        QVERIFY(dialog.close());
    });
    QCOMPARE(static_cast<StalwickApp*>(qApp)->InitInstance(), 0);
    QVERIFY(wasModal);
    for (QWidget* window : QApplication::topLevelWidgets()) {
        QVERIFY(qobject_cast<StalwickDlg*>(window) == nullptr);
    }
}

void AboutAndStartupTest::ClosedDialogEndsStartUpOnlyOnceTheConversionIsOver() {
    bool refused = false;
    WhenShown<StalwickDlg>([&](StalwickDlg& dialog) {
        TempDirectory directory;
        dialog.findChild<QLineEdit*>(ObjectName(ControlId::kOutputDirectory))
            ->setText(QString::fromStdWString(directory.Path()));
        dialog.StartConversion();
        refused = !dialog.close() && dialog.isVisible();
        QVERIFY(TakeMessage());
        QVERIFY(dialog.close());
    });
    QCOMPARE(static_cast<StalwickApp*>(qApp)->InitInstance(), 0);
    QVERIFY(refused);
}

void AboutAndStartupTest::StartUpListsTheRecordingsAmongItsArguments() {
    TestWindow window;
    const std::wstring b = window.AddRecording(L"b.ORD", 1);
    const std::wstring a = window.AddRecording(L"a.ord", 1);
    MakeDirectory(window.PathOf(L"folder.ord"));
    const FirstView view =
        StartWith({b, L"--help", window.AddFile(L"notes.txt", "text"), window.PathOf(L"folder.ord"),
                   window.PathOf(L"missing.ord"), a});
    QCOMPARE(view.names, QStringList({"b.ORD", "a.ord"}));
    QCOMPARE(view.paths, QStringList({ToQString(b), ToQString(a)}));
    QCOMPARE(view.outputDirectory, ToQString(window.InputDirectory()));
    QCOMPARE(view.inputDirectory, ToQString(window.InputDirectory()));
    QVERIFY(view.canStart);
}

void AboutAndStartupTest::StartUpTakesArgumentsFromTheCurrentDirectory_data() {
    QTest::addColumn<QByteArray>("directory");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("plain") << QByteArray("in") << QByteArray("a.ord");
    if (kPathSeparator == L'\\') return;  // names of fewer characters, all of them UTF-16
    QTest::newRow("directory not UTF-8") << QByteArray("t\xE9") << QByteArray("a.ord");
    QTest::newRow("name that begins with a colon") << QByteArray("in") << QByteArray(":a.ord");
}

void AboutAndStartupTest::StartUpTakesArgumentsFromTheCurrentDirectory() {
    QFETCH(QByteArray, directory);
    QFETCH(QByteArray, name);
    TempDirectory top;
    const std::wstring current = top.Path(FromUtf8(directory.toStdString()));
    const std::wstring path = current + kPathSeparator + FromUtf8(name.toStdString());
    MakeDirectory(current);
    WriteFile(path, "recording");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(ToUtf8(current));
    const FirstView view = StartWith({FromUtf8(name.toStdString())});
    std::filesystem::current_path(before);
    QCOMPARE(view.paths, QStringList(ToQString(path)));
    QCOMPARE(view.outputDirectory, ToQString(current));
}

void AboutAndStartupTest::StartUpWithoutARecordingAmongItsArgumentsIsEmpty() {
    const FirstView view = StartWith({L"missing.ord"});
    QCOMPARE(view.names, QStringList());
    QCOMPARE(view.outputDirectory, "");
    QCOMPARE(view.inputDirectory, "");
    QVERIFY(!view.canStart);
}

void AboutAndStartupTest::StartUpConvertsARecordingWithANameOfAnyCharacters_data() {
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("blanks") << QByteArray("with  blanks");
    QTest::newRow("Cyrillic, Chinese and an emoji") << QByteArray("запись 记录 🦇");
    // Elsewhere names are UTF-16.
    if (kPathSeparator == L'/') QTest::newRow("not UTF-8") << QByteArray("\xFF \xC3");
}

void AboutAndStartupTest::StartUpConvertsARecordingWithANameOfAnyCharacters() {
    QFETCH(QByteArray, name);
    TestWindow window;
    const std::wstring path = window.AddRecording(FromUtf8(name.toStdString()) + L".ord", 1);
    bool ended = false;
    WhenShown<StalwickDlg>([&](StalwickDlg& dialog) {
        Click(dialog, ControlId::kCreateNewFiles);
        ended = TakeMessage().has_value();
        dialog.close();
    });
    static_cast<StalwickApp*>(qApp)->InitInstance({ToUtf8(path)});
    QVERIFY(ended);
    const auto outputs = FilesIn(path.substr(0, path.size() - 4));
    QCOMPARE(outputs.size(), std::size_t{33});
}

void AboutAndStartupTest::ApplicationHasItsNames() {
    QCOMPARE(QApplication::applicationName(), "stalwick");
    QCOMPARE(QApplication::applicationVersion(), "1.2.0");
    QCOMPARE(QGuiApplication::desktopFileName(), "com.veltrosyn.Stalwick");
    QVERIFY(!QApplication::windowIcon().isNull());
}

STALWICK_WINDOW_TEST_MAIN(AboutAndStartupTest)

#include "about_and_startup_test.moc"

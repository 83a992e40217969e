#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "app/about_dlg.h"
#include "platform/program_version.h"
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
    void ApplicationHasItsNames();
};

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

void AboutAndStartupTest::ApplicationHasItsNames() {
    QCOMPARE(QApplication::applicationName(), "stalwick");
    QCOMPARE(QApplication::applicationVersion(), "1.2.0");
    QCOMPARE(QGuiApplication::desktopFileName(), "com.veltrosyn.Stalwick");
    QVERIFY(!QApplication::windowIcon().isNull());
}

STALWICK_WINDOW_TEST_MAIN(AboutAndStartupTest)

#include "about_and_startup_test.moc"

// SPDX-License-Identifier: BSD-3-Clause
#include <QProcess>

#include "tests/app/window_test.h"

using namespace stalwick;
using namespace stalwick::test;

// The end of the desktop's session, requested by the test's own session manager
// (session_manager.cpp) in the X desktop's protocol.
class SessionEndTest : public QObject {
    Q_OBJECT
  public:
    explicit SessionEndTest(QProcess& manager) : manager_(manager) {}

  private slots:
    void IdleWindowGrantsTheEnd();
    void ConversionRefusesTheEnd();
    void EndIsGrantedAfterTheConversion();

  private:
    // The program's answer to the manager.
    QByteArray AskForTheEnd();

    QProcess& manager_;
};

// The manager was started before there was an event loop, so it is polled.
QByteArray SessionEndTest::AskForTheEnd() {
    manager_.write("end\n");
    manager_.waitForBytesWritten();
    const auto answered = [this] { return manager_.canReadLine() || manager_.waitForReadyRead(1); };
    if (!QTest::qWaitFor(answered, kPatienceMs)) return "nothing";
    return manager_.readLine().trimmed();
}

void SessionEndTest::IdleWindowGrantsTheEnd() {
    TestWindow window;
    QCOMPARE(AskForTheEnd(), QByteArray("granted"));
}

void SessionEndTest::ConversionRefusesTheEnd() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    window.gate.Allow(0);
    window.ClickStart();
    QCOMPARE(AskForTheEnd(), QByteArray("refused"));
    QVERIFY(window.dialog.isVisible());
    QVERIFY(window.Progress()->isVisible());
    window.gate.AllowAll();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Processing complete");
}

void SessionEndTest::EndIsGrantedAfterTheConversion() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    window.SelectInputFiles({"a.ord"});
    window.ClickStart();
    QVERIFY(TakeMessage());
    QCOMPARE(AskForTheEnd(), QByteArray("granted"));
}

// session_end_test MANAGER: the manager must run before the application connects to it.
int main(int argumentCount, char** arguments) {
    QProcess manager;
    manager.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    manager.start(QString::fromLocal8Bit(arguments[1]), {});
    if (!manager.waitForReadyRead()) return 1;
    qputenv("SESSION_MANAGER", manager.readLine().trimmed());

    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    int result = 0;
    {
        StalwickApp app(argumentCount, arguments);
        SessionEndTest suite(manager);
        result = QTest::qExec(&suite, QStringList(app.arguments().constFirst()));
    }
    manager.kill();
    manager.waitForFinished();
    return result;
}

#include "session_end_test.moc"

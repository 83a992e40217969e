// SPDX-License-Identifier: BSD-3-Clause
#include <QTest>

#include "app/qt_text.h"

using namespace stalwick;

class QtTextTest : public QObject {
    Q_OBJECT
  private slots:
    void TextGoesBothWays_data();
    void TextGoesBothWays();
    void UrlOfALocalFileIsItsPath();
    void UrlWithBytesThatAreNoUtf8KeepsThem();
    void UrlOfAnotherMachineIsNoPath();
    void LineEndsOfAHeaderBecomeLf();
};

void QtTextTest::TextGoesBothWays_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("ASCII") << QStringLiteral("/data/a.ord");
    QTest::newRow("beyond Latin-1") << QStringLiteral("\u00B5\u6E2C");
    QTest::newRow("beyond the first plane") << QStringLiteral("\U0001F400");
    QTest::newRow("lone unit") << QString(QChar(0xDCB5));
    QTest::newRow("lone unit after a high one") << QString(QChar(0xD83D)) + QLatin1Char('x');
    QTest::newRow("high unit at the end") << QString(QChar(0xD83D));
}

void QtTextTest::TextGoesBothWays() {
    QFETCH(QString, text);
    QCOMPARE(ToQString(ToWide(text)), text);
}

void QtTextTest::UrlOfALocalFileIsItsPath() {
    QVERIFY(LocalPath(QUrl::fromLocalFile("/a b%20\u00B5.ord")) ==
            ToWidePath(QStringLiteral("/a b%20\u00B5.ord")));
}

void QtTextTest::UrlWithBytesThatAreNoUtf8KeepsThem() {
    QVERIFY(LocalPath(QUrl::fromEncoded("file:///a%B5%20.ord")) == L"/a\xDCB5 .ord");
}

void QtTextTest::UrlOfAnotherMachineIsNoPath() {
    QVERIFY(LocalPath(QUrl("https://example.org/a.ord")).empty());
}

void QtTextTest::LineEndsOfAHeaderBecomeLf() {
    QCOMPARE(HeaderViewText(L"a\r\nb\nc\rd\r\r\n\n"), "a\nb\nc\nd\n\n\n");
}

QTEST_APPLESS_MAIN(QtTextTest)

#include "qt_text_test.moc"

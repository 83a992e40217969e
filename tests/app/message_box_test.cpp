// SPDX-License-Identifier: BSD-3-Clause
#include <QLabel>
#include <QPushButton>

#include "app/message_box.h"
#include "app/qt_text.h"
#include "tests/app/window_test.h"
#include "tests/support/ord_builder.h"

using namespace stalwick;
using namespace stalwick::test;

// What the boxes look like, and what they report about conversions that ended incomplete.
class MessageBoxTest : public QObject {
    Q_OBJECT
  private slots:
    void BoxIsWideEnoughForASentence_data();
    void BoxIsWideEnoughForASentence();
    void LongNamesWrapAndAreShownWhole();
    void DetailsOfARecordingThatLostDataAreOpen();
    void LackOfMemoryEndsTheConversionAndTheWindowLives();
};

namespace {

// The label that shows the text; the box may keep others.
QLabel* VisibleText(const QMessageBox& box) {
    for (auto* label : box.findChildren<QLabel*>()) {
        if (label->isVisible() && label->text() == box.text()) return label;
    }
    return nullptr;
}

// The second read of a file, that of its first block, fails for lack of memory.
class MemoryRunsOut final : public ForwardingFileCalls {
  public:
    SystemErrorCode Read(FileHandle handle, void* data, std::size_t size,
                         std::size_t& transferred) override {
        if (++reads_ == 2) throw std::bad_alloc();
        return ForwardingFileCalls::Read(handle, data, size, transferred);
    }

  private:
    std::atomic<int> reads_{0};
};

}  // namespace

void MessageBoxTest::BoxIsWideEnoughForASentence_data() {
    QTest::addColumn<QMessageBox::Icon>("icon");
    QTest::newRow("status") << QMessageBox::NoIcon;
    QTest::newRow("error") << QMessageBox::Critical;
}

void MessageBoxTest::BoxIsWideEnoughForASentence() {
    QFETCH(QMessageBox::Icon, icon);
    QPointer<QMessageBox> box =
        ShowMessage(nullptr, icon, {.caption = "Veltrosyn Stalwick", .text = "Short."});
    QVERIFY(box->width() >= 400);
    QVERIFY(box->width() <= 500);
    QVERIFY(VisibleText(*box) != nullptr);
    box->close();
}

void MessageBoxTest::LongNamesWrapAndAreShownWhole() {
    const QString text =
        "Error creating output directory(/data/" + QString(600, 'n') + ").  Unable to proceed.";
    QPointer<QMessageBox> box =
        ShowMessage(nullptr, QMessageBox::Critical, {.caption = "c", .text = text});
    QCOMPARE(box->text(), text);
    QVERIFY(box->width() <= 500);
    const QLabel* const label = VisibleText(*box);
    QVERIFY(label != nullptr);
    QVERIFY(box->rect().contains(label->geometry()));
    // As many lines as the name needs if it may break anywhere.
    const QFontMetrics metrics = label->fontMetrics();
    const int lines = metrics.horizontalAdvance(text) / label->width() + 1;
    QVERIFY(lines > 5);
    QVERIFY(label->height() >= lines * metrics.height());
    box->close();
}

void MessageBoxTest::DetailsOfARecordingThatLostDataAreOpen() {
    TestWindow window;
    window.AddFile(L"a.ord", BuildOrdFile(Version2Header(32), std::vector<PacketPlan>(3),
                                          "no packet begins like this"));
    window.SelectInputFiles({"a.ord"});
    window.ClickStart();
    const auto message = TakeMessage();
    QVERIFY(message);
    QCOMPARE(message->text, "Processing complete");
    QVERIFY2(message->details.contains("damaged"), qPrintable(message->details));
    QVERIFY(message->detailsOpen);
}

void MessageBoxTest::LackOfMemoryEndsTheConversionAndTheWindowLives() {
    TestWindow window;
    window.AddRecording(L"a.ord", 20);
    const std::wstring b = window.AddRecording(L"b.ord", 20);
    window.SelectInputFiles({"b.ord", "a.ord"});
    {
        const MemoryRunsOut scarcity;
        window.ClickStart();
        const auto message = TakeMessage();
        QVERIFY(message);
        QCOMPARE(message->text, "Processing failed - Not enough memory");
        QVERIFY2(message->details.contains(ToQString(b) + ": not completely converted: not enough"),
                 qPrintable(message->details));
        QVERIFY(message->detailsOpen);
    }
    QVERIFY(window.dialog.isEnabled());
    QVERIFY(!window.Progress()->isVisible());
    QVERIFY(!Exists(window.PathOf(L"a")));
    window.ClickStart();
    QCOMPARE(TakeMessage().value_or(SeenMessage{}).text, "Processing complete");
}

STALWICK_WINDOW_TEST_MAIN(MessageBoxTest)

#include "message_box_test.moc"

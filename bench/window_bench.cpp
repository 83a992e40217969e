// SPDX-License-Identifier: BSD-3-Clause

// Measures the window: window_bench START_NS RECORDING OUTPUT_DIRECTORY
// START_NS is the time of day in nanoseconds just before the program was started
// (bench/window.sh). Prints the time until the window was drawn, and how long events waited for
// the window's thread while a conversion ran and another thread kept one core busy.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <thread>
#include <vector>

#include <QDropEvent>
#include <QFileInfo>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QTimer>

#include "app/control_ids.h"
#include "app/stalwick_app.h"
#include "app/stalwick_dlg.h"

namespace {

using namespace stalwick;
using Clock = std::chrono::steady_clock;

double Milliseconds(std::chrono::nanoseconds time) {
    return std::chrono::duration<double, std::milli>(time).count();
}

// Notes that the window was drawn for the first time.
class FirstPaint : public QObject {
  public:
    explicit FirstPaint(StalwickDlg& dialog) { dialog.installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint && !drawn)
            QTimer::singleShot(0, [this] { drawn = true; });
        return false;
    }
    bool drawn = false;
};

// Posts an event every few milliseconds from another thread and records how long it waited.
class LatencyProbe : public QObject {
  public:
    void Start() {
        thread_ = std::thread([this] {
            while (!stop_.load()) {
                const Clock::time_point posted = Clock::now();
                QMetaObject::invokeMethod(
                    this, [this, posted] { waits_.push_back(Clock::now() - posted); },
                    Qt::QueuedConnection);
                std::this_thread::sleep_for(std::chrono::milliseconds(3));
            }
        });
    }
    std::vector<Clock::duration> Stop() {
        stop_ = true;
        thread_.join();
        QCoreApplication::processEvents();
        std::sort(waits_.begin(), waits_.end());
        return waits_;
    }

  private:
    std::atomic<bool> stop_{false};
    std::thread thread_;
    std::vector<Clock::duration> waits_;
};

void Drop(StalwickDlg& dialog, const QString& path) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath())});
    QDragEnterEvent enter({}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&dialog, &enter);
    QDropEvent drop({}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&dialog, &drop);
}

// Keeps one core busy, as another program would.
class BusyNeighbour {
  public:
    ~BusyNeighbour() {
        stop_ = true;
        thread_.join();
    }

  private:
    std::atomic<bool> stop_{false};
    std::thread thread_{[this] {
        while (!stop_.load(std::memory_order_relaxed)) {
        }
    }};
};

QString FinalStatus(StalwickDlg& dialog) {
    while (dialog.IsConverting()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return dialog.findChild<QMessageBox*>()->text();
}

}  // namespace

int main(int argumentCount, char** arguments) {
    StalwickApp app(argumentCount, arguments);
    const QStringList given = app.arguments();
    if (given.size() != 4) {
        std::fprintf(stderr, "usage: window_bench START_NS RECORDING OUTPUT_DIRECTORY\n");
        return 2;
    }
    StalwickDlg dialog;
    FirstPaint firstPaint(dialog);
    dialog.show();
    while (!firstPaint.drawn) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    std::printf("start-up to the drawn window: %.0f ms\n",
                Milliseconds(now - std::chrono::nanoseconds(given[1].toLongLong())));
    if (given[2].isEmpty()) return 0;

    Drop(dialog, given[2]);
    dialog.findChild<QLineEdit*>(ObjectName(ControlId::kOutputDirectory))->setText(given[3]);
    LatencyProbe probe;
    const BusyNeighbour neighbour;
    const Clock::time_point start = Clock::now();
    dialog.StartConversion();
    probe.Start();
    const QString status = FinalStatus(dialog);
    const double seconds = Milliseconds(Clock::now() - start) / 1000.0;
    const auto waits = probe.Stop();
    if (status != QStringLiteral("Processing complete") || waits.empty()) {
        std::fprintf(stderr, "the conversion ended with: %s\n", qPrintable(status));
        return 1;
    }
    std::printf(
        "%zu events during a conversion of %.1f s: median %.2f, 99 %% %.2f, longest %.2f ms\n",
        waits.size(), seconds, Milliseconds(waits[waits.size() / 2]),
        Milliseconds(waits[waits.size() * 99 / 100]), Milliseconds(waits.back()));
    return 0;
}

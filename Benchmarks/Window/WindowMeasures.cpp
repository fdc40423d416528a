// SPDX-License-Identifier: MIT
// Measures one thing of the window in a process of its own, without a display; window.py calls it
// and makes the settings. Prints lines of a name and a number: milliseconds, or MiB.
//
//     window-measures empty              an empty window: until it is painted
//     window-measures start              the window: until its rows are painted
//     window-measures filter             each letter of a filter, and each taken back, until it is
//     painted window-measures live COUNT         changes by `window-writer`, until they are painted
//     window-measures many KEYS          one save with many changes by `window-writer`
//     window-measures idle SECONDS       how often the process is woken when nothing happens

#include <QAbstractItemModel>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMainWindow>
#include <QTimer>
#include <QTreeView>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "Main/MainWindow.h"
#include "Session/Session.h"
#include "Table/FilterBar.h"
#include "Table/RowModel.h"
#include "Table/RowView.h"

namespace {

using QRVWindow::MainWindow;
using QRVWindow::Session;

double now() {
    using Milliseconds = std::chrono::duration<double, std::milli>;
    return Milliseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void report(const char* name, double number) {
    std::printf("%s\t%.3f\n", name, number);
}

/// When the process was started, as its starter says.
double started() {
    const char* const text = std::getenv("QRV_STARTED");
    return text == nullptr ? now() : std::strtod(text, nullptr);
}

/// Memory that belongs to this process alone, as far as it is resident.
double privateMemory() {
    std::ifstream file("/proc/self/smaps_rollup");
    double kilobytes = 0;
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("Private_"))
            kilobytes += std::strtod(line.substr(15).c_str(), nullptr);
    return kilobytes / 1024;
}

double residentMemory() {
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("VmRSS:")) return std::strtod(line.substr(6).c_str(), nullptr) / 1024;
    return 0;
}

unsigned long wakeUps() {
    unsigned long count = 0;
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(thread.path() / "status");
        for (std::string line; std::getline(file, line);)
            if (line.starts_with("voluntary_ctxt_switches:"))
                count += std::strtoul(line.substr(24).c_str(), nullptr, 10);
    }
    return count;
}

/// Notes when a widget was last painted.
class PaintClock : public QObject {
  public:
    explicit PaintClock(QWidget& widget) : QObject(&widget) { widget.installEventFilter(this); }
    [[nodiscard]] unsigned count() const { return count_; }

  protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Paint) ++count_;
        return QObject::eventFilter(object, event);
    }

  private:
    unsigned count_ = 0;
};

/// Sleeps until there are events.
void waitUntil(const std::function<bool()>& condition) {
    QTimer deadline;
    bool isOver = false;
    QObject::connect(&deadline, &QTimer::timeout, [&isOver] { isOver = true; });
    deadline.start(std::chrono::minutes(2));
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (isOver) std::exit(1);
    }
}

/// The window with its settings read and painted.
struct ShownWindow {
    Session session;
    MainWindow window{session};
    QRVWindow::RowView& view = *window.findChild<QRVWindow::RowView*>();
    PaintClock clock{*view.viewport()};

    ShownWindow() {
        window.resize(1200, 800);
        session.start();
        window.show();
        waitUntil([this] { return view.model()->rowCount() > 0 && clock.count() > 0; });
    }
    [[nodiscard]] QRVWindow::RowModel& model() const {
        return *qobject_cast<QRVWindow::RowModel*>(view.model());
    }
    /// Handles events until the whole view is painted again; when that was.
    double paint() {
        const unsigned before = clock.count();
        view.viewport()->update();
        waitUntil([this, before] { return clock.count() > before; });
        return now();
    }
};

void measureEmpty() {
    QMainWindow window;
    QTreeView view;
    window.setCentralWidget(&view);
    window.resize(1200, 800);
    PaintClock clock(*view.viewport());
    window.show();
    waitUntil([&clock] { return clock.count() > 0; });
    report("start", now() - started());
    report("private", privateMemory());
    report("resident", residentMemory());
}

void measureStart() {
    ShownWindow shown;
    report("start", now() - started());
    report("rows", shown.model().counts().all);
    shown.model().setAllExpanded(true);
    shown.paint();
    report("private", privateMemory());
    report("resident", residentMemory());
}

void press(QWidget& widget, int key, const QString& text) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&widget, &event);
    }
}

void measureFilter() {
    ShownWindow shown;
    shown.model().setAllExpanded(true);
    shown.paint();
    QLineEdit& field = *shown.window.findChild<QRVWindow::FilterBar*>()->findChild<QLineEdit*>();
    const QString word = QStringLiteral("network.width");
    for (int round = 0; round < 3; ++round) {
        const double before = now();
        report("repaint", shown.paint() - before);
        for (const QChar letter : word) {
            const double pressed = now();
            press(field, letter.toUpper().unicode(), QString(letter));  // as the keys are numbered
            report("letter", shown.paint() - pressed);
        }
        for (qsizetype left = word.size(); left > 0; --left) {
            const double pressed = now();
            press(field, Qt::Key_Backspace, {});
            report("letter", shown.paint() - pressed);
        }
    }
}

/// Notes when the session has new rows.
double& handled(const Session& session) {
    static double time = 0;
    QObject::connect(&session, &Session::tableChanged, qApp, [] { time = now(); });
    return time;
}

/// The writer stores the time at which it writes.
void measureLive(int count) {
    ShownWindow shown;
    const double& handler = handled(shown.session);
    shown.view.reveal("Host.Benchmark.Time");
    shown.paint();
    std::puts("ready");
    std::fflush(stdout);
    double last = 0;
    for (int change = 0; change < count; ++change) {
        const unsigned painted = shown.clock.count();
        const auto written = [&shown] {
            const Tool::SettingRow* row = shown.session.table().at("Host.Benchmark.Time");
            return row == nullptr ? 0 : row->effective.doubleValue();
        };
        waitUntil([&] { return written() > last && shown.clock.count() > painted; });
        last = written();
        report("writer", now() - last);
        report("own", now() - handler);
    }
}

void measureMany(int keys) {
    ShownWindow shown;
    const double& handler = handled(shown.session);
    shown.model().setAllExpanded(true);
    shown.view.reveal("Host.Group3.Network.Setting3.Width");  // what is not in sight is not painted
    shown.paint();
    std::puts("ready");
    std::fflush(stdout);
    const unsigned painted = shown.clock.count();
    waitUntil([&] {
        return shown.session.changes().size() >= static_cast<std::size_t>(keys) &&
               shown.clock.count() > painted;
    });
    report("handler", now() - handler);
}

/// After it has come to rest.
void measureIdle(int seconds) {
    ShownWindow shown;
    const auto rest = [](int milliseconds) {
        QTimer::singleShot(milliseconds, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();
    };
    rest(5000);
    const unsigned long before = wakeUps();
    rest(seconds * 1000);
    report("wakeups", static_cast<double>(wakeUps() - before));
}

int run(const std::string& mode, int number) {
    if (mode == "empty")
        measureEmpty();
    else if (mode == "start")
        measureStart();
    else if (mode == "filter")
        measureFilter();
    else if (mode == "live")
        measureLive(number);
    else if (mode == "many")
        measureMany(number);
    else if (mode == "idle")
        measureIdle(number);
    else
        return 2;
    std::fflush(stdout);
    // What is measured has been measured.
    std::_Exit(0);
}

}  // namespace

int main(int argc, char** argv) {
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QApplication application(argc, argv);
    return argc < 2 ? 2 : run(argv[1], argc < 3 ? 0 : std::atoi(argv[2]));
}

// SPDX-License-Identifier: MIT
// The window as a process of its own.
#include <gtest/gtest.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <chrono>
#include <filesystem>

#include "Tool/ToolSupport.h"
#include "Window/WindowSupport.h"

using namespace std::chrono_literals;

namespace {

/// The window of the build, with the settings and the folders of this test.
class WindowProcess {
  public:
    explicit WindowProcess(const QStringList& arguments = {}) {
        process_.setProcessChannelMode(QProcess::MergedChannels);
        process_.start(QStringLiteral(QRV_WINDOW), arguments);
        EXPECT_TRUE(process_.waitForStarted());
    }
    WindowProcess(const WindowProcess&) = delete;
    WindowProcess& operator=(const WindowProcess&) = delete;
    ~WindowProcess() {
        process_.kill();
        process_.waitForFinished();
    }

    /// How often its threads have waited for something; 0 when it has ended. Without the thread
    /// that waits for the file: it also wakes for every file that is made in the folders above,
    /// which all tests share.
    [[nodiscard]] qulonglong waits() const {
        const QString tasks = QStringLiteral("/proc/%1/task").arg(process_.processId());
        qulonglong count = 0;
        for (const QString& task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile status(tasks + QLatin1Char('/') + task + QStringLiteral("/status"));
            if (!status.open(QIODevice::ReadOnly)) continue;
            const QByteArray text = status.readAll();
            if (text.startsWith("Name:\tfile-presenters")) continue;
            for (const QByteArray& line : text.split('\n'))
                if (line.startsWith("voluntary_ctxt_switches:"))
                    count += line.mid(line.indexOf(':') + 1).trimmed().toULongLong();
        }
        return count;
    }
    /// False when it does not come to rest until the deadline.
    [[nodiscard]] bool rests() const {
        qulonglong before = 0;
        QElapsedTimer quiet;
        return WindowSupport::waitUntil([&] {
            const qulonglong now = waits();
            if (now != before || !quiet.isValid()) quiet.start();
            before = now;
            return now > 0 && quiet.hasExpired(3000);
        });
    }
    [[nodiscard]] QByteArray output() { return process_.readAll(); }

  private:
    QProcess process_;
};

}  // namespace

TEST(WindowProcess, NothingWakesItWhileNothingChanges) {
    WindowSupport::setByTool("CPU.Menubar.Enabled", "false");
    WindowProcess window;
    ASSERT_TRUE(window.rests()) << window.output().toStdString();
    const qulonglong before = window.waits();
    WindowSupport::spin(10s);
    EXPECT_EQ(window.waits(), before) << window.output().toStdString();
    WindowSupport::setByTool("CPU.Menubar.Enabled", "true");
    EXPECT_TRUE(WindowSupport::waitUntil([&] { return window.waits() > before; }));
}

TEST(WindowProcess, ToLookWritesNothing) {
    WindowSupport::setByTool("CPU.Menubar.Enabled", "false");
    const auto before = ToolSupport::snapshot(ToolSupport::configurationFolder());
    {
        WindowProcess window({QStringLiteral("CPU.Menubar")});
        ASSERT_TRUE(window.rests()) << window.output().toStdString();
    }
    EXPECT_EQ(ToolSupport::snapshot(ToolSupport::configurationFolder()), before);
}

TEST(WindowProcess, ToLookAtAMissingFileMakesNone) {
    {
        WindowProcess window;
        ASSERT_TRUE(window.rests()) << window.output().toStdString();
    }
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::settingsFile()));
}

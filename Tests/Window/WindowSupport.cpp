// SPDX-License-Identifier: MIT
#include "Window/WindowSupport.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QFont>
#include <QPixmap>
#include <QTimer>
#include <QWindow>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>

#include "Panes/Findings.h"
#include "Platform/Dispatch/Adapters/Qt.h"
#include "Session/Applier.h"
#include "Tool/ToolSupport.h"

namespace WindowSupport {
namespace {

/// Made when tests run, and not when they are listed: by then the environment is the test's.
class ApplicationOfTest : public testing::Environment {
  public:
    void SetUp() override {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        for (const char* name : {"QT_STYLE_OVERRIDE", "QT_QPA_PLATFORMTHEME", "QT_SCALE_FACTOR",
                                 "QT_ACCESSIBILITY", "DISPLAY", "WAYLAND_DISPLAY"})
            unsetenv(name);
        application_ = std::make_unique<QApplication>(count_, arguments_.data());
        QApplication::setStyle(QStringLiteral("Fusion"));
        constexpr int points = 10;
        QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), points));
        queue_.emplace();
        QRVWindow::Applier::setProgram(QStringLiteral(QRV_WINDOW));
        QRVWindow::Findings::setProgram(QStringLiteral(QRV_WINDOW));
    }
    void TearDown() override {
        queue_.reset();
        application_.reset();
    }

  private:
    std::string name_ = "qrvsettings-window";
    int count_ = 1;
    std::array<char*, 2> arguments_{name_.data(), nullptr};
    std::unique_ptr<QApplication> application_;
    std::optional<QtMainQueue> queue_;
};

const testing::Environment* const applicationOfTest =
    testing::AddGlobalTestEnvironment(new ApplicationOfTest);

}  // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds longest) {
    const QDeadlineTimer end(longest);
    QTimer wake;  // conditions that no event announces
    constexpr int milliseconds = 5;
    wake.start(milliseconds);
    while (!condition()) {
        if (end.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

void spin(std::chrono::milliseconds time) {
    waitUntil([] { return false; }, time);
}

void show(QWidget& widget) {
    widget.show();
    ASSERT_TRUE(waitUntil([&] { return widget.isVisible() && widget.windowHandle()->isExposed(); }))
        << "the widget is not shown";
    QCoreApplication::processEvents();
}

QImage grab(QWidget& widget, const QString& name) {
    // What has changed is laid out from the inside to the outside.
    constexpr int layers = 5;
    for (int layer = 0; layer < layers; ++layer) QCoreApplication::processEvents();
    QImage image = widget.grab().toImage();
    const QString folder = qEnvironmentVariable("QRV_PICTURES");
    if (!folder.isEmpty() && !name.isEmpty()) {
        const QString path = folder + QLatin1Char('/') + name + QStringLiteral(".png");
        EXPECT_TRUE(image.save(path)) << path.toStdString();
    }
    return image;
}

void setByTool(const std::string& keyPath, const std::string& value) {
    runTool({"set", "--", keyPath, value});
}

std::string runTool(const std::vector<std::string>& arguments) {
    const ToolSupport::Outcome outcome = ToolSupport::run(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    return outcome.output;
}

}  // namespace WindowSupport

// SPDX-License-Identifier: MIT
// What tests of the window stand on.
#include "Window/WindowSupport.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QTimer>

#include "Tool/ToolSupport.h"

TEST(WindowSupport, ShowsWidgetsWithoutADisplay) {
    EXPECT_EQ(QGuiApplication::platformName(), QStringLiteral("offscreen"));
    QLabel label(QStringLiteral("text"));
    label.setStyleSheet(QStringLiteral("background: #123456; color: #123456"));
    WindowSupport::show(label);
    const QImage image = WindowSupport::grab(label);
    ASSERT_FALSE(image.isNull());
    EXPECT_EQ(image.pixelColor(1, 1), QColor(0x12, 0x34, 0x56));
}

TEST(WindowSupport, WaitsForAConditionAndForItsDeadline) {
    bool isDone = false;
    QTimer::singleShot(20, [&] { isDone = true; });
    EXPECT_TRUE(WindowSupport::waitUntil([&] { return isDone; }));
    EXPECT_FALSE(WindowSupport::waitUntil([] { return false; }, std::chrono::milliseconds(30)));
}

TEST(WindowSupport, HasSettingsOfItsOwnThatTheToolChanges) {
    WindowSupport::setByTool("CPU.Menubar.Enabled", "false");
    EXPECT_EQ(WindowSupport::runTool({"get", "CPU.Menubar.Enabled"}), "false\n");
    EXPECT_TRUE(ToolSupport::settingsFile().string().starts_with(std::getenv("XDG_CONFIG_HOME")));
}

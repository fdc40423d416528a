// SPDX-License-Identifier: MIT
// The application's colours, and the desktop that asks for them.
#include "Look/Theme.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPalette>
#include <QSignalSpy>

#include "Appearance/Desktop.h"
#include "Tool/ToolSupport.h"
#include "Window/PictureRules.h"
#include "Window/WindowSupport.h"

using QRVWindow::Theme;

namespace {

bool becomes(const QColor& ground) {
    return WindowSupport::waitUntil(
        [&] { return QApplication::palette().color(QPalette::Base) == ground; });
}
QColor groundOf(const QPalette& palette) {
    return palette.color(QPalette::Base);
}

class ThemeOnADesktop : public testing::Test {
  public:
    Desktop desktop;
};

}  // namespace

TEST(Theme, TextsCanBeReadInLightAndDark) {
    EXPECT_EQ(WindowSupport::unreadableTexts(Theme::lightPalette()), QStringList());
    EXPECT_EQ(WindowSupport::unreadableTexts(Theme::darkPalette()), QStringList());
}

TEST(Theme, TheRuleFindsWhatCannotBeRead) {
    QPalette palette = Theme::lightPalette();
    palette.setColor(QPalette::Disabled, QPalette::Text, QColor(0xb0, 0xb0, 0xb0));
    const QStringList found = WindowSupport::unreadableTexts(palette);
    ASSERT_EQ(found.size(), 2);
    EXPECT_TRUE(found.first().startsWith(QStringLiteral("text in a field, disabled: ")));
    EXPECT_NEAR(WindowSupport::contrast(Qt::black, Qt::white), 21, 0.01);
}

TEST(Theme, WithoutADesktopThePlatformsColoursStay) {
    const QPalette before = QApplication::palette();
    const Theme theme;
    WindowSupport::spin(std::chrono::milliseconds(200));
    EXPECT_EQ(QApplication::palette(), before);
    EXPECT_FALSE(Theme::isDark());
}

TEST_F(ThemeOnADesktop, FollowsItWhileRunning) {
    desktop.startPortal({"value uint32 1", "own"});
    const Theme theme;
    QSignalSpy changes(&theme, &Theme::changed);
    ASSERT_TRUE(becomes(groundOf(Theme::darkPalette())));
    EXPECT_TRUE(Theme::isDark());
    EXPECT_EQ(changes.count(), 1);

    desktop.tellPortal({"value uint32 2", "changed"});
    ASSERT_TRUE(becomes(groundOf(Theme::lightPalette())));
    EXPECT_FALSE(Theme::isDark());
    EXPECT_EQ(changes.count(), 2);
}

TEST_F(ThemeOnADesktop, NoPreferenceIsThePlatformsColours) {
    const QPalette platform = QApplication::palette();
    ASSERT_NE(groundOf(platform), groundOf(Theme::darkPalette()));
    desktop.startPortal({"value uint32 1", "own"});
    const Theme theme;
    ASSERT_TRUE(becomes(groundOf(Theme::darkPalette())));
    desktop.tellPortal({"value uint32 0", "changed"});
    ASSERT_TRUE(becomes(groundOf(platform)));
    EXPECT_EQ(QApplication::palette(), platform);
}

TEST_F(ThemeOnADesktop, TheSettingsStayAsTheyAre) {
    WindowSupport::setByTool("CPU.Menubar.Enabled", "false");
    const auto before = ToolSupport::snapshot(ToolSupport::configurationFolder());
    desktop.startPortal({"value uint32 1", "own"});
    const Theme theme;
    ASSERT_TRUE(becomes(groundOf(Theme::darkPalette())));
    WindowSupport::spin(std::chrono::milliseconds(200));
    EXPECT_EQ(ToolSupport::snapshot(ToolSupport::configurationFolder()), before);
}

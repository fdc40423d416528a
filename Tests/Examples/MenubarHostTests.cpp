// SPDX-License-Identifier: MIT
// The application of several processes: its display follows what they and the tool change.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <string>
#include <vector>

#include "Support/ChildProcess.h"
#include "Support/PseudoTerminal.h"
#include "Tool/ToolSupport.h"

using ToolSupport::RunningTool;
using ToolSupport::Surroundings;

namespace {

class MenubarHost : public testing::Test {
  protected:
    static ToolSupport::Outcome settings(const std::string& lines) {
        return ToolSupport::runProgram(QRV_MENUBAR_HOST, {"settings"}, {lines, {}});
    }
};

/// The last line that is whole.
std::string lastLine(const RunningTool& display) {
    const std::string output = display.output();
    const std::size_t end = output.rfind('\n');
    if (end == std::string::npos) return {};
    const std::size_t before = end == 0 ? std::string::npos : output.rfind('\n', end - 1);
    const std::size_t begin = before == std::string::npos ? 0 : before + 1;
    return output.substr(begin, end - begin);
}

bool shows(const RunningTool& display, const std::string& text) {
    return waitUntil([&] { return lastLine(display).find(text) != std::string::npos; });
}

bool hides(const RunningTool& display, const std::string& text) {
    return waitUntil([&] {
        const std::string line = lastLine(display);
        return !line.empty() && line.find(text) == std::string::npos;
    });
}

/// The characters between the brackets of the graph; -1 when there is none.
std::ptrdiff_t graphColumns(const std::string& line) {
    const std::size_t begin = line.find('[');
    const std::size_t end = line.find(']');
    if (begin == std::string::npos || end == std::string::npos) return -1;
    return std::count_if(line.begin() + static_cast<std::ptrdiff_t>(begin) + 1,
                         line.begin() + static_cast<std::ptrdiff_t>(end), [](char byte) {
                             return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
                         });
}

bool graphHasColumns(const RunningTool& display, std::ptrdiff_t count) {
    return waitUntil([&] { return graphColumns(lastLine(display)) == count; });
}

/// A terminal, and all that a process has printed on it.
class Terminal : public PseudoTerminal {
  public:
    bool shows(const std::string& text) {
        return waitUntil([&] {
            shown_ += printed();
            return shown_.find(text) != std::string::npos;
        });
    }
    [[nodiscard]] const std::string& shown() const { return shown_; }

  private:
    std::string shown_;
};

}  // namespace

TEST_F(MenubarHost, ShowsTheItemsOfTheDefaults) {
    const RunningTool display(QRV_MENUBAR_HOST, {"display"}, {});
    EXPECT_TRUE(shows(display, "light indigo | CPU ")) << display.errors();
    EXPECT_TRUE(shows(display, " GB used "));
    EXPECT_TRUE(shows(display, " | network "));
    EXPECT_TRUE(graphHasColumns(display, 10)) << display.output();
}

TEST_F(MenubarHost, GoesOnSampling) {
    const RunningTool display(QRV_MENUBAR_HOST, {"display"}, {});
    EXPECT_TRUE(waitUntil([&] {
        const std::string output = display.output();
        return std::count(output.begin(), output.end(), '\n') >= 3;
    })) << display.output();
}

TEST_F(MenubarHost, FollowsItemsAndFormats) {
    const RunningTool display(QRV_MENUBAR_HOST, {"display"}, {});
    ASSERT_TRUE(shows(display, "CPU "));
    ASSERT_EQ(settings("hide network\nlabels off\nwidth 20\n").exitCode, 0);
    EXPECT_TRUE(hides(display, "network"));
    EXPECT_TRUE(hides(display, "GB used")) << display.output();
    EXPECT_TRUE(graphHasColumns(display, 5)) << display.output();
    ASSERT_EQ(settings("show network\nlabels on\n").exitCode, 0);
    EXPECT_TRUE(shows(display, "network")) << display.output();
    EXPECT_TRUE(shows(display, "GB used")) << display.output();
}

TEST_F(MenubarHost, FollowsTheTool) {
    const RunningTool display(QRV_MENUBAR_HOST, {"display"}, {});
    ASSERT_TRUE(shows(display, "memory "));
    ASSERT_EQ(ToolSupport::run({"set", "--profile", "default", "Memory.Menubar.Enabled", "false"})
                  .exitCode,
              0);
    EXPECT_TRUE(hides(display, "memory ")) << display.output();
    ASSERT_EQ(ToolSupport::run({"set", "Menu.Theme.Light", "sand"}).exitCode, 0);
    EXPECT_TRUE(shows(display, "light sand")) << display.output();
}

TEST_F(MenubarHost, FollowsTheAppearance) {
    const RunningTool display(QRV_MENUBAR_HOST, {"display"}, {});
    ASSERT_TRUE(shows(display, "light indigo"));
    ASSERT_EQ(settings("appearance dark\n").exitCode, 0);
    EXPECT_TRUE(shows(display, "dark indigo")) << display.output();
    ASSERT_EQ(settings("appearance light\n").exitCode, 0);
    EXPECT_TRUE(shows(display, "light indigo")) << display.output();
}

TEST_F(MenubarHost, FollowsTheProfile) {
    const RunningTool display(QRV_MENUBAR_HOST, {"display"}, {});
    ASSERT_TRUE(graphHasColumns(display, 10));
    ASSERT_EQ(settings("profile Travel\nwidth 28\n").exitCode, 0);
    EXPECT_TRUE(graphHasColumns(display, 7)) << display.output();
    ASSERT_EQ(settings("profile default\n").exitCode, 0);
    EXPECT_TRUE(graphHasColumns(display, 10)) << display.output();
}

TEST_F(MenubarHost, FollowsColoursWhenAskedForThem) {
    const RunningTool display(QRV_MENUBAR_HOST, {"display", "--color=always"}, {});
    const RunningTool plain(QRV_MENUBAR_HOST, {"display"}, {});
    ASSERT_TRUE(shows(display, "network \x1b[38;2;"));
    // Whether this machine is connected or not.
    for (const std::string state : {"Connected", "NotConnected"}) {
        const std::string keyPath = "Network.Menubar.Mode.Status." + state + ".Color";
        ASSERT_EQ(
            ToolSupport::run({"color", "set", "--profile", "default", keyPath, "1", "0.2", "0"})
                .exitCode,
            0);
    }
    EXPECT_TRUE(shows(display, "network \x1b[38;2;255;51;0m●\x1b[0m")) << display.output();
    EXPECT_TRUE(shows(plain, "network ●")) << plain.output();
    EXPECT_EQ(plain.output().find('\x1b'), std::string::npos) << plain.output();
}

TEST_F(MenubarHost, HasOneColouredLineOnATerminal) {
    Terminal terminal;
    const RunningTool display(QRV_MENUBAR_HOST, {"display"}, {"", terminal.becomes(STDOUT_FILENO)});
    EXPECT_TRUE(terminal.shows("network \x1b[38;2;")) << terminal.shown();
    ASSERT_EQ(settings("appearance dark\n").exitCode, 0);
    EXPECT_TRUE(terminal.shows("\r\x1b[Kdark indigo")) << terminal.shown();
    EXPECT_EQ(terminal.shown().find('\n'), std::string::npos) << terminal.shown();
}

TEST_F(MenubarHost, SettingsAreSavedWhenTheirProcessEnds) {
    ASSERT_EQ(settings("frequency 2\ncolor 0 1 0.5\n").exitCode, 0);
    EXPECT_EQ(ToolSupport::run({"get", "UpdateFrequency"}).output, "2\n");
    EXPECT_EQ(ToolSupport::run(
                  {"get", "--profile", "default", "Network.Menubar.Mode.Status.Connected.Color"})
                  .output,
              "0 1 0.5 1\n");
}

#if QRV_MENUBAR_HOST_HAS_HISTORY
TEST_F(MenubarHost, TellsWhoChangedWhat) {
    ASSERT_EQ(settings("frequency 2\n").exitCode, 0);
    const auto outcome = settings("frequency 3\nchanges\n");
    EXPECT_THAT(outcome.output, testing::HasSubstr(" (set) changed\n  UpdateFrequency: 2 -> 3\n"));
    EXPECT_THAT(outcome.output, testing::HasSubstr("UpdateFrequency: (null) -> 2\n"));
    EXPECT_THAT(outcome.output, testing::StartsWith("menubar-host["));
}
#endif

TEST_F(MenubarHost, SaysWhatItDoesNotUnderstand) {
    const auto outcome = settings("appearance blue\nhide everything\nwidth\nlabels off\n");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.errors, testing::HasSubstr("not understood: appearance blue\n"));
    EXPECT_THAT(outcome.errors, testing::HasSubstr("not understood: hide everything\n"));
    EXPECT_THAT(outcome.errors, testing::HasSubstr("not understood: width\n"));
    EXPECT_EQ(
        ToolSupport::run({"get", "--profile", "default", "Memory.Menubar.Mode.UsedFree.ShowLabels"})
            .output,
        "0\n");
    EXPECT_EQ(ToolSupport::runProgram(QRV_MENUBAR_HOST, {"--color=red"}).exitCode, 2);
}

TEST(MenubarHostLauncher, StartsADisplayAndASettingsProcess) {
    RunningTool launcher(QRV_MENUBAR_HOST, {}, {"appearance dark\nhide memory\n", {}});
    EXPECT_TRUE(shows(launcher, "dark indigo")) << launcher.errors();
    EXPECT_TRUE(hides(launcher, "memory ")) << launcher.output();
    launcher.send(SIGTERM);
    EXPECT_EQ(launcher.finish().exitCode, 128 + SIGTERM);
}

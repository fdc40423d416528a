// SPDX-License-Identifier: MIT
// The example hosts do what the README says of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "Support/ChildProcess.h"
#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using ToolSupport::settingsFile;

TEST(FirstSetting, ReadsADefaultAndSavesWhatItWrites) {
    const auto outcome = ToolSupport::runProgram(QRV_FIRST_SETTING, {});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, "width by default: 40\nwidth: 60\nin the menu bar: 1\nsaved in " +
                                  settingsFile().string() + "\n");
    EXPECT_THAT(ToolSupport::contentsOf(settingsFile()), HasSubstr("<integer>60</integer>"));
}

namespace {

struct Host {
    const char* name;
    const char* program;
};

void PrintTo(const Host& host, std::ostream* stream) {
    *stream << host.name;
}

constexpr Host watchingHosts[] = {
#include "WatchingHosts.inc"
};

class WatchingHost : public testing::TestWithParam<Host> {};

bool prints(const ToolSupport::RunningTool& host, const std::string& text) {
    return waitUntil([&] { return host.output().find(text) != std::string::npos; });
}

}  // namespace

TEST_P(WatchingHost, PrintsWhatAnotherProcessChanges) {
    const ToolSupport::RunningTool host(GetParam().program, {}, {});
    ASSERT_TRUE(prints(host, "watching")) << host.errors();
    EXPECT_EQ(ToolSupport::run({"set", "CPU.Menubar.Enabled", "false"}).exitCode, 0);
    EXPECT_TRUE(prints(host, "CPU.Menubar.Enabled: false\n")) << host.output();
    EXPECT_EQ(ToolSupport::run({"set", "UpdateFrequency", "5"}).exitCode, 0);
    EXPECT_TRUE(prints(host, "UpdateFrequency: 5\n")) << host.output();
}

TEST_P(WatchingHost, LosesNothingWhenItIsAskedToEnd) {
    ToolSupport::RunningTool host(GetParam().program, {}, {});
    ASSERT_TRUE(prints(host, "watching")) << host.errors();
    host.send(SIGTERM);
    EXPECT_EQ(host.finish().exitCode, 0) << host.errors();
    // What a first start writes.
    EXPECT_THAT(ToolSupport::contentsOf(settingsFile()), HasSubstr("<key>Migration</key>"));
}

INSTANTIATE_TEST_SUITE_P(Loop, WatchingHost, testing::ValuesIn(watchingHosts),
                         [](const testing::TestParamInfo<Host>& host) {
                             std::string name = host.param.name;
                             std::erase(name, '-');
                             return name;
                         });

TEST(PollHost, AnswersInputBetweenChanges) {
    ASSERT_EQ(ToolSupport::run({"set", "UpdateFrequency", "3"}).exitCode, 0);
    const ToolSupport::RunningTool host(QRV_POLL_HOST, {}, {"UpdateFrequency\nnot.set\n", {}});
    EXPECT_TRUE(prints(host, "UpdateFrequency: 3\nnot.set: (null)\n")) << host.output();
    EXPECT_EQ(ToolSupport::run({"set", "UpdateFrequency", "5"}).exitCode, 0);
    EXPECT_TRUE(prints(host, "UpdateFrequency: 5\n")) << host.output();
}

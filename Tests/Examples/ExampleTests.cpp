// SPDX-License-Identifier: MIT
// The example hosts do what the README says of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST(WatchingHost, PrintsWhatAnotherProcessChanges) {
    // What a first start records is saved before: the host has nothing to save then, which could go
    // over the change.
    ASSERT_EQ(ToolSupport::run({"set", "UpdateFrequency", "3"}).exitCode, 0);
    const ToolSupport::RunningTool host(QRV_WATCHING_HOST, {}, {});
    ASSERT_TRUE(waitUntil([&] { return host.output().find("watching") != std::string::npos; }));
    EXPECT_EQ(ToolSupport::run({"set", "CPU.Menubar.Enabled", "false"}).exitCode, 0);
    EXPECT_TRUE(waitUntil([&] {
        return host.output().find("CPU.Menubar.Enabled: false\n") != std::string::npos;
    })) << host.output();
}

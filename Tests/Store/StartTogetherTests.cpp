// SPDX-License-Identifier: MIT
// Two hosts that start at once on a settings file of an earlier version, and write right after.
// QRV_START_ROUNDS is how often they do.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "Support/HostProcess.h"

using namespace HostProcess;
using StoreSupport::contentsOf;
using StoreSupport::drainUntil;
using StoreSupport::fileTree;

namespace {

class StartTogether : public testing::TestWithParam<const char*> {
  protected:
    static void writeOldFile() {
        StoreSupport::writeSettings(
            contentsOf(QRV_GOLDEN_FOLDER "/" + std::string(GetParam()) + ".before.plist"));
    }
};

void writeOwn(std::size_t self) {
    const std::string name = "Own" + std::to_string(self);
    QRVSettingsSetObjectForKeyPath(true, name + ".Plain");
    QRVSettingsProfileSetObjectForKeyPath("in the profile", "CPU.Menubar." + name);
}

/// What one host makes of the file that does the work of both.
NSDictionary resultOfOne() {
    ChildProcess alone([] {
        start(Mode::Merging, false);
        writeOwn(0);
        writeOwn(1);
        return allIsSaved();
    });
    EXPECT_TRUE(alone.succeeded());
    return fileTree();
}

}  // namespace

TEST_P(StartTogether, TheFileIsMigratedOnceAndNeitherLosesAnything) {
    std::mt19937 random(14);
    MachineSupport::beMachine("1", "M");
    writeOldFile();
    const NSDictionary expected = resultOfOne();
    for (int round = 0; round < sizeFromEnvironment("QRV_START_ROUNDS", 8); ++round) {
        writeOldFile();
        Hosts hosts(2);
        const Gate atOnce;
        for (std::size_t self = 0; self < 2; ++self)
            hosts.add([&, self, delay = std::chrono::microseconds(random() % 1500)] {
                if (!atOnce.wait()) return false;
                std::this_thread::sleep_for(delay);  // so that each step meets each
                start(Mode::Merging, true);
                writeOwn(self);
                return allIsSaved() && hosts.meet(self) && drainUntil([] {
                           return settingsOf(QRVSettingsStoredValues()) == settingsOf(fileTree());
                       });
            });
        atOnce.open();
        EXPECT_TRUE(hosts.letMeet());
        hosts.expectSuccess();
        ASSERT_EQ(fileTree(), expected) << "round " << round;
    }
}

INSTANTIATE_TEST_SUITE_P(Files, StartTogether,
                         testing::Values("before-profiles", "binary",
                                         "combined-items-before-profiles",
                                         "combined-items-in-profile",
                                         "merged-items-before-profiles", "flag-removed", "present",
                                         "empty"),
                         [](const auto& information) {
                             std::string name = information.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

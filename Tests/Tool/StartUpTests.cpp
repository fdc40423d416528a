// SPDX-License-Identifier: MIT
// The tool starts up as any process of the application does: what it reads is what that would see.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::snapshot;
using ToolSupport::writeSettings;

namespace {

std::string ofAnotherModel() {
    return propertyList(
        "<key>Device</key><dict><key>Model</key><string>another</string></dict>"
        "<key>Sensors</key><dict><key>Global</key><dict><key>Fans</key><dict>"
        "<key>Speed</key><integer>3</integer></dict></dict></dict>");
}

constexpr const char* migrated =
    "qrvsettings: the settings are of an earlier version, and are migrated\n";

std::string ofAnEarlierVersion() {
    return propertyList(
        "<key>CPU</key><dict><key>Menubar</key><dict><key>Enabled</key><false/></dict></dict>");
}

constexpr int cannotBeTried = 77;

/// A machine with an empty file in the place of each id.
void loseMachineID() {
    const bool isRoot = geteuid() == 0;
    bool isLost = unshare(isRoot ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS) == 0 &&
                  mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    for (const char* file : {"/etc/machine-id", "/var/lib/dbus/machine-id"})
        isLost = isLost &&
                 (access(file, F_OK) != 0 || mount("empty", file, nullptr, MS_BIND, nullptr) == 0);
    if (!isLost) _exit(cannotBeTried);
}

Outcome runWithoutMachineID(const std::vector<std::string>& arguments) {
    ToolSupport::writeFile("empty", "");
    return run(arguments, {"", loseMachineID});
}

}  // namespace

TEST(StartUpWithoutMachineID, SaysWhyASettingIsResetAndWhatGivesAnID) {
    const std::string interface = "Network.Menubar.Global.PrimaryInterface";
    ASSERT_EQ(run({"set", interface, "en0"}).exitCode, 0);
    const Outcome outcome = runWithoutMachineID({"set", "a", "1"});
    if (outcome.exitCode == cannotBeTried) GTEST_SKIP() << "no namespace for mounts";
    const std::string message =
        "qrvsettings: this machine has no id (/etc/machine-id is missing or empty): " + interface +
        " is reset at each start; give it one, as root: systemd-machine-id-setup, or where that is "
        "missing: tr -d - </proc/sys/kernel/random/uuid >/etc/machine-id\n";
    EXPECT_EQ(outcome.errors, message);
    EXPECT_EQ(runWithoutMachineID({"set", "a", "2"}).errors, "") << "there is nothing to reset";
    ASSERT_EQ(runWithoutMachineID({"set", interface, "en0"}).exitCode, 0);
    EXPECT_EQ(runWithoutMachineID({"set", "a", "3"}).errors, message) << "each time";
}

TEST(StartUpWithoutMachineID, DoctorSaysSo) {
    const Outcome outcome = runWithoutMachineID({"doctor"});
    if (outcome.exitCode == cannotBeTried) GTEST_SKIP() << "no namespace for mounts";
    EXPECT_THAT(outcome.output, HasSubstr("\nnote: this machine has no id (/etc/machine-id is "
                                          "missing or empty), so that Network."));
    EXPECT_EQ(outcome.exitCode, 0);
    ASSERT_EQ(run({"set", "Network.Menubar.Global.PrimaryInterface", "en0"}).exitCode, 0);
    const Outcome affected = runWithoutMachineID({"doctor"});
    EXPECT_EQ(affected.exitCode, 1);
    EXPECT_THAT(affected.output, HasSubstr("\nwarning: this machine has no id "));
    EXPECT_THAT(affected.output, HasSubstr("tr -d - </proc/sys/kernel/random/uuid"));
}

TEST(StartUp, AWriteRecordsTheMachine) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const std::string model = run({"get", "Device.Model", "--layer", "stored"}).output;
    EXPECT_NE(model, "");
    EXPECT_EQ(run({"get", "Device.Model"}).output, model);
}

TEST(StartUp, OfAReadingCommandStaysInMemory) {
    writeSettings(ofAnotherModel());
    const auto before = snapshot(ToolSupport::configurationFolder());
    EXPECT_EQ(run({"get", "Sensors.Global.Fans.Speed"}).exitCode, 1);
    EXPECT_THAT(run({"list", "Sensors.Global.Fans"}).output,
                testing::Not(HasSubstr("Sensors.Global.Fans.Speed")));
    EXPECT_EQ(run({"get", "Device.Model", "--layer", "stored"}).output, "another\n");
    EXPECT_EQ(run({"get", "Sensors.Global.Fans.Speed", "--layer", "stored"}).output, "3\n");
    EXPECT_THAT(run({"export"}).output, HasSubstr("<string>another</string>"));
    EXPECT_EQ(snapshot(ToolSupport::configurationFolder()), before);
}

TEST(StartUp, AWriteSavesTheResetAndSaysSo) {
    writeSettings(ofAnotherModel());
    const Outcome outcome = run({"set", "a", "1"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(
        outcome.errors,
        HasSubstr("qrvsettings: the settings come from another model: Sensors.Global.Fans "));
    EXPECT_EQ(run({"get", "Sensors.Global.Fans.Speed", "--layer", "stored"}).exitCode, 1);
    EXPECT_NE(run({"get", "Device.Model", "--layer", "stored"}).output, "another\n");
    EXPECT_EQ(run({"set", "a", "2"}).errors, "") << "once per change";
}

TEST(StartUp, TheResetIsSavedToTogetherWithTheRemovalOfWhatItRemoves) {
    writeSettings(ofAnotherModel());
    EXPECT_EQ(run({"unset", "Sensors.Global.Fans"}).exitCode, 0);
    EXPECT_EQ(run({"get", "Sensors.Global.Fans", "--layer", "stored"}).exitCode, 1);
}

TEST(StartUp, ARefusedWriteSavesNothing) {
    writeSettings(ofAnotherModel());
    const auto before = snapshot(ToolSupport::configurationFolder());
    EXPECT_EQ(run({"set", "Device.Model.Deeper", "1"}).exitCode, 5);
    EXPECT_EQ(run({"unset", "absent"}).exitCode, 1);
    EXPECT_EQ(snapshot(ToolSupport::configurationFolder()), before);
}

TEST(StartUp, NamesTheStoredValueThatIsInItsWay) {
    writeSettings(propertyList("<key>Device</key><string>flat</string>"));
    const auto before = snapshot(ToolSupport::configurationFolder());
    const std::vector<std::vector<std::string>> commands = {
        {"get", "a"}, {"list"}, {"set", "a", "1"}, {"color", "get", "a"}, {"appearance", "get"}};
    for (const auto& arguments : commands) {
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, 5) << arguments.front();
        EXPECT_THAT(outcome.errors,
                    StartsWith("qrvsettings: the application cannot start with these settings: "));
        EXPECT_THAT(outcome.errors, HasSubstr("Device.Device"));
    }
    EXPECT_EQ(run({"get", "Device", "--layer", "stored"}).output, "flat\n");
    EXPECT_EQ(snapshot(ToolSupport::configurationFolder()), before);
    EXPECT_EQ(run({"unset", "Device"}).exitCode, 0);
    EXPECT_EQ(run({"get", "UpdateFrequency"}).output, "1\n");
}

TEST(StartUp, SettingsOfAnEarlierVersionAreReadMigrated) {
    writeSettings(ofAnEarlierVersion());
    const auto before = snapshot(ToolSupport::configurationFolder());
    const std::string inProfile = "Profiles.Settings.default.CPU.Menubar.Enabled";
    EXPECT_EQ(run({"get", inProfile}).output, "false\n");
    EXPECT_EQ(run({"list", "Profiles", "--records"}).output,
              "Profiles.Available.identifier\t\"default\"\n" + inProfile +
                  "\tfalse\nProfiles.Settings.default.Combined.Menubar.Items\t[]\n");
    EXPECT_EQ(run({"get", "Migration"}).output,
              "{\"CombinedPowerItems\":true,\"Profiles\":true}\n");
    EXPECT_EQ(run({"list", "--layer", "stored"}).output, "CPU.Menubar.Enabled\tfalse\n");
    EXPECT_EQ(snapshot(ToolSupport::configurationFolder()), before);
}

TEST(StartUp, AWriteSavesTheMigrationAndSaysSoOnce) {
    writeSettings(ofAnEarlierVersion());
    EXPECT_EQ(run({"set", "a", "1"}).errors, migrated);
    EXPECT_EQ(
        run({"get", "Profiles.Settings.default.CPU.Menubar.Enabled", "--layer", "stored"}).output,
        "false\n");
    EXPECT_EQ(run({"set", "a", "2"}).errors, "");
}

TEST(StartUp, ASecondMigrationAloneIsReportedToo) {
    writeSettings(
        propertyList("<key>Migration</key><dict><key>CombinedPowerItems</key><false/></dict>"));
    EXPECT_EQ(run({"set", "a", "1"}).errors, migrated);
    EXPECT_EQ(run({"get", "Migration", "--layer", "stored"}).output,
              "{\"CombinedPowerItems\":false,\"Profiles\":true}\n");
}

TEST(StartUp, WhereNothingWasSetNoEarlierVersionIsReported) {
    EXPECT_EQ(run({"set", "a", "1"}).errors, "") << "no file";
    writeSettings("");
    EXPECT_EQ(run({"set", "a", "1"}).errors, "") << "an empty file";
    writeSettings(propertyList("<key>CPU</key><dict/>"));
    EXPECT_EQ(run({"set", "a", "1"}).errors, "") << "a tree without a setting";
}

TEST(StartUp, ARefusedWriteTellsNothingOfWhatItDidNotSave) {
    writeSettings(ofAnEarlierVersion());
    const Outcome outcome = run({"set", "--any-kind", "CPU.Menubar.Enabled.Deeper", "1"});
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_THAT(outcome.errors, StartsWith("qrvsettings: a stored value is in the way: "));
}

TEST(StartUp, NamesTheStoredValueThatIsInTheWayOfTheMigration) {
    writeSettings(propertyList("<key>Migration</key><string>flat</string>"));
    const Outcome outcome = run({"get", "a"});
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_THAT(outcome.errors, HasSubstr("Migration.CombinedPowerItems"));
    EXPECT_EQ(run({"unset", "Migration"}).exitCode, 0);
    EXPECT_EQ(run({"get", "Migration.Profiles"}).output, "true\n");
}

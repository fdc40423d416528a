// SPDX-License-Identifier: MIT
// Defaults and locks of the site, as the commands show and respect them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using testing::Not;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::settingsFile;
using ToolSupport::storedSettings;

namespace {

constexpr const char* enabled = "CPU.Menubar.Enabled";

std::string siteList() {
    return std::string(std::getenv("XDG_CONFIG_DIRS")) + "/Preferences/" +
           settingsFile().filename().string();
}
std::string siteLocks() {
    return siteList() + ".locks";
}

std::string cpu(const std::string& element) {
    return propertyList("<key>CPU</key><dict><key>Menubar</key><dict><key>Enabled</key>" + element +
                        "</dict></dict>");
}

/// The site's value is false, and what the user has stored is "mine".
void lockCPU() {
    ASSERT_EQ(run({"set", enabled, "mine", "--any-kind"}).exitCode, 0);
    ToolSupport::writeFile(siteList(), cpu("<false/>"));
    ToolSupport::writeFile(siteLocks(), "# nobody\nCPU.Menubar.Enabled\n");
}

void expectRefused(const Outcome& outcome) {
    EXPECT_EQ(outcome.exitCode, 5) << outcome.output;
    EXPECT_THAT(outcome.errors, HasSubstr("the site has locked it, in " + siteLocks() + ": "));
    EXPECT_THAT(outcome.errors, HasSubstr("CPU.Menubar.Enabled"));
}

}  // namespace

TEST(Site, ItsDefaultsAnswerWhereNothingIsStored) {
    ToolSupport::writeFile(siteList(), cpu("<false/>"));
    EXPECT_EQ(run({"get", enabled}).output, "false\n");
    EXPECT_EQ(run({"get", enabled, "--layer", "default"}).output, "false\n");
    EXPECT_EQ(run({"get", enabled, "--layer", "site"}).output, "false\n");
    EXPECT_EQ(run({"get", enabled, "--profile", "default"}).output, "false\n");
    EXPECT_EQ(run({"list", "--layer", "site"}).output, std::string(enabled) + "\tfalse\n");
    EXPECT_THAT(run({"list", "CPU.Menubar"}).output, HasSubstr("CPU.Menubar.Enabled\tfalse\n"));
    EXPECT_EQ(run({"get", "UpdateFrequency", "--layer", "site"}).exitCode, 1);
    ASSERT_EQ(run({"set", enabled, "true"}).exitCode, 0);
    EXPECT_EQ(run({"diff"}).output, std::string(enabled) + "\tfalse -> true\n");
    ASSERT_EQ(run({"set", enabled, "false"}).exitCode, 0);
    EXPECT_EQ(run({"get", enabled, "--layer", "stored"}).exitCode, 1);
}

TEST(Site, ALockIsRefusedAndNamed) {
    lockCPU();
    const std::string before = storedSettings();
    expectRefused(run({"set", enabled, "true"}));
    expectRefused(run({"set", enabled, "true", "--profile", "work"}));
    expectRefused(run({"set", "CPU.Menubar", "{\"Enabled\":true}"}));
    expectRefused(run({"unset", enabled}));
    expectRefused(run({"unset", "CPU"}));
    expectRefused(run(
        {"apply", "-"},
        {.input = "set UpdateFrequency 3\nset CPU.Menubar.Enabled true\n", .prepare = nullptr}));
    expectRefused(run({"import", "-"}, {.input = cpu("<true/>"), .prepare = nullptr}));
    expectRefused(run({"import", "-", "--dry-run"}, {.input = cpu("<true/>"), .prepare = nullptr}));
    EXPECT_EQ(storedSettings(), before) << "nothing is written, not even what is not locked";
}

TEST(Site, ALockedColourIsRefused) {
    const std::string color = "Network.Menubar.Mode.Status.NoIP.Color";
    ToolSupport::writeFile(siteLocks(), "Network.Menubar.Mode.*");
    const Outcome outcome = run({"color", "set", color, "#ffffff"});
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_THAT(outcome.errors,
                HasSubstr("the site has locked it, in " + siteLocks() + ": " + color));
    EXPECT_EQ(run({"color", "set", color, "#ffffff", "--profile", "work"}).exitCode, 5);
    EXPECT_EQ(run({"color", "get", color, "--profile", "work", "--hex"}).output, "#ffc600ff\n");
}

TEST(Site, WhatIsSetAsItIsLockedIsNoFailure) {
    lockCPU();
    EXPECT_EQ(run({"set", enabled, "false"}).exitCode, 0);
    EXPECT_EQ(run({"get", enabled, "--layer", "stored"}).output, "mine\n");
    EXPECT_EQ(run({"get", enabled}).output, "false\n");
    EXPECT_EQ(run({"get", "CPU.Menubar", "--layer", "effective"}).output, "{\"Enabled\":false}\n");
    EXPECT_THAT(run({"list"}).output, HasSubstr("CPU.Menubar.Enabled\tfalse\n"));
}

TEST(Site, AnImportLeavesWhatIsLockedAsItIs) {
    lockCPU();
    const Outcome outcome =
        run({"import", "-"}, {.input = "{\"UpdateFrequency\":3}", .prepare = nullptr});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(run({"get", "UpdateFrequency", "--layer", "stored"}).output, "3\n");
    EXPECT_EQ(run({"get", enabled, "--layer", "stored"}).output, "mine\n");
    EXPECT_EQ(run({"get", enabled}).output, "false\n");
}

TEST(Site, ExplainNamesTheLayerAndItsFiles) {
    lockCPU();
    const std::string text = run({"explain", enabled}).output;
    EXPECT_THAT(text, HasSubstr("effective:      false\n"));
    EXPECT_THAT(text, HasSubstr("layer:          site\n"));
    EXPECT_THAT(text, HasSubstr("locked by:      " + siteLocks() + "\n"));
    EXPECT_THAT(text, HasSubstr("stored:         \"mine\"\n"));
    EXPECT_THAT(text, HasSubstr("site:           false\n"));
    EXPECT_THAT(text, HasSubstr("site file:      " + siteList() + "\n"));
    EXPECT_THAT(text, HasSubstr("default:        true\n"));
    const std::string json = run({"explain", enabled, "--json"}).output;
    EXPECT_THAT(json, HasSubstr("\"layer\":\"site\""));
    EXPECT_THAT(json, HasSubstr("\"siteFile\":\"" + siteList() + "\""));
    EXPECT_THAT(json, HasSubstr("\"lockFile\":\"" + siteLocks() + "\""));
    EXPECT_THAT(run({"explain", enabled, "--profile", "work"}).output,
                HasSubstr("layer:          site\n"));
    const std::string other = run({"explain", "UpdateFrequency"}).output;
    EXPECT_THAT(other, HasSubstr("layer:          default\n"));
    EXPECT_THAT(other, Not(HasSubstr("site")));
    EXPECT_THAT(other, Not(HasSubstr("locked")));
}

TEST(Site, ExplainOfALockWithoutAValueOfTheSite) {
    ASSERT_EQ(run({"set", "UpdateFrequency", "9"}).exitCode, 0);
    ToolSupport::writeFile(siteLocks(), "UpdateFrequency");
    const std::string text = run({"explain", "UpdateFrequency"}).output;
    EXPECT_THAT(text, HasSubstr("effective:      1\n"));
    EXPECT_THAT(text, HasSubstr("layer:          default\n"));
    EXPECT_THAT(text, HasSubstr("locked by:      " + siteLocks() + "\n"));
    EXPECT_THAT(text, HasSubstr("stored:         9\n"));
}

TEST(Site, TheDoctorNamesWrongFiles) {
    ASSERT_EQ(run({"set", "UpdateFrequency", "9"}).exitCode, 0);
    EXPECT_THAT(run({"doctor"}).output, Not(HasSubstr("site")));
    ToolSupport::writeFile(siteList(), "{ a = ");
    ToolSupport::writeFile(siteLocks(), "CPU.*\nDevice.Device\n*\n");
    const Outcome outcome = run({"doctor"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output,
                HasSubstr("warning: the site's settings are left out: " + siteList() + ": "));
    EXPECT_THAT(outcome.output, HasSubstr("Device.Device in " + siteLocks() +
                                          ": is a record or a profile of one user"));
    EXPECT_THAT(outcome.output, HasSubstr("* in " + siteLocks() + ": names no key path"));
    EXPECT_THAT(outcome.output, HasSubstr("site:"));
    EXPECT_EQ(run({"get", "UpdateFrequency"}).output, "9\n") << "nothing else is in their way";
}

TEST(Site, TheDoctorNamesAValueOfAnotherKindThanTheBuiltInDefault) {
    ToolSupport::writeFile(siteList(),
                           propertyList("<key>UpdateFrequency</key><true/><key>Menubar</key>"
                                        "<dict><key>Style</key><integer>2</integer></dict>"));
    const std::string text = run({"doctor"}).output;
    EXPECT_THAT(text,
                HasSubstr("warning: the site's UpdateFrequency is a boolean, and the built-in "
                          "default is an integer, in " +
                          siteList() + "\n"));
    EXPECT_THAT(text, Not(HasSubstr("Menubar.Style")));
}

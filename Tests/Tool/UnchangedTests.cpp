// SPDX-License-Identifier: MIT
// Commands that write what is so already, and how commands report what they changed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::configurationFolder;
using ToolSupport::contentsOf;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::settingsFile;
using ToolSupport::snapshot;
using ToolSupport::storedSettings;
using ToolSupport::writeFile;
using ToolSupport::writeSettings;

namespace {

using Arguments = std::vector<std::string>;

/// The command succeeds, says this, and leaves the settings and all files beside them untouched.
void expectNothingWritten(const Arguments& arguments, const std::string& said,
                          const std::string& input = "") {
    const auto before = snapshot(configurationFolder());
    const Outcome outcome = run(arguments, {input, {}});
    const std::string shown = testing::PrintToString(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << shown << outcome.errors;
    EXPECT_EQ(outcome.errors, said.empty() ? "" : "qrvsettings: " + said + "\n") << shown;
    EXPECT_EQ(snapshot(configurationFolder()), before) << shown;
}

void expectDone(const Arguments& arguments, const std::string& input = "") {
    const Outcome outcome = run(arguments, {input, {}});
    ASSERT_EQ(outcome.exitCode, 0) << testing::PrintToString(arguments) << outcome.errors;
}

nlohmann::json objectOf(const Arguments& arguments, const std::string& input = "") {
    return nlohmann::json::parse(run(arguments, {input, {}}).output);
}

/// The file as another machine would have left it.
void pretendAnotherMachine() {
    nlohmann::json settings = nlohmann::json::parse(run({"export", "--json"}).output);
    settings["Device"]["Device"] = "another";
    writeFile("another.json", settings.dump());
    expectDone({"import", "another.json"});
}

}  // namespace

TEST(Unchanged, ASettingThatIsSoAlreadyIsNotWritten) {
    for (const std::string value : {"1", "1.5", "text", "true", R"({"x":[1,{"y":2}]})", "\"\""}) {
        expectDone({"set", "a.b", value});
        expectNothingWritten({"set", "a.b", value}, "nothing changed, a.b");
        expectNothingWritten({"set", "a.b", value, "--quiet"}, "");
    }
    expectDone({"set", "CPU.Menubar.Enabled", "false", "--profile", "p"});
    expectNothingWritten({"set", "CPU.Menubar.Enabled", "false", "--profile", "p"},
                         "nothing changed, CPU.Menubar.Enabled");
    expectDone({"color", "set", "c", "#ffc600"});
    expectNothingWritten({"color", "set", "c", "#ffc600"}, "nothing changed, c");
    expectDone({"appearance", "set", "dark"});
    expectNothingWritten({"appearance", "set", "dark"}, "nothing changed, MenubarCurrentApperance");
}

TEST(Unchanged, AnotherKindIsAChange) {
    expectDone({"set", "a", "1"});
    expectDone({"set", "a", "1.0"});
    EXPECT_EQ(run({"get", "a"}).output, "1.0\n");
    expectDone({"set", "a", "true"});
    EXPECT_EQ(run({"get", "a"}).output, "true\n");
}

TEST(Unchanged, ADefaultThatIsNotStoredWritesNoFile) {
    expectNothingWritten({"set", "Notifications.Enabled", "true"},
                         "nothing changed, Notifications.Enabled");
    expectNothingWritten({"set", "Notifications.Enabled", "true", "--profile", "default"},
                         "nothing changed, Notifications.Enabled");
    expectNothingWritten({"apply", "-"}, "0 changed, 2 as they were",
                         "set Notifications.Enabled true\nunset absent\n");
    EXPECT_FALSE(std::filesystem::exists(configurationFolder()));
}

TEST(Unchanged, NothingIsMigratedWhereNothingChanges) {
    writeSettings(propertyList("<key>a</key><integer>1</integer>"));
    expectNothingWritten({"set", "a", "1"}, "nothing changed, a");
    EXPECT_THAT(run({"set", "a", "2"}).errors, HasSubstr("migrated"));
}

TEST(Unchanged, WhatTheStartUpWouldResetIsWritten) {
    expectDone({"set", "Network.Menubar.Global.PrimaryInterface", "en0"});
    pretendAnotherMachine();
    ASSERT_EQ(run({"get", "Network.Menubar.Global.PrimaryInterface"}).exitCode, 1) << "the reset";
    expectDone({"set", "Network.Menubar.Global.PrimaryInterface", "en0"});
    EXPECT_EQ(run({"get", "Network.Menubar.Global.PrimaryInterface"}).output, "en0\n");
    expectNothingWritten({"set", "Network.Menubar.Global.PrimaryInterface", "en0"},
                         "nothing changed, Network.Menubar.Global.PrimaryInterface");
    pretendAnotherMachine();
    expectDone({"apply", "-"}, "unset Network.Menubar.Global.PrimaryInterface\n");
    EXPECT_EQ(run({"get", "Network.Menubar.Global.PrimaryInterface", "--layer", "stored"}).exitCode,
              1);
}

TEST(Unchanged, AFileInAnyFormStaysAsItIs) {
    writeSettings("{ a = { b = c; }; Migration = { CombinedPowerItems = 1; Profiles = 1; }; }");
    expectNothingWritten({"set", "a.b", "c"}, "nothing changed, a.b");
    expectNothingWritten({"import", "-"}, "nothing changed, standard input",
                         contentsOf(settingsFile()));
}

TEST(Unchanged, ADamagedFileIsReplacedAlsoByNothing) {
    writeSettings("{broken");
    EXPECT_EQ(run({"set", "CPU.Menubar.Enabled", "true"}).exitCode, 3);
    expectDone({"set", "CPU.Menubar.Enabled", "true", "--replace-damaged"});
    EXPECT_EQ(storedSettings(), "{}");
    EXPECT_EQ(contentsOf(settingsFile().string() + ".damaged-1"), "{broken");
}

TEST(Unchanged, AnImportOfWhatIsStoredIsNotWritten) {
    expectDone({"set", "a", R"({"d":{"$date":"2020-01-01T00:00:00Z"},"n":[1,1.0]})"});
    for (const Arguments& command : std::vector<Arguments>{
             {"export"}, {"export", "--json"}, {"list", "--json", "--layer", "stored"}})
        expectNothingWritten({"import", "-"}, "nothing changed, standard input",
                             run(command).output);
}

TEST(Unchanged, AnImportThatLosesFractionsOfSecondsAgainIsNotWritten) {
    writeFile("new.json", R"({"a":{"$date":"2020-01-01T00:00:00.5Z"},
                              "Migration":{"CombinedPowerItems":true,"Profiles":true}})");
    expectDone({"import", "new.json"});
    const auto before = snapshot(configurationFolder());
    EXPECT_THAT(run({"import", "new.json"}).errors, HasSubstr("nothing changed, new.json\n"));
    EXPECT_EQ(snapshot(configurationFolder()), before);
    expectNothingWritten({"set", "a", R"({"$date":"2020-01-01T00:00:00.25Z"})"},
                         "nothing changed, a");
}

TEST(Unchanged, ASecondImportOfAnEarlierVersionIsNotWritten) {
    writeFile("earlier.plist", propertyList("<key>CPU</key><dict><key>Menubar</key><dict>"
                                            "<key>Enabled</key><false/></dict></dict>"));
    const auto expected = objectOf({"import", "earlier.plist", "--check", "--json"})["changed"];
    EXPECT_EQ(objectOf({"import", "earlier.plist", "--json"})["changed"], expected);
    const std::string imported = contentsOf(settingsFile());
    EXPECT_THAT(imported, HasSubstr("CombinedPowerItems"));
    const auto before = snapshot(configurationFolder());
    EXPECT_THAT(run({"import", "earlier.plist"}).errors, HasSubstr("nothing changed"));
    EXPECT_EQ(snapshot(configurationFolder()), before);
}

TEST(Counts, AreOfWhatChangedAndOfWhatIsAsItWas) {
    const std::string lines = "set a 2\nset b.c 3\nset d {\"x\":1,\"y\":2}\nunset e\nset a 2\n";
    EXPECT_EQ(run({"apply", "-"}, {lines, {}}).errors, "qrvsettings: 4 changed, 1 as it was\n");
    EXPECT_EQ(run({"apply", "-"}, {lines, {}}).errors, "qrvsettings: 0 changed, 4 as they were\n");
    EXPECT_EQ(run({"apply", "-"}, {"set d.x 5\nunset b\nset a 2\n", {}}).errors,
              "qrvsettings: 2 changed, 1 as it was\n");
    EXPECT_EQ(run({"apply", "-", "--quiet"}, {"set d.x 6\n", {}}).errors, "");
    EXPECT_EQ(run({"apply", "-"}, {"set d.x 7\nset d.x 6\n", {}}).errors,
              "qrvsettings: 0 changed, 1 as it was\n")
        << "in the end";
}

TEST(ChangesAsJSON, TellTheFileAndEachChange) {
    expectDone({"set", "a", "1"});
    const std::string file = settingsFile();
    EXPECT_EQ(objectOf({"set", "a", "2", "--json"}),
              nlohmann::json({{"file", file},
                              {"changed", {{{"keyPath", "a"}, {"before", 1}, {"after", 2}}}},
                              {"unchanged", 0}}));
    EXPECT_EQ(
        objectOf({"set", "a", "2", "--json"}),
        nlohmann::json({{"file", file}, {"changed", nlohmann::json::array()}, {"unchanged", 1}}));
    EXPECT_EQ(objectOf({"apply", "-", "--json"}, "unset a\nset b 1\nunset c\n"),
              nlohmann::json({{"file", file},
                              {"changed",
                               {{{"keyPath", "a"}, {"before", 2}, {"after", nullptr}},
                                {{"keyPath", "b"}, {"before", nullptr}, {"after", 1}}}},
                              {"unchanged", 1}}));
    EXPECT_EQ(objectOf({"apply", "-", "--json"}, "# nothing\n")["unchanged"], 0);
    EXPECT_EQ(run({"set", "b", "2", "--json"}).errors, "");
}

TEST(ChangesAsJSON, OfUnsetAndImport) {
    expectDone({"apply", "-"}, "set a 1\nset b 2\n");
    const std::string before = run({"export"}).output;
    const Outcome outcome = run({"unset", "a", "absent", "--json"});
    EXPECT_EQ(outcome.exitCode, 1);
    const auto object = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(object["changed"][0]["keyPath"], "a");
    EXPECT_EQ(object["unchanged"], 1);
    const auto imported = objectOf({"import", "-", "--json"}, before);
    EXPECT_EQ(imported["changed"],
              nlohmann::json({{{"keyPath", "a"}, {"before", nullptr}, {"after", 1}}}));
    EXPECT_GT(imported["unchanged"], 1);
}

TEST(Check, ExitsWithOneWhereSomethingWouldChange) {
    expectDone({"set", "a", "1"});
    const std::string same = run({"export"}).output;
    const auto before = snapshot(configurationFolder());
    for (const std::string option : {"--check", "--dry-run"}) {
        const int differs = option == "--check" ? 1 : 0;
        Outcome outcome = run({"apply", "-", option}, {"set a 2\nset b 1\n", {}});
        EXPECT_EQ(outcome.exitCode, differs);
        EXPECT_EQ(outcome.output, "a\t1 -> 2\nb\tnull -> 1\n");
        EXPECT_EQ(outcome.errors, "");
        outcome = run({"apply", "-", option}, {"set a 1\nunset b\n", {}});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.errors, "qrvsettings: nothing would change\n");
        outcome = run({"apply", "-", option, "--json"}, {"set a 2\nset b 1\n", {}});
        EXPECT_EQ(outcome.exitCode, differs);
        EXPECT_EQ(nlohmann::json::parse(outcome.output)["changed"].size(), 2);
        EXPECT_EQ(run({"import", "-", option}, {"{\"a\":1}", {}}).exitCode, differs);
        EXPECT_EQ(run({"import", "-", option}, {same, {}}).exitCode, 0);
    }
    EXPECT_EQ(snapshot(configurationFolder()), before);
}

TEST(Check, KeepsTheCodesOfErrors) {
    EXPECT_EQ(run({"apply", "-", "--check"}, {"frob\n", {}}).exitCode, 5);
    EXPECT_EQ(run({"apply", "absent", "--check"}).exitCode, 5);
    EXPECT_EQ(run({"apply", "--check"}).exitCode, 2);
    writeSettings("{broken");
    EXPECT_EQ(run({"apply", "-", "--check"}, {"set a 1\n", {}}).exitCode, 3);
}

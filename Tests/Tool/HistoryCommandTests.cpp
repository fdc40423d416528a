// SPDX-License-Identifier: MIT
// The commands `history` and `undo`, and the last change in `explain`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "Tool/ToolSupport.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::runShell;
using ToolSupport::settingsFile;
using ToolSupport::writeFile;
using ToolSupport::writeSettings;

namespace {

using Words = std::vector<std::string>;

void succeed(const Words& words) {
    const Outcome outcome = run(words);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
}

std::string get(const std::string& keyPath) {
    return run({"get", "--layer", "stored", keyPath}).output;
}

/// The oldest first.
std::vector<nlohmann::json> history(Words options = {}) {
    options.insert(options.begin(), {"history", "--json"});
    const Outcome outcome = run(options);
    std::vector<nlohmann::json> saves;
    std::istringstream lines(outcome.output);
    for (std::string line; std::getline(lines, line);) saves.push_back(nlohmann::json::parse(line));
    return saves;
}

std::string idOf(const nlohmann::json& save) {
    return std::to_string(save["id"].get<long>());
}

std::filesystem::path database() {
    return std::filesystem::path(std::getenv("XDG_STATE_HOME")) / QRV_APPLICATION_IDENTIFIER /
           "history.sqlite";
}

Outcome runSwitchedOff(const Words& words) {
    return run(words, {.input = {}, .prepare = [] { setenv("QRVSETTINGS_HISTORY", "0", 1); }});
}

}  // namespace

TEST(History, TellsWhoChangedWhatAndWhen) {
    succeed({"set", "CPU.Menubar.Width", "60"});
    succeed({"set", "CPU.Menubar.Width", "70"});
    const auto saves = history();
    ASSERT_EQ(saves.size(), 2U);
    EXPECT_EQ(saves[1]["changes"].dump(),
              R"([{"after":70,"before":60,"keyPath":"CPU.Menubar.Width"}])");
    EXPECT_EQ(saves[1]["program"], "qrvsettings");
    EXPECT_EQ(saves[1]["origin"], "set");
    EXPECT_GT(saves[1]["process"].get<long>(), 1);
    EXPECT_THAT(saves[1]["time"].get<std::string>(), MatchesRegex("2[0-9-]+T[0-9:.]+Z"));
    EXPECT_GT(saves[1]["id"], saves[0]["id"]);
    EXPECT_THAT(run({"history"}).output,
                MatchesRegex("[0-9]+  2[0-9-]+ [0-9:]+  qrvsettings.[0-9]+.  [^\n]*set\n"
                             "    CPU.Menubar.Width  not set -> 60\n"
                             "[0-9]+  2[0-9-]+ [0-9:]+  qrvsettings.[0-9]+.  set\n"
                             "    CPU.Menubar.Width  60 -> 70\n"));
}

TEST(History, OfAPrefixATimeAndANumberOfSaves) {
    for (const std::string name : {"A.x", "B", "A.y"}) succeed({"set", name, "1"});
    EXPECT_EQ(history({"A"}).size(), 2U);
    EXPECT_EQ(history({"B"})[0]["changes"].size(), 1U);
    ASSERT_EQ(history({"--limit", "1"}).size(), 1U);
    EXPECT_EQ(history({"--limit", "1"})[0]["changes"][0]["keyPath"], "A.y");
    EXPECT_EQ(history({"--since", "1 hour ago"}).size(), 3U);
    const Outcome nothing = run({"history", "C"});
    EXPECT_EQ(nothing.exitCode, 1);
    EXPECT_EQ(nothing.errors, "qrvsettings: nothing is in the history, C\n");
    EXPECT_EQ(run({"history", "--since", "2999-01-01"}).exitCode, 1);
}

TEST(History, LeavesOutRecordsOfTheStoreUnlessTheyAreAskedFor) {
    succeed({"set", "A", "1"});
    EXPECT_EQ(history()[0]["changes"].size(), 1U);
    EXPECT_GT(history({"--records"})[0]["changes"].size(), 1U);
    EXPECT_THAT(run({"history", "Device"}).output, HasSubstr("    Device.Device  not set -> "));
}

TEST(History, AWrongTimeOrNumberIsWrongUsage) {
    for (const Words& words : std::vector<Words>{{"history", "--since", "then"},
                                                 {"undo", "--since", "10"},
                                                 {"history", "--limit", "0"},
                                                 {"undo", "first"}})
        EXPECT_EQ(run(words).exitCode, 2);
    EXPECT_THAT(run({"history", "--since", "then"}).errors,
                HasSubstr("not a time: then; such as '10 minutes ago', 2h, yesterday, "));
}

TEST(History, EntersWhatOthersHaveChangedAsThatOfAnotherProgram) {
    succeed({"set", "A", "1"});
    writeSettings(
        propertyList("<key>A</key><integer>5</integer><key>Migration</key><dict>"
                     "<key>CombinedPowerItems</key><true/><key>Profiles</key><true/>"
                     "</dict>"));
    succeed({"set", "B", "1"});
    const auto saves = history({"A"});
    ASSERT_EQ(saves.size(), 2U);
    EXPECT_TRUE(saves[1]["program"].is_null());
    EXPECT_THAT(run({"history", "A"}).output, HasSubstr("  another program\n    A  1 -> 5\n"));
}

TEST(History, CommandsThatReadMakeNone) {
    for (const Words& words : std::vector<Words>{
             {"list"}, {"history"}, {"undo", "--dry-run"}, {"explain", "CPU.Menubar.Enabled"}})
        run(words);
    EXPECT_FALSE(std::filesystem::exists(std::getenv("XDG_STATE_HOME")));
    EXPECT_EQ(run({"history"}).errors, "qrvsettings: nothing is in the history\n");
    EXPECT_EQ(run({"undo", "--dry-run"}).exitCode, 1);
}

TEST(History, CanBeCleared) {
    succeed({"set", "A", "1"});
    succeed({"history", "clear"});
    EXPECT_EQ(run({"history"}).exitCode, 1);
    EXPECT_EQ(get("A"), "1\n");
    EXPECT_EQ(run({"completion", "candidates", "--", "history", "cl"}).output.substr(0, 5),
              "clear");
}

TEST(Undo, TakesBackTheLastSaveAndAnUndoOfItMakesItAgain) {
    succeed({"set", "A", "1"});
    succeed({"set", "A", "2"});
    const Outcome undone = run({"undo"});
    EXPECT_EQ(undone.exitCode, 0) << undone.errors;
    EXPECT_EQ(undone.output, "A\t2 -> 1\n");
    EXPECT_EQ(get("A"), "1\n");
    EXPECT_EQ(history().back()["origin"], "undo");
    EXPECT_EQ(run({"undo", "--last"}).output, "A\t1 -> 2\n");
    EXPECT_EQ(get("A"), "2\n");
}

TEST(Undo, TakesBackASaveOfTheHistory) {
    succeed({"set", "A", "1"});
    succeed({"set", "B", "1"});
    succeed({"undo", idOf(history()[0])});
    EXPECT_EQ(get("A"), "");
    EXPECT_EQ(get("B"), "1\n");
    const Outcome unknown = run({"undo", "99999"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_EQ(unknown.errors, "qrvsettings: nothing to undo is in the history, 99999\n");
}

TEST(Undo, TakesBackAllSinceATimeInOneSave) {
    writeSettings(propertyList("<key>A</key><integer>0</integer>"));
    for (const std::string value : {"1", "2", "3"}) succeed({"set", "A", value});
    succeed({"set", "B", "1"});
    const std::size_t before = history().size();
    const Outcome outcome = run({"undo", "--since", "1 hour ago"});
    EXPECT_EQ(outcome.output, "A\t3 -> 0\nB\t1 -> null\n") << outcome.errors;
    EXPECT_EQ(history().size(), before + 1);
}

TEST(Undo, ADryRunWritesNothing) {
    succeed({"set", "A", "1"});
    const auto before = ToolSupport::snapshot(settingsFile().parent_path());
    EXPECT_EQ(run({"undo", "--dry-run"}).output, "A\t1 -> null\n");
    EXPECT_EQ(ToolSupport::snapshot(settingsFile().parent_path()), before);
}

TEST(Undo, RefusesWhatWasChangedSinceAndNamesWhoDidIt) {
    succeed({"set", "A", "1"});
    succeed({"set", "A", "2"});
    succeed({"set", "B", "1"});
    const std::string id = idOf(history()[0]);
    const Outcome refused = run({"undo", id});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.output, "");
    EXPECT_THAT(refused.errors,
                MatchesRegex("qrvsettings: A was changed since: now 2, 2[0-9-]+ [0-9:]+ by "
                             "qrvsettings.[0-9]+. .save [0-9]+.\n"
                             "qrvsettings: nothing is undone; --force overwrites what was changed "
                             "since\n"));
    EXPECT_EQ(get("A"), "2\n");
    EXPECT_EQ(run({"undo", id, "--force"}).output, "A\t2 -> null\n");
    EXPECT_EQ(get("B"), "1\n");
}

TEST(Undo, TakesBackAnImportAnApplyAndAnUnset) {
    succeed({"set", "CPU.Menubar.Width", "60"});
    succeed({"set", "Profiles.Settings.work.A", "1"});
    const std::string before = run({"list", "--layer", "stored"}).output;
    const std::vector<std::string> changes = {
        "echo '{}' | qrvsettings import -",
        "printf 'set B 1\\nunset CPU.Menubar.Width\\n' | qrvsettings apply -",
        "qrvsettings unset CPU.Menubar.Width Profiles.Settings.work.A"};
    for (const std::string& change : changes) {
        ASSERT_EQ(runShell(change).exitCode, 0);
        EXPECT_NE(run({"list", "--layer", "stored"}).output, before) << change;
        succeed({"undo"});
        EXPECT_EQ(run({"list", "--layer", "stored"}).output, before) << change;
    }
}

TEST(Undo, LeavesWhatTheMigrationCopiedAndItsRecords) {
    writeSettings(
        propertyList("<key>CPU</key><dict><key>Menubar</key><dict><key>Enabled</key>"
                     "<false/></dict></dict>"));
    succeed({"set", "A", "1"});
    EXPECT_EQ(run({"undo"}).output, "A\t1 -> null\n");
    EXPECT_EQ(get("Profiles.Settings.default.CPU.Menubar.Enabled"), "false\n");
    EXPECT_EQ(get("Migration.Profiles"), "true\n");
}

TEST(Undo, WantsOneChoice) {
    succeed({"set", "A", "1"});
    EXPECT_EQ(run({"undo", "1", "--since", "1h"}).exitCode, 2);
    EXPECT_EQ(run({"undo", "1", "--last"}).exitCode, 2);
    EXPECT_EQ(run({"undo", "--last", "--since", "1h"}).exitCode, 2);
    EXPECT_EQ(get("A"), "1\n");
}

TEST(Explain, TellsTheLastChangeAndByWhat) {
    succeed({"set", "CPU.Menubar.Width", "60"});
    succeed({"set", "CPU.Menubar.Width", "70", "--profile", "default"});
    EXPECT_THAT(
        run({"explain", "CPU.Menubar.Width"}).output,
        testing::ContainsRegex(
            "last change: +2[0-9-]+ [0-9:]+ by qrvsettings.[0-9]+., not set -> 60 .save [0-9]+.\n"
            "profile change: +2[0-9-]+ [0-9:]+ by qrvsettings.[0-9]+., not set -> 70 "));
    const auto explained =
        nlohmann::json::parse(run({"explain", "CPU.Menubar.Width", "--json"}).output);
    EXPECT_EQ(explained["lastChange"]["changes"][0]["after"], 60);
    EXPECT_EQ(explained["profileLastChange"]["changes"][0]["after"], 70);
    EXPECT_THAT(run({"explain", "UpdateFrequency"}).output, Not(HasSubstr("change")));
}

TEST(WithoutHistory, ItIsSaidWhyAndNothingElseDiffers) {
    EXPECT_EQ(runSwitchedOff({"set", "A", "1"}).exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(database()));
    for (const Words& words : std::vector<Words>{{"history"}, {"undo"}, {"history", "clear"}}) {
        const Outcome outcome = runSwitchedOff(words);
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors,
                  "qrvsettings: there is no history: QRVSETTINGS_HISTORY=0 switches it off\n");
    }
    const Outcome explained = runSwitchedOff({"explain", "A"});
    EXPECT_EQ(explained.exitCode, 0);
    EXPECT_THAT(explained.output, Not(HasSubstr("change")));
}

TEST(WithoutHistory, ADamagedOneIsNamedAndNothingElseDiffers) {
    writeFile(database(), "no database at all, but long enough to be none");
    const Outcome unreadable = run({"history"});
    EXPECT_EQ(unreadable.exitCode, 3);
    EXPECT_THAT(unreadable.errors, AllOf(HasSubstr("qrvsettings: "), HasSubstr("history.sqlite")));
    EXPECT_THAT(run({"explain", "CPU.Menubar.Enabled"}).output, Not(HasSubstr("change")));
    EXPECT_EQ(run({"set", "A", "1"}).exitCode, 0);
    EXPECT_EQ(get("A"), "1\n");
    EXPECT_EQ(history({"A"}).size(), 1U);
}

TEST(WithoutHistory, AFolderThatCannotBeMadeLosesNoSave) {
    writeFile(std::getenv("XDG_STATE_HOME"), "a file in the way");
    const Outcome outcome = run({"set", "A", "1"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(get("A"), "1\n");
    EXPECT_EQ(run({"undo"}).exitCode, 1);
}

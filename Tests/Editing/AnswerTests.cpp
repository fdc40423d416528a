// SPDX-License-Identifier: MIT
// Rows and answers say what `qrvsettings explain` says.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "Editing/RowsSupport.h"
#include "Rows/SettingAnswer.h"
#include "Text/JSON.h"
#include "Text/ValueText.h"
#include "Tool/ToolSupport.h"

using namespace Tool;
using RowsSupport::putAt;
using RowsSupport::Random;
using RowsSupport::readAgain;
using RowsSupport::Settings;

namespace {

std::string textOf(const PropertyListValue& value) {
    return nlohmann::json::parse(jsonText(orNullMarker(value))).dump();
}

/// What `explain` prints of the same facts.
std::string textOf(const SettingAnswer& answer) {
    return "effective " + textOf(answer.effective) + "\nlayer \"" + layerWord(answer.layer) +
           "\"\nstored " + textOf(answer.stored) + "\nsite " + textOf(answer.site) + "\ndefault " +
           textOf(answer.builtIn) + "\nprofileValue " + textOf(answer.inProfile) + "\nsiteFile " +
           textOf(orNullMarker(answer.siteFile)) + "\nlockFile " +
           textOf(orNullMarker(answer.lockFile));
}

std::vector<std::string> argumentsFor(const std::string& keyPath, const std::string& profile) {
    std::vector<std::string> arguments = {"explain", "--json"};
    if (!profile.empty()) arguments.insert(arguments.end(), {"--profile", profile});
    arguments.insert(arguments.end(), {"--", keyPath});
    return arguments;
}

std::string explained(const std::string& keyPath, const std::string& profile) {
    const auto outcome = ToolSupport::run(argumentsFor(keyPath, profile));
    if (outcome.output.empty()) return outcome.errors;
    const auto answer = nlohmann::json::parse(outcome.output);
    std::string text;
    for (const char* const name : {"effective", "layer", "stored", "site", "default",
                                   "profileValue", "siteFile", "lockFile"})
        text += std::string(text.empty() ? "" : "\n") + name + " " + answer[name].dump();
    return text;
}

/// The defaults, the rows, and others.
std::vector<std::string> keyPathsToAsk(const SettingsTable& table, Random& random) {
    std::set<std::string> keyPaths;
    for (const SettingRow& row : table.rows()) keyPaths.insert(row.keyPath);
    for (const QRVKnownSetting& known : QRVKnownSettings()) keyPaths.emplace(known.keyPath);
    while (keyPaths.size() < table.rows().size() + 1000) keyPaths.insert(random.keyPath());
    return {keyPaths.begin(), keyPaths.end()};
}

void expectRowAsAnswer(const SettingsTable& table, const std::string& keyPath) {
    const SettingAnswer answer = answerAt(table.snapshot(), keyPath, table.profile());
    const SettingRow* const row = table.at(keyPath);
    if (row == nullptr) {
        // What is locked has a value at the key path of each profile, also of those that are not.
        EXPECT_TRUE(answer.effective.isNull() || isLevel(answer.effective) ||
                    !answer.lockFile.empty())
            << keyPath;
        return;
    }
    EXPECT_EQ(textOf(row->effective), textOf(answer.effective)) << keyPath;
    EXPECT_EQ(row->layer, answer.layer) << keyPath;
    if (table.profile().empty()) {
        EXPECT_EQ(textOf(row->stored), textOf(answer.stored)) << keyPath;
    }
}

void expectAsExplained(const NSDictionary& stored, const std::string& profile, unsigned seed) {
    SCOPED_TRACE("profile " + profile + ", seed " + std::to_string(seed));
    StoreSupport::writeSettings(stored);
    Random random(seed);
    const Settings settings(readAgain(stored), profile);
    const std::vector<std::string> keyPaths = keyPathsToAsk(settings.table, random);
    constexpr std::size_t processes = 40;
    const std::size_t step = keyPaths.size() / processes;
    for (std::size_t index = 0; index < keyPaths.size(); ++index) {
        expectRowAsAnswer(settings.table, keyPaths[index]);
        if (index % step != seed % step) continue;
        const SettingAnswer answer = answerAt(settings.table.snapshot(), keyPaths[index], profile);
        EXPECT_EQ(textOf(answer), explained(keyPaths[index], profile)) << keyPaths[index];
    }
}

void writeSite() {
    SiteSupport::writeList({{"UpdateFrequency", 7},
                            {"A", NSDictionary{{"B", "of the site"}}},
                            {"Menu", NSDictionary{{"Theme", NSDictionary{{"Dark", "blue"}}}}}});
    SiteSupport::writeLocks("CPU.Menubar.Enabled\nA.B\nMenu.*\n");
}

}  // namespace

TEST(Answer, IsWhatExplainSaysOfAnyKeyPath) {
    for (unsigned seed = 1; seed <= 2; ++seed) {
        const NSDictionary tree = Random(seed).tree();
        for (const std::string profile : {"", "work"}) expectAsExplained(tree, profile, seed);
    }
}

TEST(Answer, IsWhatExplainSaysOfSettingsThatASiteHasGivenAndLocked) {
    writeSite();
    const NSMutableDictionary tree = Random(3).tree();
    for (const char* const start : {"", "Profiles.Settings.default.", "Profiles.Settings.a.b."})
        for (const char* const locked : {"CPU.Menubar.Enabled", "Menu.Theme.Dark"})
            putAt(tree, "mine", std::string(start) + locked);
    for (const std::string profile : {"", "default", "a.b"}) expectAsExplained(tree, profile, 3);
}

TEST(Answer, IsWhatExplainSaysOfAFileThatIsMigratedAndOfNone) {
    NSMutableDictionary tree = Random(4).tree();
    tree.removeObjectForKey("Migration");
    putAt(tree, "of another machine", "Device.Device");
    putAt(tree, "eth0", "Network.Menubar.Global.PrimaryInterface");
    for (const std::string profile : {"", "default"}) expectAsExplained(tree, profile, 4);
}

TEST(Answer, OfASettingWhoseStoredValueTheStartResetsHasWhatTheFileHolds) {
    const Settings settings(
        RowsSupport::migrated({{"Device.Device", "of another machine"},
                               {"Network.Menubar.Global.PrimaryInterface", "eth0"}}));
    const char* const keyPath = "Network.Menubar.Global.PrimaryInterface";
    const SettingAnswer answer = answerAt(settings.table.snapshot(), keyPath, "");
    EXPECT_EQ(answer.stored, PropertyListValue("eth0"));
    EXPECT_NE(answer.effective, PropertyListValue("eth0"));
    EXPECT_EQ(settings.row(keyPath).stored, PropertyListValue("eth0"));
    EXPECT_TRUE(settings.row(keyPath).isModified);
}

TEST(Answer, HasTheDefaultOfTheSiteBeforeTheOneOfTheLibrary) {
    SettingAnswer answer;
    EXPECT_TRUE(answer.byDefault().isNull());
    answer.builtIn = 1;
    EXPECT_EQ(answer.byDefault(), PropertyListValue(1));
    answer.site = 2;
    EXPECT_EQ(answer.byDefault(), PropertyListValue(2));
}

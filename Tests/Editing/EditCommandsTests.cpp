// SPDX-License-Identifier: MIT
// Edits as commands: a shell runs them with the real tool, on a settings file of its own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "Edits/EditCommands.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Text/JSON.h"
#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using testing::Not;
using Tool::commandOfSetting;
using Tool::commandsOfEdits;
using Tool::PendingEdit;
using Tool::PendingEdits;

namespace {

/// Key paths and texts that a shell or a parser of options could take for something else.
const std::vector<std::string>& hostileTexts() {
    static const auto& texts = *new std::vector<std::string>{
        "it's",   "\"quoted\"", "$HOME",    "`date`", "$(date)", "${IFS#??}", "a b",  " blank ",
        "tab\tx", "line\nend",  "\nline",   "end\n",  "--",      "--type",    "-x",   "-5",
        "-",      "#x",         "*",        "a;b",    "a&b|c",   "\\",        "%s%d", "~",
        "!x",     "äöü€😀",      "\x1b[31m", "null",   "true",    "007",       "a=b",  "''"};
    return texts;
}

std::vector<PendingEdit> editsOf(const PendingEdits& pending) {
    std::vector<PendingEdit> edits;
    for (const auto& [place, edit] : pending.edits()) edits.push_back(edit);
    return edits;
}

NSDictionary storedTree() {
    return {
        {"Kept", 1},
        {"Removed", NSDictionary{{"it's", 1}, {"-x", "two\nlines"}, {"$HOME", true}}},
        {"Level", "a text"},
        {"Migration", NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}}},
        {"Profiles", NSDictionary{{"Available", NSDictionary{{"identifier", "default"}}},
                                  {"Settings", NSDictionary{{"it's", NSDictionary{{"-k", 1}}}}}}}};
}

void makeEdits(PendingEdits& pending, const NSDictionary& stored) {
    std::vector<PendingEdits::Request> requests;
    for (const std::string& text : hostileTexts()) {
        requests.push_back({{"Hostile." + text, ""}, text, nullptr});
        requests.push_back({{text, "pro'file"}, NSArray{text, 1}, nullptr});
    }
    requests.push_back({{"Removed.it's", ""}, nullptr, nullptr});
    requests.push_back({{"Removed.-x", ""}, nullptr, nullptr});
    requests.push_back({{"-k", "it's"}, nullptr, nullptr});
    requests.push_back({{"Level", ""}, nullptr, nullptr});
    requests.push_back({{"Level.Below", ""}, 9007199254740993, nullptr});
    requests.push_back({{"CPU.Menubar.Enabled", ""}, "none of its kind", nullptr});
    requests.push_back({{"CPU.Menubar.Enabledd", ""}, -0.0, nullptr});
    requests.push_back({{"Date", ""}, NSDate(86400), nullptr});
    requests.push_back({{"Data", ""}, NSData(std::string("\0\xff", 2)), nullptr});
    requests.push_back({{"Nested", ""}, NSDictionary{{"a.b", NSArray{NSDictionary{}}}}, nullptr});
    ASSERT_TRUE(pending.edit(requests, stored, "Edit"));
}

std::string bytesOf(const NSDictionary& tree) {
    return NSPropertyListSerialization::dataWithPropertyList(tree).bytes;
}

}  // namespace

TEST(EditCommands, MakeAnotherFileHoldTheSame) {
    const NSDictionary stored = storedTree();
    PendingEdits pending;
    makeEdits(pending, stored);
    const std::string commands = commandsOfEdits(editsOf(pending));

    const std::string there = std::filesystem::current_path().string() + "/another";
    setenv("XDG_CONFIG_HOME", there.c_str(), 1);
    ToolSupport::writeSettings(bytesOf(stored));
    const ToolSupport::Outcome shell = ToolSupport::runShell(commands);
    ASSERT_EQ(shell.exitCode, 0) << shell.errors << commands;

    ToolSupport::writeFile("wanted.plist", bytesOf(pending.appliedTo(stored)));
    const ToolSupport::Outcome diff =
        ToolSupport::run({"diff", "--keep-dotted-keys", "wanted.plist"});
    EXPECT_EQ(diff.output, "");
    EXPECT_EQ(diff.exitCode, 0) << diff.errors;
}

TEST(EditCommands, HoldNoRecordOfTheStoreThatNobodyHasEdited) {
    const NSDictionary stored = storedTree();
    PendingEdits pending;
    makeEdits(pending, stored);
    EXPECT_THAT(commandsOfEdits(editsOf(pending)), Not(HasSubstr("Migration")));
    pending.edit({{{"Migration.Profiles", ""}, nullptr, nullptr}}, stored, "Edit");
    EXPECT_THAT(commandsOfEdits(editsOf(pending)),
                HasSubstr("qrvsettings unset -- 'Migration.Profiles'\n"));
}

TEST(EditCommands, AreOneLineForASettingAndItsScope) {
    const NSDictionary stored{
        {"A", 1},
        {"Profiles", NSDictionary{{"Settings", NSDictionary{{"p", NSDictionary{{"A", 2}}}}}}}};
    EXPECT_EQ(commandOfSetting({"A", ""}, stored, 7), "qrvsettings set -- 'A' '1'\n");
    EXPECT_EQ(commandOfSetting({"A", "p"}, stored, 7),
              "qrvsettings set --profile='p' -- 'A' '2'\n");
    EXPECT_EQ(commandOfSetting({"B", ""}, stored, 1.5), "qrvsettings set -- 'B' '1.5'\n");
    EXPECT_EQ(commandOfSetting({"B", ""}, stored, nullptr), "qrvsettings unset -- 'B'\n");
    EXPECT_EQ(commandsOfEdits({}), "");
}

TEST(EditCommands, RemoveBeforeTheyStore) {
    EXPECT_EQ(commandsOfEdits({{{"A", ""}, nullptr, 1}, {{"B", ""}, 1, nullptr}}),
              "qrvsettings unset -- 'B'\nqrvsettings set -- 'A' '1'\n");
}

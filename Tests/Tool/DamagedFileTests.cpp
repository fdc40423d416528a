// SPDX-License-Identifier: MIT
// Every command beside a damaged settings file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

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
using ToolSupport::writeSettings;

namespace {

const std::vector<std::vector<std::string>> commandsThatRead = {
    {"get", "a"},
    {"get", "a", "--layer", "stored"},
    {"list", "--layer", "stored"},
    {"list", "a"},
    {"export"},
    {"export", "out.plist"},
    {"set", "a", "1"},
    {"unset", "a"},
    {"color", "get", "a"},
    {"color", "set", "a", "#000000"},
    {"color", "unset", "a"},
    {"appearance", "get"},
    {"appearance", "set", "dark"},
    {"apply", "changes"},
    {"apply", "changes", "--dry-run"},
    {"import", "whole.plist"},
    {"import", "whole.plist", "--dry-run"},
    {"profiles"},
    {"search", "a"},
    {"explain", "a"},
    {"diff"},
    {"diff", "whole.plist"},
    {"get", "a", "--profile", "p"},
    {"watch"}};

/// All of them say so and leave everything as it is.
void expectUnreadable(const std::string& reason) {
    ToolSupport::writeFile("changes", "set a 1\n");
    ToolSupport::writeFile("whole.plist", propertyList("<key>a</key><true/>"));
    const auto before = snapshot(configurationFolder());
    for (const auto& arguments : commandsThatRead) {
        const Outcome outcome = run(arguments);
        const auto shown = testing::PrintToString(arguments);
        EXPECT_EQ(outcome.exitCode, 3) << shown;
        EXPECT_EQ(outcome.output, "") << shown;
        EXPECT_THAT(outcome.errors, StartsWith("qrvsettings: the settings file ")) << shown;
        EXPECT_THAT(outcome.errors, HasSubstr(reason)) << shown;
        EXPECT_THAT(outcome.errors, HasSubstr(settingsFile().string())) << shown;
    }
    EXPECT_EQ(snapshot(configurationFolder()), before);
    EXPECT_FALSE(std::filesystem::exists("out.plist"));
}

}  // namespace

TEST(DamagedFile, IsReportedByEveryCommandThatReads) {
    writeSettings("<plist><dict><key>a</key></dict></plist>");
    expectUnreadable("is damaged: ");
}

TEST(DamagedFile, TheMessageSaysWhatIsWrongAndWhere) {
    writeSettings("<plist>\n<dict>\n<key>a</key><frob/></dict></plist>");
    EXPECT_THAT(run({"get", "a"}).errors, HasSubstr("line 3, column "));
}

TEST(DamagedFile, TruncatedAnywhereItIsNotTakenForSettings) {
    const std::string whole =
        propertyList("<key>a</key><integer>1</integer><key>b</key><string>x</string>");
    for (std::size_t size = 1; size < whole.find("</plist>"); size += 23) {
        writeSettings(whole.substr(0, size));
        EXPECT_EQ(run({"get", "a"}).exitCode, 3) << size;
        EXPECT_EQ(run({"set", "a", "2"}).exitCode, 3) << size;
        EXPECT_EQ(contentsOf(settingsFile()), whole.substr(0, size));
    }
}

TEST(DamagedFile, AForeignFileIsNoSettingsFile) {
    writeSettings(
        std::string("\x7f"
                    "ELF\0\1\2\3",
                    8));
    expectUnreadable("is damaged: ");
}

TEST(DamagedFile, ARootThatIsNoDictionaryIsNoSettingsFile) {
    writeSettings("<plist><array><string>a</string></array></plist>");
    expectUnreadable("its root is not a dictionary");
}

TEST(DamagedFile, AFolderInItsPlaceCannotBeRead) {
    std::filesystem::create_directories(settingsFile() / "inside");
    expectUnreadable("cannot be read: Is a directory");
    EXPECT_EQ(run({"set", "a", "1", "--replace-damaged"}).exitCode, 3);
    EXPECT_TRUE(std::filesystem::is_directory(settingsFile() / "inside"));
}

TEST(DamagedFile, ALoopOfLinksCannotBeRead) {
    std::filesystem::create_directories(settingsFile().parent_path());
    std::filesystem::create_symlink(settingsFile(), settingsFile());
    expectUnreadable("cannot be read: ");
}

TEST(DamagedFile, AFileThatIsTooLargeIsDamaged) {
    writeSettings("<");
    std::filesystem::resize_file(settingsFile(), std::uintmax_t{512} * 1024 * 1024 + 1);
    const Outcome outcome = run({"get", "a"});
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_THAT(outcome.errors, HasSubstr("larger than 512 MiB"));
}

TEST(DamagedFile, DefaultsAndPathDoNotNeedIt) {
    writeSettings("{{{");
    EXPECT_EQ(run({"get", "a", "--layer", "default"}).exitCode, 1);
    EXPECT_EQ(run({"list", "--layer", "default"}).exitCode, 0);
    EXPECT_EQ(run({"path"}).exitCode, 0);
}

TEST(DamagedFile, AnEmptyFileIsNotDamaged) {
    writeSettings("");
    const std::vector<std::string> readers = {"get", "list", "export", "unset"};
    for (const auto& arguments : commandsThatRead)
        if (std::find(readers.begin(), readers.end(), arguments.front()) != readers.end()) {
            EXPECT_EQ(run(arguments).exitCode, 1) << arguments.front();
        }
    EXPECT_EQ(contentsOf(settingsFile()), "");
}

TEST(ReplaceDamaged, KeepsTheBytesAndSaysWhere) {
    for (const std::string number : {"1", "2"}) {
        const std::string bytes = "{broken " + number;
        writeSettings(bytes);
        const Outcome outcome = run({"set", "a", number, "--replace-damaged"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        const std::string kept = settingsFile().string() + ".damaged-" + number;
        EXPECT_THAT(outcome.errors, StartsWith("qrvsettings: "));
        EXPECT_THAT(outcome.errors, HasSubstr(kept + "\n"));
        EXPECT_EQ(contentsOf(kept), bytes);
        EXPECT_EQ(run({"get", "a"}).output, number + "\n");
    }
}

TEST(ReplaceDamaged, ChangesNothingForAWholeFile) {
    ASSERT_EQ(run({"set", "a", "true"}).exitCode, 0);
    const Outcome outcome = run({"set", "b", "1", "--replace-damaged"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(ToolSupport::storedSettings(), "{\"a\":true,\"b\":1}");
}

TEST(ReplaceDamaged, UnsetFindsNothingToRemove) {
    writeSettings("{broken");
    const auto before = snapshot(configurationFolder());
    const Outcome outcome = run({"unset", "a", "--replace-damaged"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "qrvsettings: not set, a\n");
    EXPECT_EQ(snapshot(configurationFolder()), before);
}

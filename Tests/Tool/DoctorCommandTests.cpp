// SPDX-License-Identifier: MIT
// The command `doctor`: its facts, findings and exit codes.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "Files/SystemCallFilter.h"
#include "Support/ChildProcess.h"
#include "Tool/DoctorSupport.h"
#include "Tool/ToolSupport.h"

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using ToolSupport::dictionary;
using ToolSupport::examine;
using ToolSupport::expectFinding;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::Report;
using ToolSupport::run;
using ToolSupport::settingsFile;
using ToolSupport::writeFile;
using ToolSupport::writeMigrated;
using ToolSupport::writePrivately;

namespace {

std::filesystem::path hidden(const std::string& suffix) {
    return settingsFile().parent_path() / ("." + settingsFile().filename().string() + suffix);
}

/// Root too is refused what its own mode refuses.
void obeyModes() {
    prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
}

}  // namespace

TEST(Doctor, FindsNothingWrongWithWhatTheToolHasWritten) {
    ASSERT_EQ(run({"set", "CPU.Menubar.Enabled", "false"}).exitCode, 0);
    const Report report = examine();
    EXPECT_EQ(report.exitCode, 0);
    EXPECT_THAT(report.messages, IsEmpty());
    EXPECT_EQ(report.facts["location"], settingsFile().string());
    EXPECT_EQ(report.facts["kind"], "file");
    EXPECT_EQ(report.facts["format"], "XML");
    EXPECT_EQ(report.facts["size"], std::filesystem::file_size(settingsFile()));
    EXPECT_EQ(report.facts["mode"], "0600");
    EXPECT_EQ(report.facts["lock"], "free");
    EXPECT_EQ(report.facts["watch"], "at once");
    EXPECT_GT(report.facts["watchers"], 0);
    EXPECT_GT(report.facts["watched"], 0);
}

TEST(Doctor, PrintsFactsAndFindingsForPeople) {
    writeMigrated("<key>UpdateFrequency</key><true/>");
    const Outcome outcome = run({"doctor"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("\nformat:   XML\n"));
    EXPECT_THAT(
        outcome.output,
        HasSubstr("\nwarning: UpdateFrequency is a boolean, and its default is an integer, "
                  "1\n  to do: set it to a value of that kind, or remove it: qrvsettings unset "
                  "-- 'UpdateFrequency'\n"));
}

TEST(Doctor, AMissingFileNeedsNobody) {
    const Report report = examine();
    expectFinding(report, 0, "note: there is no settings file");
    EXPECT_EQ(report.facts["kind"], "missing");
    EXPECT_EQ(report.facts["lock"], "none yet");
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}

TEST(Doctor, NamesTheOtherFormats) {
    writePrivately("{ a = b; }");
    EXPECT_EQ(examine().facts["format"], "old-style");
    writePrivately("");
    const Report report = examine();
    EXPECT_EQ(report.facts["format"], "empty");
    EXPECT_EQ(report.exitCode, 0);
    ASSERT_EQ(ToolSupport::runProgram(QRV_PYTHON,
                                      {"-c",
                                       "import plistlib, sys\nplistlib.dump({}, open(sys.argv[1], "
                                       "'wb'), fmt=plistlib.FMT_BINARY)\n",
                                       settingsFile()})
                  .exitCode,
              0);
    EXPECT_EQ(examine().facts["format"], "binary");
}

TEST(Doctor, SaysWhatIsWrongWithADamagedFile) {
    writePrivately("<plist>\n<dict>\n<key>a</key><frob/></dict></plist>");
    const Report report = examine();
    expectFinding(report, 1, "error: the settings file is damaged: ");
    EXPECT_THAT(report.messages, ElementsAre(HasSubstr("line 3, column ")));
}

TEST(Doctor, SaysThatAFileMayNotBeRead) {
    writePrivately(propertyList(""));
    std::filesystem::permissions(settingsFile(), std::filesystem::perms::none);
    const Report report = examine({"", obeyModes});
    expectFinding(report, 1, "error: the settings file cannot be read: Permission denied");
}

TEST(Doctor, SaysThatAFolderLiesInTheFilesPlace) {
    std::filesystem::create_directories(settingsFile() / "inside");
    expectFinding(examine(), 1, "error: a folder lies in the place of the settings file");
}

TEST(Doctor, SaysThatAPipeLiesInTheFilesPlace) {
    std::filesystem::create_directories(settingsFile().parent_path());
    ASSERT_EQ(mkfifo(settingsFile().c_str(), 0600), 0);
    expectFinding(examine(), 1, "is no file: ");
}

TEST(Doctor, SaysWhereALinkLeads) {
    writePrivately(propertyList(""));
    std::filesystem::create_directories("dotfiles");
    const std::filesystem::path target = std::filesystem::absolute("dotfiles/settings.plist");
    std::filesystem::rename(settingsFile(), target);
    std::filesystem::create_symlink(target, settingsFile());
    Report report = examine();
    EXPECT_EQ(report.exitCode, 0);
    EXPECT_EQ(report.facts["kind"], "link");
    EXPECT_EQ(report.facts["target"], target.string());
    EXPECT_EQ(report.facts["format"], "XML");
    std::filesystem::remove(target);
    report = examine();
    expectFinding(report, 1, "warning: the link leads nowhere: " + target.string());
    std::filesystem::remove(settingsFile());
    std::filesystem::create_symlink(settingsFile(), settingsFile());
    expectFinding(examine(), 1, "error: the link leads to itself");
}

TEST(Doctor, WarnsOfAModeThatIsWiderThanTheUser) {
    writePrivately(propertyList(""));
    std::filesystem::permissions(settingsFile(), std::filesystem::perms(0644));
    Report report = examine();
    expectFinding(report, 1, "warning: other users may read the settings: mode 0644");
    std::filesystem::permissions(settingsFile(), std::filesystem::perms(0620));
    expectFinding(examine(), 1, "warning: other users may change the settings: mode 0620");
}

TEST(Doctor, WarnsOfAnotherOwner) {
    if (geteuid() != 0) GTEST_SKIP() << "takes root to give files away";
    writePrivately(propertyList(""));
    ASSERT_EQ(chown(settingsFile().c_str(), 54321, static_cast<gid_t>(-1)), 0);
    const Report report = examine();
    expectFinding(report, 1, "warning: the file belongs to another user: 54321");
    EXPECT_EQ(report.facts["owner"], "54321");
}

TEST(Doctor, WarnsOfAFolderThatOthersMayWrite) {
    writePrivately(propertyList(""));
    const auto folder = settingsFile().parent_path();
    std::filesystem::permissions(folder, std::filesystem::perms(0777));
    const Report report = examine();
    expectFinding(report, 1,
                  "warning: other users may replace the settings: mode 0777 of the folder " +
                      folder.string());
    EXPECT_EQ(report.advices,
              std::vector<std::string>{"keep them out: chmod go-w '" + folder.string() + "'"});
}

TEST(Doctor, SaysThatAFileIsReadOnly) {
    writePrivately(propertyList(""));
    std::filesystem::permissions(settingsFile(), std::filesystem::perms(0400));
    expectFinding(examine(), 1,
                  "warning: the file is read-only, and commands that write refuse it: mode 0400");
}

TEST(Doctor, WarnsOfSettingsThatAreNearlyTooLarge) {
    const std::string text(60'000'000, 'x');
    writePrivately(propertyList("<key>Long</key><string>" + text + "</string>"));
    EXPECT_THAT(examine().messages,
                Contains(HasSubstr("warning: the settings are nearly too large: 600")));
    std::string values;
    for (int number = 0; number < 800'000; ++number) values += "<true/>";
    writePrivately(propertyList("<key>Many</key><array>" + values + "</array>"));
    EXPECT_THAT(examine().messages,
                Contains(HasSubstr("warning: the settings are nearly too large: 80000")));
}

TEST(Doctor, SaysThatAFolderCannotBeWritten) {
    writePrivately(propertyList(""));
    const auto folder = settingsFile().parent_path();
    std::filesystem::permissions(folder, std::filesystem::perms(0500));
    expectFinding(examine({"", obeyModes}), 1, "error: no save can succeed, this user may not");
    std::filesystem::permissions(folder, std::filesystem::perms(0700));
    std::filesystem::remove_all(ToolSupport::configurationFolder());
    writeFile(ToolSupport::configurationFolder(), "mine");
    const Outcome outcome = run({"doctor"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("error: no save can succeed, this is no folder: " +
                                          ToolSupport::configurationFolder().string()));
}

TEST(Doctor, SaysWhatIsWrongWithTheLockFile) {
    writePrivately(propertyList(""));
    std::filesystem::create_directories(hidden(".lock"));
    expectFinding(
        examine(), 1,
        "in the place of the lock file is no file, but a folder: " + hidden(".lock").string());
    std::filesystem::remove(hidden(".lock"));
    std::filesystem::create_symlink("elsewhere", hidden(".lock"));
    expectFinding(examine(), 1, "in the place of the lock file is no file, but a link: ");
    std::filesystem::remove(hidden(".lock"));
    ASSERT_EQ(mkfifo(hidden(".lock").c_str(), 0600), 0);
    expectFinding(examine(), 1, "no file, but what is neither file nor folder: ");
    std::filesystem::remove(hidden(".lock"));
    writeFile(hidden(".lock"), "");
    std::filesystem::permissions(hidden(".lock"), std::filesystem::perms::none);
    expectFinding(examine({"", obeyModes}), 1, "error: no save can succeed, the lock file cannot");
}

TEST(Doctor, NamesTheProcessThatHoldsTheLock) {
    writePrivately(propertyList(""));
    writeFile(hidden(".lock"), "");
    const Gate held;
    ChildProcess holder([&] {
        const int file = open(hidden(".lock").c_str(), O_RDWR | O_CLOEXEC);
        if (file < 0 || flock(file, LOCK_EX) != 0) return false;
        held.open();
        return pause() == 0;
    });
    ASSERT_TRUE(held.wait());
    Report report = examine();
    expectFinding(report, 0, "note: another process is saving");
    EXPECT_EQ(report.facts["lock"], "held");
    EXPECT_EQ(report.facts["holders"], json::array({holder.pid()}));
    ASSERT_TRUE(holder.stop());
    report = examine();
    expectFinding(report, 1,
                  "warning: saves wait for a stopped process: process " +
                      std::to_string(holder.pid()) + " (");
}

TEST(Doctor, TellsLeftoversOfSaves) {
    writePrivately(propertyList(""));
    writeFile(hidden(".tmp"), "half");
    expectFinding(examine(), 0, "note: a save was interrupted");
    std::filesystem::remove(hidden(".tmp"));
    std::filesystem::create_directories(hidden(".tmp"));
    expectFinding(examine(), 1, "error: no save can succeed, a folder lies where saves begin");
    EXPECT_EQ(run({"set", "a", "1"}).exitCode, 4) << "as it says";
}

TEST(Doctor, NamesWhatNoSaveLeavesWhereSavesBegin) {
    writePrivately(propertyList(""));
    std::filesystem::create_symlink("elsewhere", hidden(".tmp"));
    expectFinding(examine(), 1,
                  "warning: a link lies where saves begin: " + hidden(".tmp").string());
    std::filesystem::remove(hidden(".tmp"));
    ASSERT_EQ(mkfifo(hidden(".tmp").c_str(), 0600), 0);
    expectFinding(examine(), 1,
                  "warning: what is neither file nor folder lies where saves begin: ");
    EXPECT_EQ(run({"set", "a", "1"}).exitCode, 0) << "which removes it";
    EXPECT_FALSE(std::filesystem::exists(hidden(".tmp")));
}

TEST(Doctor, NamesEachDamagedCopy) {
    writePrivately(propertyList(""));
    writeFile(settingsFile().string() + ".damaged-1", "{broken");
    writeFile(settingsFile().string() + ".damaged-2", "");
    const Report report = examine();
    EXPECT_EQ(report.exitCode, 1);
    EXPECT_THAT(report.messages,
                ElementsAre(HasSubstr(".damaged-1 (7 bytes)"), HasSubstr(".damaged-2 (0 bytes)")));
}

TEST(Doctor, NamesWhatIsNotOfItsDefaultsKind) {
    writeMigrated(
        "<key>UpdateFrequency</key><real>2</real>" +
        dictionary("CPU", dictionary("Menubar", "<key>Enabled</key><integer>1</integer>")) +
        "<key>Menu</key><string>flat</string>" +
        dictionary("Processes", dictionary("Combine", "<key>x</key><true/>")) +
        dictionary("Profiles",
                   dictionary("Settings", dictionary("p", "<key>UpdateFrequency</key><true/>"))));
    const Report report = examine();
    EXPECT_EQ(report.exitCode, 1);
    EXPECT_THAT(report.keyPaths, ElementsAre("CPU.Menubar.Enabled", "Menu", "Processes.Combine",
                                             "Profiles.Settings.p.UpdateFrequency"));
    EXPECT_THAT(report.messages.front(),
                HasSubstr("CPU.Menubar.Enabled is an integer, and its default is a boolean, true"));
}

TEST(Doctor, NamesTyposOfKnownKeyPaths) {
    const std::vector<std::pair<std::string, std::string>> typos = {
        {"UpdateFrequencyy", "UpdateFrequency"},
        {"UpdateFrequeny", "UpdateFrequency"},
        {"UpdateFrequemcy", "UpdateFrequency"},
        {"UpdateFrequenyc", "UpdateFrequency"},
        {"updatefrequency", "UpdateFrequency"},
        {"Menu.Theme.Vibrancy", "Menu.THeme.Vibrancy"},
        {"Menu.THeme.Dark", "Menu.Theme.Dark"},
        {"Time.Menubar.FlashSeparators", "Time.Menubar.FlashSeperators"},
        {"MenubarCurrentAppearance", "MenubarCurrentApperance"},
        {"Disk.Menubar.Enabled", "Disks.Menubar.Enabled"},
        {"CPUMenubar.Enabled", "CPU.Menubar.Enabled"},
        {"Profiles.Settings.p.UpdateFrequeny", "Profiles.Settings.p.UpdateFrequency"},
    };
    for (const auto& [keyPath, meant] : typos) {
        std::filesystem::remove(settingsFile());
        ASSERT_EQ(run({"set", "--new", keyPath, "x"}).exitCode, 0);
        const Report report = examine();
        EXPECT_EQ(report.exitCode, 1) << keyPath;
        EXPECT_THAT(report.keyPaths, ElementsAre(keyPath));
        EXPECT_THAT(report.messages, ElementsAre(HasSubstr("did you mean " + meant + "?")));
    }
}

TEST(Doctor, ItsAdviceForATypoMovesTheValue) {
    ASSERT_EQ(run({"set", "--new", "UpdateFrequeny", "3"}).exitCode, 0);
    const json findings = json::parse(run({"doctor", "--json"}).output)["findings"];
    ASSERT_EQ(findings.size(), 1U);
    const std::string advice = findings[0]["advice"];
    ASSERT_THAT(advice, HasSubstr(": qrvsettings set"));
    const Outcome outcome = ToolSupport::runShell(advice.substr(advice.find("qrvsettings")));
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(ToolSupport::storedSettings(), "{\"UpdateFrequency\":3}");
    EXPECT_EQ(examine().exitCode, 0);
}

TEST(Doctor, AKeyPathOfADefaultIsNoTypo) {
    const std::string listed = run({"list", "--layer", "default"}).output;
    ASSERT_THAT(listed, HasSubstr("Time.Menubar.FlashSeperators"));
    const json defaults = json::parse(run({"list", "--layer", "default", "--json"}).output);
    std::string commands;
    for (const auto& [keyPath, value] : defaults.items()) commands += "set " + keyPath + " \"x\"\n";
    ASSERT_EQ(run({"apply", "-", "--any-kind"}, {commands, {}}).exitCode, 0);
    ASSERT_EQ(run({"appearance", "set", "dark"}).exitCode, 0);
    for (const std::string& message : examine().messages)
        EXPECT_THAT(message, testing::Not(HasSubstr("did you mean")));
}

TEST(Doctor, AnotherNumberOrAnotherKnownNameIsNoTypo) {
    for (const std::string keyPath :
         {"Weather.Menu.Forecast.Graph.3", "Weather.Menu.Forecast.Graph.12", "GPU.Menubar.Enabled",
          "Network.Global.Addresses.Private.IPv4.Secured.Enabled", "CPU.Menubar.Width", "a"})
        ASSERT_EQ(run({"set", keyPath, "1"}).exitCode, 0);
    const Report report = examine();
    EXPECT_EQ(report.exitCode, 0);
    EXPECT_THAT(report.messages, IsEmpty());
}

TEST(Doctor, SaysWhatTheApplicationCannotStartWith) {
    writePrivately(propertyList("<key>Migration</key><string>x</string>"));
    const Report report = examine();
    EXPECT_EQ(report.exitCode, 1);
    EXPECT_THAT(report.messages,
                testing::Contains(HasSubstr("error: the application cannot start with these")));
}

TEST(Doctor, SettingsOfAnEarlierVersionNeedNobody) {
    writePrivately(propertyList("<key>a</key><true/>"));
    expectFinding(examine(), 0, "note: the settings are of an earlier version");
}

TEST(Doctor, SaysThatChangesCannotBeWatched) {
    writePrivately(propertyList(""));
    const Report full = examine({"", [] { failCall(SystemCall::InotifyStart, EMFILE); }});
    expectFinding(full, 1,
                  "warning: changes cannot be watched, and are looked for every 2 seconds");
    EXPECT_EQ(full.facts["watch"], "every 2 seconds");
    const Outcome outcome = run({"doctor"}, {"", [] { failCall(SystemCall::InotifyAdd, ENOSPC); }});
    EXPECT_THAT(outcome.output, HasSubstr("fs.inotify.max_user_watches"));
}

TEST(Doctor, SaysThatTheConfigurationFolderIsNotHeeded) {
    ASSERT_EQ(setenv("XDG_CONFIG_HOME", "relative", 1), 0);
    const Outcome outcome = run({"doctor"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("warning: XDG_CONFIG_HOME is no absolute path"));
    EXPECT_THAT(outcome.output, HasSubstr(std::string(std::getenv("HOME")) + "/.config/"));
}

TEST(Doctor, APathMayHoldAnyBytes) {
    const std::string folder = std::string(std::getenv("XDG_CONFIG_HOME")) + "/\xff\n";
    ASSERT_EQ(setenv("XDG_CONFIG_HOME", folder.c_str(), 1), 0);
    expectFinding(examine(), 0, "note: there is no settings file");
    EXPECT_THAT(run({"doctor"}).output, HasSubstr("/\\xff\\x0a/Preferences/"));
}

TEST(Doctor, SaysThatThereIsNoHomeFolder) {
    constexpr uid_t nobodyKnown = 54321;
    constexpr int cannotBeTried = 77;
    if (geteuid() != 0) GTEST_SKIP() << "only root can become a user without a home folder";
    const auto becomeUnknown = [] {
        unsetenv("XDG_CONFIG_HOME");
        unsetenv("HOME");
        if (setuid(nobodyKnown) != 0 || access(QRV_TOOL, X_OK) != 0) _exit(cannotBeTried);
    };
    const Outcome outcome = run({"doctor"}, {"", becomeUnknown});
    if (outcome.exitCode == cannotBeTried)
        GTEST_SKIP() << "the tool was built in a folder that other users may not search";
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.output, HasSubstr("error: there is no home folder"));
}

TEST(Doctor, NotesWhatIsWrongWithAnInstalledList) {
    const std::string data = std::filesystem::current_path().string() + "/data";
    const std::string list = data + "/qrvsettings/known/host.json";
    writeFile(list, R"({"settings": {"Host.A": {"kind": "number"}}})");
    setenv("XDG_DATA_DIRS", data.c_str(), 1);
    writeMigrated("");
    expectFinding(examine(), 0,
                  "note: a list of settings has a fault: Host.A: \"number\" is no kind, " + list);
}

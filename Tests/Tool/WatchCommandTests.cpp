// SPDX-License-Identifier: MIT
// The command `watch`, with other processes that write.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "Support/ChildProcess.h"
#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::contentsOf;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::RunningTool;
using ToolSupport::settingsFile;
using ToolSupport::Surroundings;

namespace {

using Arguments = std::vector<std::string>;

Arguments watchArguments(Arguments options) {
    options.insert(options.begin(), "watch");
    return options;
}

/// A watch that has begun.
class Watch : public RunningTool {
  public:
    explicit Watch(const Arguments& options, const Surroundings& surroundings = {})
        : RunningTool(watchArguments(options), surroundings) {
        const std::string begun = "qrvsettings: watching " + settingsFile().string() + "\n";
        EXPECT_TRUE(waitUntil([&] { return errors() == begun; })) << errors();
    }
    /// False when it prints something else until the deadline.
    [[nodiscard]] bool prints(const std::string& text) const {
        return waitUntil([&] { return output() == text; });
    }
};

/// Whole at every moment, as programs do that know of readers.
void replaceSettings(std::string_view bytes) {
    std::filesystem::create_directories(settingsFile().parent_path());
    const std::filesystem::path written = settingsFile().parent_path() / "written";
    ToolSupport::writeFile(written, bytes);
    std::filesystem::rename(written, settingsFile());
}

void set(const std::string& keyPath, const std::string& value) {
    const Outcome outcome = run({"set", keyPath, value});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
}

}  // namespace

TEST(Watch, PrintsKeyPathAndNewValueOfEachChange) {
    set("a", "1");
    const Watch watch({});
    set("b", "text");
    ASSERT_TRUE(watch.prints("b\t\"text\"\n")) << watch.output();
    set("c.d", "[1, 2.0]");
    ASSERT_TRUE(watch.prints("b\t\"text\"\nc.d\t[1,2.0]\n")) << watch.output();
}

TEST(Watch, PrintsTheDefaultOrNullForWhatIsRemoved) {
    set("a", "1");
    set("CPU.Menubar.Enabled", "false");
    const Watch watch({});
    ASSERT_EQ(run({"unset", "CPU.Menubar.Enabled", "a"}).exitCode, 0);
    EXPECT_TRUE(watch.prints("CPU.Menubar.Enabled\ttrue\na\tnull\n")) << watch.output();
}

TEST(Watch, TellsOnlyWhatTheFilesWriterChanged) {
    replaceSettings(
        propertyList("<key>CPU</key><dict><key>Menubar</key><dict><key>Enabled</key>"
                     "<false/></dict></dict>"));
    const Watch watch({});
    replaceSettings(
        propertyList("<key>CPU</key><dict><key>Menubar</key><dict><key>Enabled</key>"
                     "<true/></dict></dict>"));
    ASSERT_TRUE(watch.prints("CPU.Menubar.Enabled\ttrue\n")) << watch.output();
    replaceSettings(propertyList("<key>b</key><true/>"));
    EXPECT_TRUE(watch.prints("CPU.Menubar.Enabled\ttrue\nCPU.Menubar.Enabled\ttrue\nb\ttrue\n"))
        << watch.output();
}

TEST(Watch, TheFirstFileAndItsRemovalAreChanges) {
    const Watch watch({});
    replaceSettings(propertyList("<key>a</key><true/>"));
    ASSERT_TRUE(watch.prints("a\ttrue\n")) << watch.output();
    std::filesystem::remove(settingsFile());
    ASSERT_TRUE(watch.prints("a\ttrue\na\tnull\n")) << watch.output();
    replaceSettings(propertyList("<key>a</key><false/>"));
    EXPECT_TRUE(watch.prints("a\ttrue\na\tnull\na\tfalse\n")) << watch.output();
}

TEST(Watch, NeverWritesItself) {
    replaceSettings(propertyList("<key>a</key><true/>"));
    const auto before = ToolSupport::snapshot(ToolSupport::configurationFolder());
    EXPECT_EQ(run({"watch", "--timeout", "0.2"}).exitCode, 6);
    EXPECT_EQ(ToolSupport::snapshot(ToolSupport::configurationFolder()), before);
    std::filesystem::remove_all(ToolSupport::configurationFolder());
    EXPECT_EQ(run({"watch", "--timeout", "0.2"}).exitCode, 6);
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
    Watch watch({"--count", "1"});
    const std::string written = propertyList("<key>b</key><true/>");
    replaceSettings(written);
    EXPECT_EQ(watch.finish().exitCode, 0);
    EXPECT_EQ(contentsOf(settingsFile()), written);
}

TEST(Watch, SaysWhenTheFileIsDamagedMeanwhile) {
    set("a", "1");
    const RunningTool watch({"watch", "a"});
    ASSERT_TRUE(waitUntil([&] { return !watch.errors().empty(); }));
    replaceSettings("{broken");
    ASSERT_TRUE(waitUntil([&] { return watch.output() == "a\tnull\n"; })) << watch.output();
    EXPECT_THAT(watch.errors(), HasSubstr("\nqrvsettings: the settings file is damaged: "));
}

TEST(Watch, TakesThePrefixByComponents) {
    set("a", "1");
    const Watch watch({"CPU"});
    set("CPUs.x", "1");
    set("CPU.x", "2");
    ASSERT_TRUE(watch.prints("CPU.x\t2\n")) << watch.output();
    set("C", "3");
    set("CPU.x", "4");
    EXPECT_TRUE(watch.prints("CPU.x\t2\nCPU.x\t4\n")) << watch.output();
}

TEST(Watch, PrintsJSONObjectsWhenAskedForThem) {
    set("a", "1");
    const Watch watch({"--json"});
    set("b\t", "{\"x\": 1.0}");
    const std::string first = "{\"keyPath\":\"b\\t.x\",\"value\":1.0}\n";
    ASSERT_TRUE(watch.prints(first)) << watch.output();
    set("b\t", "2");
    EXPECT_TRUE(watch.prints(first + "{\"keyPath\":\"b\\t\",\"value\":2}\n"
                                     "{\"keyPath\":\"b\\t.x\",\"value\":null}\n"))
        << watch.output();
}

TEST(Watch, LeavesOutWhatNoKeyPathReaches) {
    replaceSettings(propertyList("<key>a.b</key><integer>1</integer>"));
    const Watch watch({});
    replaceSettings(propertyList("<key>a.b</key><integer>2</integer><key>c</key><true/>"));
    EXPECT_TRUE(watch.prints("c\ttrue\n")) << watch.output();
}

TEST(Watch, EndsAfterAsManyLinesAsWanted) {
    replaceSettings(propertyList("<key>z</key><true/>"));
    Watch watch({"--count", "2"});
    replaceSettings(
        propertyList("<key>c</key><integer>3</integer><key>a</key><integer>1</integer>"
                     "<key>b</key><integer>2</integer><key>z</key><true/>"));
    const Outcome outcome = watch.finish();
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "a\t1\nb\t2\n");
}

TEST(Watch, EndsAfterTheTimeout) {
    const Outcome outcome = run({"watch", "--timeout", "0.05"});
    EXPECT_EQ(outcome.exitCode, 6);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors,
                HasSubstr("\nqrvsettings: timed out, watching " + settingsFile().string() + "\n"));
    EXPECT_EQ(run({"watch", "--timeout", "1e-3", "--count", "1"}).exitCode, 6);
}

TEST(Watch, AVeryLongTimeoutIsNone) {
    set("a", "1");
    Watch watch({"--timeout", "1e300", "--count", "1"});
    set("a", "2");
    EXPECT_EQ(watch.finish().exitCode, 0);
}

TEST(Watch, EndsWellOnAnInterrupt) {
    set("a", "1");
    for (const int signal : {SIGINT, SIGTERM}) {
        Watch watch({"--timeout", "50"});
        watch.send(signal);
        const Outcome outcome = watch.finish();
        EXPECT_EQ(outcome.exitCode, 0) << signal;
        EXPECT_EQ(outcome.output, "");
    }
}

TEST(Watch, EndsOnAnInterruptAlsoWhereAShellHadItIgnored) {
    Watch watch({}, {"", [] { static_cast<void>(std::signal(SIGINT, SIG_IGN)); }});
    watch.send(SIGINT);
    EXPECT_EQ(watch.finish().exitCode, 0);
}

TEST(Watch, AReaderThatIsGoneEndsItWithTheNextLine) {
    set("a", "1");
    Watch watch({}, {"", [] {
                         std::array<int, 2> ends{};
                         if (pipe(ends.data()) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) _exit(99);
                         close(ends[0]);
                         close(ends[1]);
                     }});
    set("a", "2");
    EXPECT_EQ(watch.finish().exitCode, 128 + SIGPIPE);
}

TEST(Watch, OutputThatCannotBeWrittenIsAnError) {
    set("a", "1");
    Watch watch({}, {"", [] {
                         const int full = open("/dev/full", O_WRONLY);
                         if (full < 0 || dup2(full, STDOUT_FILENO) < 0) _exit(99);
                     }});
    set("a", "2");
    const Outcome outcome = watch.finish();
    EXPECT_EQ(outcome.exitCode, 4);
    EXPECT_THAT(outcome.errors, HasSubstr("cannot write: No space left on device"));
}

TEST(Watch, DoesNotBeginWithADamagedFile) {
    replaceSettings("{broken");
    const Outcome outcome = run({"watch"});
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_THAT(outcome.errors, StartsWith("qrvsettings: the settings file is damaged: "));
}

TEST(Watch, RefusesNumbersThatMakeNoSense) {
    for (const char* count : {"0", "-1", "1.5", "x", ""})
        EXPECT_EQ(run({"watch", "--count", count}).exitCode, 2) << count;
    for (const char* timeout : {"0", "-1", "0.0", "inf", "nan", "1e999", "x", ""})
        EXPECT_EQ(run({"watch", "--timeout", timeout}).exitCode, 2) << timeout;
    EXPECT_EQ(run({"watch", "--json", "--as-commands"}).exitCode, 2);
    EXPECT_EQ(run({"watch", "a\xff"}).exitCode, 5);
}

TEST(WatchAsCommands, AReplayGivesTheSameSettings) {
    set("z", "1");
    set("gone.deep", "1");
    set("becomesLeaf.a.b", "1");
    set("becomesTree", "1");
    const std::string before = contentsOf(settingsFile());
    Watch watch({"--as-commands"});
    set("t", R"({"one":"1","dash":"-","real":40.0,"nan":{"$real":"nan"},"empty":"","yes":true,
                 "big":18446744073709551615,"date":{"$date":"2020-01-02T03:04:05Z"},
                 "data":{"$data":"AQI="},"text":"a'b\"$HOME`\n\u0000","list":[1,{"x":2}]})");
    ASSERT_EQ(run({"set", "--", "-x", "-5"}).exitCode, 0);
    set("it's", "$HOME");
    set("two\nlines", R"([{"$dictionary":{"$date":true}}])");
    set("becomesLeaf", "true");
    set("becomesTree", R"({"a":true})");
    ASSERT_EQ(run({"unset", "gone.deep", "z"}).exitCode, 0);
    ASSERT_TRUE(waitUntil([&] { return watch.output().ends_with("'z'\n"); })) << watch.output();
    watch.send(SIGTERM);
    const std::string commands = watch.finish().output;
    EXPECT_THAT(commands, HasSubstr("qrvsettings set -- '-x' '-5'\n"));
    EXPECT_THAT(commands, HasSubstr("qrvsettings unset -- 'gone.deep'\n"));
    EXPECT_THAT(commands, testing::Not(HasSubstr("becomesLeaf.a.b")));
    const std::string after = run({"export"}).output;
    replaceSettings(before);
    ASSERT_NE(run({"export"}).output, after);
    const Outcome replay = ToolSupport::runShell(commands);
    ASSERT_EQ(replay.exitCode, 0) << replay.errors << commands;
    EXPECT_EQ(run({"export"}).output, after);
}

TEST(WatchAsCommands, WithAPrefixTheyChangeNothingElse) {
    set("a.b.c", "1");
    const Watch watch({"a.b", "--as-commands"});
    set("a", "2");
    EXPECT_TRUE(watch.prints("qrvsettings unset -- 'a.b.c'\n")) << watch.output();
}

// SPDX-License-Identifier: MIT
// The command `apply`: many changes in one save, or none.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/ChildProcess.h"
#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using testing::StartsWith;
using ToolSupport::configurationFolder;
using ToolSupport::contentsOf;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::RunningTool;
using ToolSupport::settingsFile;
using ToolSupport::snapshot;
using ToolSupport::storedSettings;
using ToolSupport::writeFile;

namespace {

Outcome apply(const std::string& lines, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"apply", "-"});
    return run(options, {lines, {}});
}

/// Nothing is changed by these lines, and this is said.
void expectRefused(const std::string& lines, const std::string& message) {
    const auto before = snapshot(configurationFolder());
    for (const auto& options : {std::vector<std::string>(), {"--dry-run"}}) {
        const Outcome outcome = apply(lines, options);
        EXPECT_EQ(outcome.exitCode, 5) << lines;
        EXPECT_EQ(outcome.output, "") << lines;
        EXPECT_THAT(outcome.errors, StartsWith("qrvsettings: standard input:" + message)) << lines;
    }
    EXPECT_EQ(snapshot(configurationFolder()), before);
}

}  // namespace

TEST(Apply, MakesAllChanges) {
    ASSERT_EQ(run({"set", "old", "1"}).exitCode, 0);
    writeFile("changes", "set a.b 40\nset a.c {\"x\": [1.0]}\nunset old\n");
    const Outcome outcome = run({"apply", "changes"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "qrvsettings: 3 changed, 0 as they were\n");
    EXPECT_EQ(storedSettings(), "{\"a\":{\"b\":40,\"c\":{\"x\":[1.0]}}}");
}

TEST(Apply, ReadsValuesAsSetDoes) {
    ASSERT_EQ(apply("set b true\nset i 18446744073709551615\nset r 1e3\nset s two  words\n"
                    "set j \"1\"\nset d {\"$date\":\"2020-01-02T03:04:05Z\"}\nset e \"\"\n"
                    "set dash -\nset hash # 1\n")
                  .exitCode,
              0);
    EXPECT_EQ(storedSettings(),
              "{\"b\":true,\"d\":{\"$date\":\"2020-01-02T03:04:05Z\"},\"dash\":\"-\",\"e\":\"\","
              "\"hash\":\"# 1\",\"i\":18446744073709551615,\"j\":\"1\",\"r\":1000.0,"
              "\"s\":\"two  words\"}");
}

TEST(Apply, TakesBlankLinesCommentsAndLineEndsOfBothForms) {
    ASSERT_EQ(apply("# set x 1\r\n\r\n  \t\n\tset  a \t1 \t\r\n #\nset b text\r\nset c 3").exitCode,
              0);
    EXPECT_EQ(storedSettings(), "{\"a\":1,\"b\":\"text\",\"c\":3}");
}

TEST(Apply, AKeyPathMayBeAJSONString) {
    ASSERT_EQ(apply("set \"with blank.\\\"q\\t\" 1\nset \"\" 2\nset é 3\n").exitCode, 0);
    EXPECT_EQ(run({"get", "with blank.\"q\t"}).output, "1\n");
    EXPECT_EQ(run({"get", ""}).output, "2\n");
    ASSERT_EQ(apply("unset \"with blank\"\nunset \"\"\n").exitCode, 0);
    EXPECT_EQ(storedSettings(), "{\"é\":3}");
}

TEST(Apply, ALaterLineSeesWhatAnEarlierOneDid) {
    ASSERT_EQ(apply("set a 1\nunset a\nset a.b 2\nset c.d 3\nunset c\nunset c.d\n").exitCode, 0);
    EXPECT_EQ(storedSettings(), "{\"a\":{\"b\":2}}");
}

TEST(Apply, WhatIsNotSetNeedNotBeUnset) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const Outcome outcome = apply("unset b.c\nunset a.b\n");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "qrvsettings: 0 changed, 2 as they were\n");
    EXPECT_EQ(storedSettings(), "{\"a\":1}");
}

TEST(Apply, TheDefaultIsNotStored) {
    ASSERT_EQ(run({"set", "CPU.Menubar.Enabled", "false"}).exitCode, 0);
    EXPECT_EQ(apply("set CPU.Menubar.Enabled true\n", {"--dry-run"}).output,
              "CPU.Menubar.Enabled\tfalse -> null\n");
    ASSERT_EQ(apply("set CPU.Menubar.Enabled true\n").exitCode, 0);
    EXPECT_EQ(run({"get", "CPU.Menubar.Enabled", "--layer", "stored"}).exitCode, 1);
}

TEST(Apply, ArrivesAsOneChange) {
    ASSERT_EQ(run({"set", "m", "1"}).exitCode, 0);
    RunningTool watch({"watch", "--count", "4"});
    ASSERT_TRUE(waitUntil([&] { return watch.errors().ends_with(".plist\n"); })) << watch.errors();
    ASSERT_EQ(apply("set z 1\nset b 2\nunset m\nset a 3\n").exitCode, 0);
    EXPECT_EQ(watch.finish().output, "a\t3\nb\t2\nm\tnull\nz\t1\n") << "sorted as one change";
}

TEST(Apply, RefusesLinesThatAreNone) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    expectRefused("set b 2\nfrob a\n", "2: neither set nor unset: frob\n");
    expectRefused("set\n", "1: no key path\n");
    expectRefused("#\n\nunset \n", "3: no key path\n");
    expectRefused("set b \n", "1: no value for b ");
    expectRefused("unset a b\n", "1: more than a key path: b\n");
    expectRefused("\tset \"a 1\n", "1:6: wrong JSON: invalid string: missing closing quote\n");
    expectRefused("set \"a\"b 1\n", "1: no blank after the key path: b 1\n");
    expectRefused("set \"a\\\n",
                  "1:5: wrong JSON: invalid string: forbidden character after backslash\n");
    expectRefused("SET a 1\n", "1: neither set nor unset: SET\n");
}

TEST(Apply, OptionsOfSetWorkInALine) {
    ASSERT_EQ(
        apply("set --type string a 5\nset --type=int b 1\nset c --type=data AQI=\n"
              "set  --type  real\td  2 \nset --type string \"e f\" x y\nset --type=json g \"1\"\n")
            .exitCode,
        0);
    EXPECT_EQ(storedSettings(),
              R"({"a":"5","b":1,"c":{"$data":"AQI="},"d":2.0,"e f":"x y","g":"1"})");
}

TEST(Apply, ALineMayNameAProfile) {
    ASSERT_EQ(apply("set --profile work a 1\nset --profile \"at home\" --type string a 2\n"
                    "set --profile=\"at home\" b 3\nset --profile=work c 4\n")
                  .exitCode,
              0);
    EXPECT_EQ(run({"get", "a", "--profile", "work"}).output, "1\n");
    EXPECT_EQ(run({"list", "--profile", "at home", "--layer", "stored"}).output,
              "a\t\"2\"\nb\t3\n");
    EXPECT_EQ(run({"get", "a"}).exitCode, 1);
    ASSERT_EQ(apply("unset --profile work a\nunset c --profile=work\n").exitCode, 0);
    EXPECT_EQ(run({"list", "--profile", "work", "--layer", "stored"}).exitCode, 1);
}

TEST(Apply, WhatBeginsWithTwoDashesNeedsTwoDashesBefore) {
    ASSERT_EQ(apply("set -- --type 1\nset \"--profile\" 2\nset a -- --b --c\nset -x -5\n"
                    "set --type string -- --s --t\nset -- -- --\n")
                  .exitCode,
              0);
    EXPECT_EQ(storedSettings(),
              R"({"--":"--","--profile":2,"--s":"--t","--type":1,"-x":-5,"a":"--b --c"})");
    ASSERT_EQ(apply("unset -- --type\nunset -- --profile\n").exitCode, 0);
    EXPECT_EQ(storedSettings(), R"({"--":"--","--s":"--t","-x":-5,"a":"--b --c"})");
}

TEST(Apply, RefusesOptionsThatAreNone) {
    expectRefused(
        "set --typ string a 5\n",
        "1: no option of set in a line: --typ (a key path or value that begins with -- goes after "
        "--)\n");
    expectRefused("unset --type string a\n", "1: no option of unset in a line: --type (");
    expectRefused("set a --b\n", "1: no option of set in a line: --b (");
    expectRefused("set --replace-damaged a 1\n",
                  "1: no option of set in a line: --replace-damaged");
    expectRefused("set --type\n", "1: no value for --type\n");
    expectRefused("set --type= a 1\n",
                  "1: not a type of values (bool, int, real, string, date, data, json): \n");
    expectRefused("set --type text a 1\n", "1: not a type of values");
    expectRefused("set --type int a x\n", "1: not a decimal integer: x\n");
    expectRefused("set --profile= a 1\n", "1: the name of the profile is empty\n");
    expectRefused("set --profile \"a\"b c 1\n",
                  "1: no blank after the value of --profile: b c 1\n");
    std::string deep = "a";
    for (int level = 1; level < 511; ++level) deep += ".a";
    EXPECT_EQ(apply("set " + deep + " 1\n", {"--dry-run"}).exitCode, 0);
    expectRefused("set --profile p " + deep + " 1\n", "1: ");
}

TEST(Apply, RefusesValuesThatNoFileHolds) {
    expectRefused("set a 1\nset ä {\n",
                  "2:8: wrong JSON: unexpected end of input; expected string literal");
    expectRefused("\xef\xbb\xbfset a 1\n", "1: the text begins with a byte order mark");
    expectRefused("set a null\nset a [null]\n", "2:8: wrong JSON: null is no value of a setting");
    expectRefused("set a 99999999999999999999\n", "1: integer not between ");
    expectRefused("set a \xff\n", "1: a string is not valid UTF-8");
    expectRefused("set a 1\n# \xff\n", "2: a string is not valid UTF-8");
    expectRefused("set \xff 1\n", "1: a string is not valid UTF-8");
    std::string deep = "a";
    for (int level = 0; level < 600; ++level) deep += ".a";
    expectRefused("set b 1\nset " + deep + " 1\n", "2: ");
}

TEST(Apply, RefusesToWriteThroughAValue) {
    ASSERT_EQ(run({"set", "stored", "1"}).exitCode, 0);
    expectRefused("set x 1\nset stored.a 1\n",
                  "2: a stored value is in the way: stored is an integer, stored.a\n");
    expectRefused("set a [1]\nset a.b 1\n",
                  "2: a stored value is in the way: a is an array, a.b\n");
}

TEST(Apply, NamesTheFileThatCannotBeRead) {
    const Outcome missing = run({"apply", "absent"});
    EXPECT_EQ(missing.exitCode, 5);
    EXPECT_EQ(missing.errors, "qrvsettings: cannot be read: No such file or directory, absent\n");
    std::filesystem::create_directory("folder");
    EXPECT_EQ(run({"apply", "folder"}).errors,
              "qrvsettings: cannot be read: Is a directory, folder\n");
    writeFile("changes", "set a 1\nx\n");
    EXPECT_EQ(run({"apply", "changes"}).errors,
              "qrvsettings: changes:2: neither set nor unset: x\n");
    EXPECT_FALSE(std::filesystem::exists(configurationFolder()));
}

TEST(Apply, WithoutChangesDoesNothingAndSaysSo) {
    for (const char* lines : {"", "\n", "# only this"}) {
        const Outcome outcome = apply(lines);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.errors, "qrvsettings: no changes, standard input\n");
    }
    EXPECT_FALSE(std::filesystem::exists(configurationFolder()));
}

TEST(ApplyDryRun, PrintsWhatWouldChangeAndWritesNothing) {
    ASSERT_EQ(run({"set", "a", R"({"b":1,"c":2,"d":[1]})"}).exitCode, 0);
    const auto before = snapshot(configurationFolder());
    const Outcome outcome = apply(
        "set a.c 2\nset a.b 1.0\nset new \"text\"\nunset a.d\nset \"t\\tb\" 1\nset n 1\nunset n\n",
        {"--dry-run"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output,
              "a.b\t1 -> 1.0\na.d\t[1] -> null\nnew\tnull -> \"text\"\n\"t\\tb\"\tnull -> 1\n");
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(snapshot(configurationFolder()), before);
}

TEST(ApplyDryRun, SaysWhenNothingWouldChange) {
    ASSERT_EQ(run({"set", "a", "1"}).exitCode, 0);
    const Outcome outcome = apply("set a 1\nunset b\n", {"--dry-run"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "qrvsettings: nothing would change\n");
}

TEST(Apply, ADamagedFileIsReplacedWhenAskedFor) {
    ToolSupport::writeSettings("{broken");
    EXPECT_EQ(apply("set a 1\n").exitCode, 3);
    EXPECT_EQ(apply("set a 1\n", {"--replace-damaged"}).exitCode, 0);
    EXPECT_EQ(storedSettings(), "{\"a\":1}");
    EXPECT_EQ(contentsOf(settingsFile().string() + ".damaged-1"), "{broken");
}

TEST(Apply, SaysWhatStrictXMLReadersRefuse) {
    const std::string said =
        "qrvsettings: a string holds U+001B, which strict XML readers refuse, a.b\n";
    EXPECT_EQ(apply("set a.b \"\\u001b\"\nset c 1\n", {"--dry-run"}).errors, said);
    EXPECT_EQ(apply("set a.b \"\\u001b\"\nset c 1\nunset a.d\n").errors,
              said + "qrvsettings: 2 changed, 1 as it was\n");
}

TEST(Apply, SaysWhatIsMigrated) {
    ToolSupport::writeSettings(propertyList("<key>a</key><integer>1</integer>"));
    EXPECT_THAT(apply("set a 2\n", {"--dry-run"}).errors, HasSubstr("of an earlier version"));
    EXPECT_THAT(apply("set a 2\n").errors, HasSubstr("of an earlier version"));
    EXPECT_EQ(apply("set a 3\n").errors, "qrvsettings: 1 changed, 0 as they were\n");
}

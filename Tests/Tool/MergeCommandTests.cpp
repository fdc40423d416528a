// SPDX-License-Identifier: MIT
// The command `merge`: three files by key path, conflicts, and the form of the result.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "Tool/ToolSupport.h"

using testing::AllOf;
using testing::HasSubstr;
using ToolSupport::contentsOf;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::writeFile;

namespace {

Outcome merge(const std::string& base, const std::string& ours, const std::string& theirs,
              const std::vector<std::string>& options = {}) {
    writeFile("base", base);
    writeFile("ours", ours);
    writeFile("theirs", theirs);
    std::vector<std::string> words = {"merge", "base", "ours", "theirs"};
    words.insert(words.end(), options.begin(), options.end());
    return run(words);
}

void expectMerged(const std::string& base, const std::string& ours, const std::string& theirs,
                  const std::string& merged) {
    const std::vector<std::pair<std::string, std::string>> bothOrders = {{ours, theirs},
                                                                         {theirs, ours}};
    for (const auto& [one, other] : bothOrders) {
        const Outcome outcome = merge(base, one, other);
        EXPECT_EQ(outcome.exitCode, 0) << one << other;
        EXPECT_EQ(outcome.output, merged + "\n") << one << other;
        EXPECT_EQ(outcome.errors, "") << one << other;
    }
}

void expectConflict(const std::string& base, const std::string& ours, const std::string& theirs,
                    const std::string& named) {
    const Outcome outcome = merge(base, ours, theirs);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, ours + "\n");
    EXPECT_EQ(outcome.errors, "qrvsettings: conflict, " + named + "\n");
    EXPECT_EQ(merge(base, ours, theirs, {"--theirs"}).output, theirs + "\n");
    EXPECT_EQ(merge(base, theirs, ours).exitCode, 1);
}

}  // namespace

TEST(Merge, TakesWhatOneSideAloneHasChanged) {
    expectMerged(R"({"a":{"x":1,"y":2}})", R"({"a":{"x":5,"y":2}})", R"({"a":{"x":1,"y":2},"b":3})",
                 R"({"a":{"x":5,"y":2},"b":3})");
    expectMerged(R"({"a":{"x":1,"y":2}})", R"({"a":{"x":1}})", R"({"a":{"x":4,"y":2}})",
                 R"({"a":{"x":4}})");
}

TEST(Merge, TakesWhatBothHaveChangedToTheSame) {
    expectMerged(R"({"a":1,"b":1})", R"({"a":2})", R"({"a":2})", R"({"a":2})");
    expectMerged("{}", R"({"a":{"b":[1]}})", R"({"a":{"b":[1]}})", R"({"a":{"b":[1]}})");
}

TEST(Merge, AKindIsPartOfAValue) {
    expectMerged(R"({"a":1})", R"({"a":1.0})", R"({"a":1})", R"({"a":1.0})");
}

TEST(Merge, ADictionaryThatOneSideRemovedKeepsWhatTheOtherAdded) {
    expectMerged(R"({"a":{"x":1}})", "{}", R"({"a":{"x":1,"y":2}})", R"({"a":{"y":2}})");
    expectMerged(R"({"a":{"x":1}})", "{}", R"({"a":{"x":1}})", "{}");
}

TEST(Merge, AnEmptyDictionaryIsNoValueBesideOneWithEntries) {
    expectMerged("{}", R"({"a":{}})", R"({"a":{"x":1}})", R"({"a":{"x":1}})");
    expectMerged(R"({"a":{"x":1}})", R"({"a":{}})", R"({"a":{"x":1}})", R"({"a":{}})");
    expectMerged(R"({"a":{}})", R"({"a":{}})", "{}", "{}");
    expectMerged(R"({"a":{"x":1,"y":1}})", R"({"a":{"x":1}})", R"({"a":{"y":1}})", "{}");
}

TEST(Merge, DifferentChangesOfOneValueAreAConflict) {
    expectConflict(R"({"a":{"b":1}})", R"({"a":{"b":2}})", R"({"a":{"b":3}})",
                   "a.b: base 1, ours 2, theirs 3");
    expectConflict("{}", R"({"a":2})", R"({"a":"2"})", "a: base not set, ours 2, theirs \"2\"");
}

TEST(Merge, AChangeAndARemovalAreAConflict) {
    expectConflict(R"({"a":1})", R"({"a":2})", "{}", "a: base 1, ours 2, theirs not set");
    expectConflict(R"({"a":{"b":1,"c":1}})", R"({"a":{"b":2}})", "{}",
                   "a.b: base 1, ours 2, theirs not set");
}

TEST(Merge, AnArrayIsOneValue) {
    expectConflict(R"({"a":[1]})", R"({"a":[1,2]})", R"({"a":[0,1]})",
                   "a: base [1], ours [1,2], theirs [0,1]");
}

TEST(Merge, ADictionaryAgainstAnotherValueIsAConflict) {
    expectConflict(R"({"a":{"b":1}})", R"({"a":{"b":2}})", R"({"a":7})",
                   R"(a: base {"b":1}, ours {"b":2}, theirs 7)");
    expectMerged(R"({"a":{"b":1}})", R"({"a":{"b":1}})", R"({"a":7})", R"({"a":7})");
}

TEST(Merge, AtConflictsTheOthersAreMergedAndASideDecidesWhenAsked) {
    const std::string base = R"({"a":1,"b":1,"c":1})";
    const std::string ours = R"({"a":2,"b":1,"c":4})";
    const std::string theirs = R"({"a":3,"b":5,"c":1})";
    EXPECT_EQ(merge(base, ours, theirs).output, "{\"a\":2,\"b\":5,\"c\":4}\n");
    const Outcome decided = merge(base, ours, theirs, {"--theirs"});
    EXPECT_EQ(decided.exitCode, 0);
    EXPECT_EQ(decided.output, "{\"a\":3,\"b\":5,\"c\":4}\n");
    EXPECT_EQ(decided.errors, "qrvsettings: conflict, a: base 1, ours 2, theirs 3\n");
    const Outcome ourOwn = merge(base, ours, theirs, {"--ours", "--quiet"});
    EXPECT_EQ(ourOwn.exitCode, 0);
    EXPECT_EQ(ourOwn.output, "{\"a\":2,\"b\":5,\"c\":4}\n");
    EXPECT_EQ(ourOwn.errors, "");
    EXPECT_EQ(merge(base, ours, theirs, {"--ours", "--theirs"}).exitCode, 2);
}

TEST(Merge, PrintsConflictsAsObjectsAndTheResultToTheOutputAlone) {
    const Outcome outcome = merge(R"({"a":1})", R"({"a":2})", "{}", {"--json"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "{\"keyPath\":\"a\",\"base\":1,\"ours\":2,\"theirs\":null}\n");
    EXPECT_EQ(merge(R"({"a":1})", R"({"a":1})", "{}", {"--json", "--output", "merged"}).output, "");
    EXPECT_EQ(contentsOf("merged"), "{}\n");
}

TEST(Merge, WithoutABaseThereAreOnlyAdditions) {
    const std::string merged = "{\"a\":1,\"b\":2}\n";
    EXPECT_EQ(merge("", R"({"a":1})", R"({"b":2})").output, merged);
    const Outcome nothing = run({"merge", "/dev/null", "ours", "theirs"});
    EXPECT_EQ(nothing.output, merged);
    EXPECT_EQ(nothing.errors, "");
    const Outcome missing = run({"merge", "nowhere", "ours", "theirs"});
    EXPECT_EQ(missing.output, merged);
    EXPECT_EQ(missing.errors, "qrvsettings: there is no base, nowhere\n");
}

TEST(Merge, WritesAPropertyListWhereOursIsOne) {
    const std::string one = propertyList("<key>a</key><integer>1</integer>");
    const Outcome outcome = merge(one, one, R"({"a":1,"b":2})");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, AllOf(HasSubstr("<plist"), HasSubstr("<key>b</key>")));
}

TEST(Merge, KeysThatNoKeyPathReachesAreMergedToo) {
    const Outcome outcome = merge(propertyList("<key>a.b</key><integer>1</integer>"),
                                  propertyList("<key>a.b</key><integer>1</integer>"),
                                  propertyList("<key>a.b</key><integer>2</integer>"));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, AllOf(HasSubstr("a.b"), HasSubstr("<integer>2</integer>")));
}

TEST(Merge, ReplacesTheOutputAndKeepsItsMode) {
    writeFile("ours", "{}");
    std::filesystem::permissions("ours", std::filesystem::perms{0640});
    const Outcome outcome = merge("{}", "{}", R"({"a":1})", {"--output", "ours"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(contentsOf("ours"), "{\"a\":1}\n");
    EXPECT_EQ(std::filesystem::status("ours").permissions(), std::filesystem::perms{0640});
}

TEST(Merge, NamesTheFileThatCannotBeMergedAndWritesNothing) {
    for (const std::string damaged : {"base", "ours", "theirs"}) {
        for (const std::string file : {"base", "ours", "theirs"}) writeFile(file, R"({"a":1})");
        for (const std::string contents : {"<plist>", "[1]", "a = 1;", "bplist00"}) {
            writeFile(damaged, contents);
            const Outcome outcome =
                run({"merge", "base", "ours", "theirs", "--output", "merged", "--theirs"});
            EXPECT_EQ(outcome.exitCode, 5) << damaged << contents;
            EXPECT_THAT(outcome.errors,
                        AllOf(HasSubstr("cannot be merged: "), HasSubstr(", " + damaged + "\n")));
            EXPECT_FALSE(std::filesystem::exists("merged"));
        }
    }
    const Outcome missing = run({"merge", "base", "nowhere", "theirs"});
    EXPECT_EQ(missing.exitCode, 5);
    EXPECT_EQ(missing.errors, "qrvsettings: cannot be read: No such file or directory, nowhere\n");
}

TEST(Merge, WhatBelongsToOneMachineStaysThatOfOurs) {
    const std::string base =
        R"({"Device":{"Device":"A","Model":"A"},"Sensors":{"Global":{"Fans":1}}})";
    const std::string ours =
        R"({"Device":{"Device":"B","Model":"A"},"Sensors":{"Global":{"Fans":2}},"a":1})";
    const std::string theirs =
        R"({"Device":{"Device":"C","Model":"C"},"Network":{"Menubar":{"Global":{"PrimaryInterface":"eth0"}}},"b":2})";
    const Outcome outcome = merge(base, ours, theirs);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.output,
              R"({"Device":{"Device":"B","Model":"A"},"Sensors":{"Global":{"Fans":2}},"a":1,"b":2})"
              "\n");
}

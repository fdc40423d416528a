// SPDX-License-Identifier: MIT
// The command `search`.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::writeSettings;

namespace {

void expectFound(const std::vector<std::string>& arguments, const std::string& output) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, output) << testing::PrintToString(arguments);
}

}  // namespace

TEST(Search, FindsKeyPathsAndValuesInEitherCase) {
    writeSettings(
        propertyList("<key>City</key><string>Ulm</string><key>Place</key><string>CITY hall</string>"
                     "<key>Other</key><true/>"));
    expectFound({"search", "cItY", "--layer", "stored"}, "City\t\"Ulm\"\nPlace\t\"CITY hall\"\n");
    expectFound({"search", "city", "--keys", "--layer", "stored"}, "City\t\"Ulm\"\n");
    expectFound({"search", "city", "--values", "--layer", "stored"}, "Place\t\"CITY hall\"\n");
}

TEST(Search, FindsDefaultsAndWhatIsStoredOverThem) {
    expectFound({"search", "theme.d"}, "Menu.Theme.Dark\t\"indigo\"\n");
    ASSERT_EQ(run({"set", "Menu.Theme.Dark", "red"}).exitCode, 0);
    expectFound({"search", "theme.d"}, "Menu.Theme.Dark\t\"red\"\n");
    expectFound({"search", "indigo"}, "Menu.Theme.Light\t\"indigo\"\n");
    expectFound({"search", "indigo", "--layer", "default"},
                "Menu.Theme.Dark\t\"indigo\"\nMenu.Theme.Light\t\"indigo\"\n");
}

TEST(Search, LooksIntoArraysAndPrintsValuesAsTheyAreRead) {
    writeSettings(
        propertyList("<key>a</key><array><dict><key>deep</key><array><string>say \"x\"</string>"
                     "</array></dict></array><key>t</key><date>2020-01-02T03:04:05Z</date>"));
    expectFound({"search", "say \"X", "--layer", "stored"},
                "a\t[{\"deep\":[\"say \\\"x\\\"\"]}]\n");
    expectFound({"search", "deep", "--values", "--json", "--layer", "stored"},
                "{\"a\":[{\"deep\":[\"say \\\"x\\\"\"]}]}\n");
    expectFound({"search", "2020-01", "--layer", "stored"},
                "t\t{\"$date\":\"2020-01-02T03:04:05Z\"}\n");
}

TEST(Search, LooksIntoAProfile) {
    ASSERT_EQ(run({"set", "a", "needle", "--profile", "p"}).exitCode, 0);
    expectFound({"search", "needle", "--profile", "p"}, "a\t\"needle\"\n");
    EXPECT_EQ(run({"search", "needle", "--profile", "q"}).exitCode, 1);
}

TEST(Search, SaysWhenNothingIsFound) {
    const Outcome outcome = run({"search", "frobnicate"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors, "qrvsettings: not found, frobnicate\n");
    EXPECT_EQ(run({"search", "a\xff"}).exitCode, 5);
}

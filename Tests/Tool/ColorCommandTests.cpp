// SPDX-License-Identifier: MIT
// The command `color`: reading, writing and removing colours.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tool/ToolSupport.h"

using testing::HasSubstr;
using ToolSupport::Outcome;
using ToolSupport::propertyList;
using ToolSupport::run;
using ToolSupport::writeSettings;

namespace {

constexpr const char* keyPath = "Network.Menubar.Mode.Status.Connected.Color";

std::string colorSet(std::vector<std::string> color) {
    color.insert(color.begin(), {"color", "set", "A.Color"});
    const Outcome outcome = run(color);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
    return run({"get", "A.Color"}).output;
}

void expectRefused(std::vector<std::string> color, const std::string& message) {
    color.insert(color.begin(), {"color", "set", "A.Color"});
    const Outcome outcome = run(color);
    EXPECT_EQ(outcome.exitCode, 5) << testing::PrintToString(color);
    EXPECT_EQ(outcome.errors, "qrvsettings: " + message + "\n");
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}

}  // namespace

TEST(ColorGet, PrintsTheDefaultColour) {
    const Outcome outcome = run({"color", "get", keyPath});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "0.384 0.729 0.274 1\n");
    EXPECT_EQ(outcome.errors, "");
}

TEST(ColorGet, PrintsTheStoredColourInTheDigitsThatWereStored) {
    writeSettings(propertyList("<key>A</key><string>2 -1 x 0.10</string>"));
    EXPECT_EQ(run({"color", "get", "A"}).output, "2 -1 0 0.1\n");
}

TEST(ColorGet, PrintsHexadecimalDigitsWhenAskedForThem) {
    writeSettings(
        propertyList("<key>A</key><string>1 0.5 0 0.25</string>"
                     "<key>B</key><string>2 -1 1e99 0.003</string>"));
    EXPECT_EQ(run({"color", "get", "A", "--hex"}).output, "#ff800040\n");
    EXPECT_EQ(run({"color", "get", "B", "--hex"}).output, "#ff00ff01\n") << "cut to the range";
}

TEST(ColorGet, SaysWhenNothingIsSet) {
    const Outcome outcome = run({"color", "get", "A.Color"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, "qrvsettings: not set, A.Color\n");
    EXPECT_EQ(
        run({"color", "get", std::string(keyPath) + "s"}).errors,
        std::string("qrvsettings: not set, ") + keyPath + "s; did you mean " + keyPath + "?\n");
}

TEST(ColorGet, SaysWhenTheValueIsNoColour) {
    const Outcome outcome = run({"color", "get", "CPU.Menubar.Enabled"});
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_EQ(outcome.errors,
              "qrvsettings: not a colour, but a boolean: true, CPU.Menubar.Enabled\n");
    writeSettings(propertyList("<key>A</key><string>1 1 1</string>"));
    EXPECT_EQ(run({"color", "get", "A"}).exitCode, 5);
}

TEST(ColorGet, SaysWhenTheDefaultStandsInForWhatIsStored) {
    ASSERT_EQ(run({"set", "--any-kind", keyPath, "0 0 0"}).exitCode, 0);
    const Outcome outcome = run({"color", "get", keyPath});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "0.384 0.729 0.274 1\n");
    EXPECT_THAT(outcome.errors, HasSubstr(std::string("default, ") + keyPath));
}

TEST(ColorSet, StoresFourNumbers) {
    EXPECT_EQ(colorSet({"1", "0.321", ".5", "0.25"}), "1 0.321 0.5 0.25\n");
    EXPECT_EQ(colorSet({"+1", "1e-1", "0", "0.0"}), "1 0.1 0 0\n");
}

TEST(ColorSet, TheAlphaMayBeLeftOut) {
    EXPECT_EQ(colorSet({"0", "0", "1"}), "0 0 1 1\n");
    EXPECT_EQ(colorSet({"#0000ff"}), "0 0 1 1\n");
}

TEST(ColorSet, StoresHexadecimalDigits) {
    EXPECT_EQ(colorSet({"#Ff000080"}), "1 0 0 0.5019607843137255\n");
    EXPECT_EQ(run({"color", "get", "A.Color", "--hex"}).output, "#ff000080\n");
}

TEST(ColorSet, EveryByteComesBack) {
    for (const char* color : {"#00017f80", "#fefdfc03", "#336699cc"}) {
        colorSet({color});
        EXPECT_EQ(run({"color", "get", "A.Color", "--hex"}).output, color + std::string("\n"));
    }
}

TEST(ColorSet, StoresUnusualNumbersAndSaysSo) {
    const Outcome outcome = run({"color", "set", "A.Color", "255", "-1", "0"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.errors, HasSubstr("from 0 to 1, A.Color"));
    EXPECT_EQ(run({"get", "A.Color"}).output, "255 -1 0 1\n");
}

TEST(ColorSet, RefusesWhatIsNoColour) {
    expectRefused({"red"}, "neither R G B [A] nor #rrggbb[aa]: red");
    expectRefused({"1", "1"}, "neither R G B [A] nor #rrggbb[aa]: 1 1");
    expectRefused({"1", "1", "1", "1", "1"}, "neither R G B [A] nor #rrggbb[aa]: 1 1 1 1 1");
    expectRefused({"#12345"}, "neither R G B [A] nor #rrggbb[aa]: #12345");
    expectRefused({"#12345g"}, "neither R G B [A] nor #rrggbb[aa]: #12345g");
    expectRefused({"#"}, "neither R G B [A] nor #rrggbb[aa]: #");
    expectRefused({"1", "x", "1"}, "not a number: x");
    expectRefused({"1", "inf", "1"}, "not a number: inf");
    expectRefused({"1", "-nan", "1"}, "not a number: -nan");
    expectRefused({"1", "0x1", "1"}, "not a number: 0x1");
    expectRefused({"1", "1e999", "1"}, "not a number: 1e999");
    expectRefused({"1", "", "1"}, "not a number: ");
    expectRefused({"1", "+-1", "1"}, "not a number: +-1");
}

TEST(ColorSet, TheDefaultColourIsNotStored) {
    ASSERT_EQ(run({"color", "set", keyPath, "0", "0", "0"}).exitCode, 0);
    ASSERT_EQ(run({"color", "set", keyPath, "0.384", "0.729", "0.274", "1"}).exitCode, 0);
    EXPECT_EQ(run({"get", keyPath, "--layer", "stored"}).exitCode, 1);
    EXPECT_EQ(run({"color", "get", keyPath}).output, "0.384 0.729 0.274 1\n");
}

TEST(ColorSet, NamesTheStoredValueInTheWay) {
    writeSettings(propertyList("<key>A</key><integer>1</integer>"));
    const Outcome outcome = run({"color", "set", "A.Color", "#000000"});
    EXPECT_EQ(outcome.exitCode, 5);
    EXPECT_EQ(outcome.errors,
              "qrvsettings: a stored value is in the way: A is an integer, A.Color\n");
}

TEST(ColorUnset, BringsTheDefaultBack) {
    ASSERT_EQ(run({"color", "set", keyPath, "#000000"}).exitCode, 0);
    EXPECT_EQ(run({"color", "get", keyPath}).output, "0 0 0 1\n");
    EXPECT_EQ(run({"color", "unset", keyPath}).exitCode, 0);
    EXPECT_EQ(run({"color", "get", keyPath}).output, "0.384 0.729 0.274 1\n");
    EXPECT_EQ(run({"get", keyPath, "--layer", "stored"}).exitCode, 1);
    EXPECT_EQ(ToolSupport::storedSettings(), "{}") << "no empty levels";
}

TEST(ColorUnset, SaysWhenNothingIsStored) {
    const Outcome outcome = run({"color", "unset", keyPath});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.errors, std::string("qrvsettings: not set, ") + keyPath + "\n");
    EXPECT_EQ(
        run({"color", "unset", std::string(keyPath) + "s"}).errors,
        std::string("qrvsettings: not set, ") + keyPath + "s; did you mean " + keyPath + "?\n");
    EXPECT_FALSE(std::filesystem::exists(ToolSupport::configurationFolder()));
}

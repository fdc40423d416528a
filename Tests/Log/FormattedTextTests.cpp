// SPDX-License-Identifier: MIT
// Formats of log texts.

#include <gtest/gtest.h>

#include <vector>

#include "Platform/System/System.h"

using namespace QRVPlatform;

namespace {

std::string format(std::string_view text, const std::vector<PropertyListValue>& arguments = {}) {
    return formattedText(text, arguments);
}

}  // namespace

TEST(FormattedText, ReplacesEachPlaceByTheNextArgument) {
    EXPECT_EQ(format("%@ and %@", {"one", 2}), "one and 2");
    EXPECT_EQ(format("%@%@", {"a", "b"}), "ab");
}

TEST(FormattedText, GivesTheDescriptionOfAnyValue) {
    const PropertyListValue tree = NSDictionary{{"Items", NSArray{"a", 1.5}}};
    EXPECT_EQ(format("%@", {tree}), description(tree));
}

TEST(FormattedText, NullAndMissingArgumentsAreShownAsNull) {
    EXPECT_EQ(format("%@", {nullptr}), "(null)");
    EXPECT_EQ(format("%@ %@", {1}), "1 (null)");
    EXPECT_EQ(format("%@"), "(null)");
}

TEST(FormattedText, ArgumentsTooManyAreIgnored) {
    EXPECT_EQ(format("%@", {1, 2}), "1");
}

TEST(FormattedText, ADoublePercentSignIsOne) {
    EXPECT_EQ(format("100%%"), "100%");
    EXPECT_EQ(format("%%@", {1}), "%@");
    EXPECT_EQ(format("%%%@", {1}), "%1");
}

TEST(FormattedText, EverythingElseStays) {
    EXPECT_EQ(format("%d %s %", {1}), "%d %s %");
    EXPECT_EQ(format(""), "");
    EXPECT_EQ(format("@%"), "@%");
    EXPECT_EQ(format("ä\n"), "ä\n");
}

TEST(FormattedText, ArgumentsAreNotFormatsThemselves) {
    EXPECT_EQ(format("%@ %@", {"%@ %%", "x"}), "%@ %% x");
}

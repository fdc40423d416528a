// SPDX-License-Identifier: MIT
// Times as people write them.
#include "Text/PastTime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

#include "Text/ScalarText.h"

namespace {

/// A zone an hour before UTC in winter and two in summer, which no file of the system has to
/// describe.
void useZoneWithSummerTime() {
    setenv("TZ", "ZONE-1SUMMER,M3.5.0,M10.5.0/3", 1);
    tzset();
}

const NSDate noon = *Tool::dateFromText("2026-11-22T11:00:00Z");

std::string utc(const std::string& text, NSDate now = noon) {
    useZoneWithSummerTime();
    const auto time = Tool::pastTimeFromText(text, now);
    return time ? Tool::dateText(*time) : "none";
}

}  // namespace

TEST(PastTime, IsATimeAgo) {
    EXPECT_EQ(utc("10 minutes ago"), "2026-11-22T10:50:00Z");
    EXPECT_EQ(utc("1 hour ago"), "2026-11-22T10:00:00Z");
    EXPECT_EQ(utc("2h"), "2026-11-22T09:00:00Z");
    EXPECT_EQ(utc("90s"), "2026-11-22T10:58:30Z");
    EXPECT_EQ(utc("3 days"), "2026-11-19T11:00:00Z");
    EXPECT_EQ(utc("1w ago"), "2026-11-15T11:00:00Z");
    EXPECT_EQ(utc(" 5M "), "2026-11-22T10:55:00Z");
}

TEST(PastTime, IsADayOfTheUser) {
    EXPECT_EQ(utc("today"), "2026-11-21T23:00:00Z");
    EXPECT_EQ(utc("yesterday"), "2026-11-20T23:00:00Z");
    EXPECT_EQ(utc("2026-11-20"), "2026-11-19T23:00:00Z");
    EXPECT_EQ(utc("2026-07-20"), "2026-07-19T22:00:00Z");
    // The clocks went back on 25 October: that day had 25 hours.
    EXPECT_EQ(utc("yesterday", *Tool::dateFromText("2026-10-26T11:00:00Z")),
              "2026-10-24T22:00:00Z");
}

TEST(PastTime, IsADayAndATime) {
    EXPECT_EQ(utc("2026-11-22 09:30"), "2026-11-22T08:30:00Z");
    EXPECT_EQ(utc("2026-11-22 09:30:05"), "2026-11-22T08:30:05Z");
    EXPECT_EQ(utc("2026-11-22T09:30:05Z"), "2026-11-22T09:30:05Z");
    EXPECT_EQ(utc("2026-11-22T09:30Z"), "2026-11-22T09:30:00Z");
    EXPECT_EQ(utc("09:30"), "2026-11-22T08:30:00Z");
}

TEST(PastTime, NothingElseIsATime) {
    for (const std::string text :
         {"", "10", "minutes", "10 minute s", "-2h", "2.5h", "2 fortnights", "tomorrow",
          "2026-13-01", "2026-11-22 25:00", "2026-11-22 09", "9:30", "99999999999h", "ago", "Z"}) {
        EXPECT_EQ(utc(text), "none") << text;
        EXPECT_NE(Tool::objectionToPastTime(text), "") << text;
    }
    EXPECT_EQ(Tool::objectionToPastTime("2h"), "");
}

TEST(PastTime, IsShownInTheZoneOfTheUser) {
    useZoneWithSummerTime();
    EXPECT_EQ(Tool::localTimeText(noon), "2026-11-22 12:00:00");
    EXPECT_EQ(Tool::localTimeText(NSDate(noon.timeIntervalSinceReferenceDate() + 0.9)),
              "2026-11-22 12:00:00");
}

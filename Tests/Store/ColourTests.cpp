// SPDX-License-Identifier: MIT
// Colours as text in the settings and as objects in the cache.
#include <gtest/gtest.h>

#include <clocale>
#include <limits>

#include "Support/StoreSupport.h"

using StoreSupport::cached;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::setDefaults;
using StoreSupport::writeSettings;

namespace {

constexpr const char* keyPath = "CPU.Color";
const NSColor white = NSColor::colorWithSRGBRed(1, 1, 1, 1);

NSDictionary treeWith(const PropertyListValue& color) {
    return {{"CPU", NSDictionary{{"Color", color}}}};
}

NSColor colorOfText(const char* text) {
    writeSettings(treeWith(text));
    const PropertyListValue color = QRVSettingsColorForKeyPath(keyPath);
    EXPECT_TRUE(color.isColor()) << text;
    return color.color();
}

void expectTheDefaultFor(const PropertyListValue& stored) {
    writeSettings(treeWith(stored));
    setDefaults(treeWith("1 1 1 1"));
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), white) << stored;
}

std::string textWritten(const NSColor& color) {
    QRVSettingsSetColorForKeyPath(color, keyPath);
    return QRVSettingsStoredObjectForKeyPath(keyPath).stringValue();
}

/// From now on the cache is disabled, but there is one.
void disableCache() {
    QRVSettings::sharedSettings().setDisableCache(true);
    QRVSettings::sharedSettings().setCache(NSMutableDictionary());
}

}  // namespace

TEST(ReadingAColour, GivesTheComponentsInThePrecisionOfAFloat) {
    const NSColor color = colorOfText("1 0.321 0.341 1");
    EXPECT_EQ(color, NSColor::colorWithSRGBRed(1, static_cast<double>(0.321F),
                                               static_cast<double>(0.341F), 1));
    EXPECT_NE(color.greenComponent, 0.321);
    EXPECT_NEAR(color.greenComponent, 0.321, 1e-7);
    EXPECT_NEAR(color.blueComponent, 0.341, 1e-7);
}

TEST(ReadingAColour, ClampsNothingAndCountsLettersAsZero) {
    EXPECT_EQ(colorOfText("2 -1 x 1"), NSColor::colorWithSRGBRed(2, -1, 0, 1));
}

TEST(ReadingAColour, TakesTheNumberThatAPieceBeginsWith) {
    EXPECT_EQ(colorOfText("0.5abc +0.25 \t1 1e-1x"),
              NSColor::colorWithSRGBRed(0.5, 0.25, 1, static_cast<double>(0.1F)));
}

TEST(ReadingAColour, AcceptsNeitherHexadecimalNorNamedNumbers) {
    EXPECT_EQ(colorOfText("0x10 inf nan -infinity"), NSColor::colorWithSRGBRed(0, 0, 0, 0));
}

TEST(ReadingAColour, CountsWhatIsLeftOfAnEmptyPieceAsZero) {
    EXPECT_EQ(colorOfText(" 1 1 1"), NSColor::colorWithSRGBRed(0, 1, 1, 1))
        << "the piece before the first space is empty";
}

TEST(ReadingAColour, IgnoresWhatHasNotFourPieces) {
    for (const char* text : {"1 0.3 0.3", "1", "", "1  0.3 0.3 1", "1 0.3 0.3 1 ", " 1 0.3 0.3 1",
                             "1 0.3 0.3 1 1", "1,0.3,0.3,1"}) {
        QRVSettings::sharedSettings().setStorageCache(nullptr);
        QRVSettings::sharedSettings().cache().removeAllObjects();
        expectTheDefaultFor(text);
    }
}

TEST(ReadingAColour, SplitsAtSpacesOnly) {
    EXPECT_EQ(colorOfText("1\t2 0 0 1"), NSColor::colorWithSRGBRed(1, 0, 0, 1));
}

TEST(ReadingAColour, CountsAValueThatIsNoStringAsAbsent) {
    const std::vector<PropertyListValue> values = {1, true, 0.5, NSArray{1, 1, 1, 1},
                                                   NSDictionary{{"a", 1}}};
    for (const PropertyListValue& value : values) {
        QRVSettings::sharedSettings().setStorageCache(nullptr);
        QRVSettings::sharedSettings().cache().removeAllObjects();
        expectTheDefaultFor(value);
        setDefaults(treeWith(value));
        QRVSettings::sharedSettings().cache().removeAllObjects();
        EXPECT_TRUE(QRVSettingsColorForKeyPath(keyPath).isNull());
    }
}

TEST(ReadingAColour, OfANullKeyPathIsNull) {
    EXPECT_TRUE(QRVSettingsColorForKeyPath(nullptr).isNull());
    EXPECT_EQ(QRVSettings::sharedSettings().cache().count(), 0U);
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull()) << "nothing was read";
}

TEST(ReadingAColour, WithoutAnyIsNullFromThenOn) {
    EXPECT_TRUE(QRVSettingsColorForKeyPath(keyPath).isNull());
    EXPECT_TRUE(cached(keyPath).isNullMarker());
    QRVSettings::sharedSettings().setStorageCache(treeWith("1 1 1 1").mutableCopy());
    EXPECT_TRUE(QRVSettingsColorForKeyPath(keyPath).isNull()) << "storage is not asked again";
    QRVSettingsClearCacheForKeyPath(keyPath);
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), white);
}

TEST(ReadingAColour, WithAMalformedDefaultIsNull) {
    writeSettings(treeWith("malformed"));
    setDefaults(treeWith("1 1 1"));
    EXPECT_TRUE(QRVSettingsColorForKeyPath(keyPath).isNull());
    EXPECT_TRUE(cached(keyPath).isNullMarker());
}

TEST(ReadingAColour, CachesTheColourUnderItsKeyPath) {
    writeSettings(treeWith("1 1 1 1"));
    const PropertyListValue color = QRVSettingsColorForKeyPath(keyPath);
    EXPECT_TRUE(cached(keyPath).isIdenticalTo(color));
    EXPECT_TRUE(QRVSettingsColorForKeyPath(keyPath).isIdenticalTo(color));
    EXPECT_TRUE(QRVSettingsObjectForKeyPath(keyPath).isIdenticalTo(color))
        << "another read is given the same entry";
}

TEST(ReadingAColour, ReturnsACachedValueOfAnotherKindAsItIs) {
    writeSettings(treeWith("1 1 1 1"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath(keyPath), "1 1 1 1");
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), "1 1 1 1");
}

TEST(ReadingAColour, WithTheCacheDisabledCachesTheDefaultOnly) {
    writeSettings(treeWith("1 1 1 1"));
    setDefaults({{"Default", NSDictionary{{"Color", "0 0 0 0"}}}});
    disableCache();
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), white);
    EXPECT_TRUE(cached(keyPath).isNull());
    EXPECT_EQ(QRVSettingsColorForKeyPath("Default.Color"), NSColor::colorWithSRGBRed(0, 0, 0, 0));
    EXPECT_TRUE(cached("Default.Color").isColor());
    EXPECT_TRUE(QRVSettingsColorForKeyPath("Missing.Color").isNull());
    EXPECT_TRUE(cached("Missing.Color").isNullMarker());
}

TEST(ReadingAColour, WithTheCacheDisabledIsAnsweredByTheCacheAllTheSame) {
    writeSettings(treeWith("1 1 1 1"));
    disableCache();
    QRVSettings::sharedSettings().cache().setObjectForKey("cached", keyPath);
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), "cached");
}

TEST(ReadingAColour, WithoutACacheStillReads) {
    writeSettings(treeWith("1 1 1 1"));
    setDefaults({{"Default", NSDictionary{{"Color", "0 0 0 0"}}}});
    QRVSettings::sharedSettings().setDisableCache(true);
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), white);
    EXPECT_TRUE(QRVSettingsColorForKeyPath("Default.Color").isColor());
    EXPECT_TRUE(QRVSettingsColorForKeyPath("Missing.Color").isNull());
}

TEST(ReadingAColour, LogsNothing) {
    const StoreSupport::LogMessages messages;
    const StoreSupport::SystemLogLines lines;
    writeSettings(treeWith("malformed"));
    QRVSettingsColorForKeyPath(keyPath);
    QRVSettingsColorForKeyPath("Missing.Color");
    EXPECT_TRUE(messages.messages().empty());
    EXPECT_TRUE(lines.lines().empty());
}

TEST(WritingAColour, MakesTextOfTheShortestNumbers) {
    EXPECT_EQ(textWritten({1, 0.321, 0.341, 1}), "1 0.321 0.341 1");
    EXPECT_EQ(textWritten({0.1, 1.0 / 3, 0, -2.5}), "0.1 0.3333333333333333 0 -2.5");
    EXPECT_EQ(textWritten({static_cast<double>(0.321F), 0, 0, 1}), "0.32100000977516174 0 0 1");
}

TEST(WritingAColour, ReachesTheFileAndForgetsTheCachedText) {
    QRVSettingsSetColorForKeyPath(NSColor{0.25, 0.5, 0.75, 1}, keyPath);
    EXPECT_TRUE(cached(keyPath).isNull());
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), (NSColor{0.25, 0.5, 0.75, 1}));
    EXPECT_TRUE(cached(keyPath).isColor());
    finishSaves();
    EXPECT_EQ(fileTree(), treeWith("0.25 0.5 0.75 1"));
}

TEST(WritingAColour, ReplacesTheColourCachedBefore) {
    writeSettings(treeWith("1 1 1 1"));
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), white);
    QRVSettingsSetColorForKeyPath(NSColor{0, 0, 0, 1}, keyPath);
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), (NSColor{0, 0, 0, 1}));
}

TEST(WritingAColour, NullRemovesItAndTheDefaultHoldsAgain) {
    writeSettings(treeWith("0 0 0 1"));
    setDefaults(treeWith("1 1 1 1"));
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), (NSColor{0, 0, 0, 1}));
    QRVSettingsSetColorForKeyPath(nullptr, keyPath);
    EXPECT_TRUE(cached(keyPath).isNull());
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), white);
    finishSaves();
    EXPECT_EQ(fileTree(), NSDictionary({{"CPU", NSDictionary{}}}));
}

TEST(WritingAColour, TheTextOfTheDefaultIsNotStored) {
    setDefaults(treeWith("1 0.321 0.341 1"));
    QRVSettingsSetColorForKeyPath(NSColor{1, 0.321, 0.341, 1}, keyPath);
    EXPECT_TRUE(QRVSettingsStoredObjectForKeyPath(keyPath).isNull());
    EXPECT_TRUE(cached(keyPath).isNull());
}

TEST(WritingAColour, ATextThatDiffersInADigitIsStored) {
    setDefaults(treeWith("1 0.3210 0.341 1"));
    QRVSettingsSetColorForKeyPath(NSColor{1, 0.321, 0.341, 1}, keyPath);
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath(keyPath), "1 0.321 0.341 1");
}

// The one comparison that the colour makes itself takes the whole key path for a single key.
TEST(WritingAColour, ADefaultUnderTheWholeKeyPathAsOneKeyCounts) {
    setDefaults({{keyPath, "1 1 1 1"}});
    writeSettings(treeWith("0 0 0 1"));
    QRVSettingsSetColorForKeyPath(white, keyPath);
    EXPECT_TRUE(QRVSettingsStoredObjectForKeyPath(keyPath).isNull());
    QRVSettingsSetColorForKeyPath(NSColor{0, 0, 1, 1}, keyPath);
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath(keyPath), "0 0 1 1");
}

TEST(WritingAColour, RefusesWhatIsNoColour) {
    EXPECT_THROW(QRVSettingsSetColorForKeyPath("1 1 1 1", keyPath), NSInvalidArgumentException);
    EXPECT_THROW(QRVSettingsSetColorForKeyPath(NSNull{}, keyPath), NSInvalidArgumentException);
    EXPECT_THROW(QRVSettingsSetColorForKeyPath(white, nullptr), NSInvalidArgumentException);
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull() ||
                QRVSettings::sharedSettings().storageCache().count() == 0);
}

TEST(Colours, DoNotDependOnTheLocaleOfTheProgram) {
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(textWritten({0.25, 1000.5, 0, 1}), "0.25 1000.5 0 1");
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), (NSColor{0.25, 1000.5, 0, 1}));
    QRVSettingsSetObjectForKeyPath("0,5 0.5 0 1", keyPath);
    QRVSettingsClearCacheForKeyPath(keyPath);
    EXPECT_EQ(QRVSettingsColorForKeyPath(keyPath), (NSColor{0, 0.5, 0, 1}));
}

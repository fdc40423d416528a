// SPDX-License-Identifier: MIT
// The words of a filter.
#include "Rows/RowFilter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Tool;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

SettingRow rowOf(const std::string& keyPath, const PropertyListValue& effective = nullptr) {
    SettingRow row;
    row.keyPath = keyPath;
    row.effective = effective;
    return row;
}

bool lets(const std::string& filter, const SettingRow& row, RowMarks marks = {}) {
    return RowFilter(filter).matches(row, searchableText(row), marks);
}

KnownSetting known(const std::string& sentence, QRVSettingScope scope) {
    KnownSetting setting;
    setting.sentence = sentence;
    setting.scope = scope;
    return setting;
}

const SettingRow width = rowOf("Network.Menubar.Width", 40);

}  // namespace

TEST(RowFilter, WithoutWordsLetsEverythingThrough) {
    for (const char* const text : {"", " ", "\t  \n", "\"", "\"\"", "-\"\""}) {
        EXPECT_TRUE(RowFilter(text).isEmpty()) << text;
        EXPECT_TRUE(lets(text, width)) << text;
        EXPECT_EQ(RowFilter(text).text(), text);
    }
}

TEST(RowFilter, FindsAWordAnywhereInTheKeyPath) {
    EXPECT_TRUE(lets("work.Menu", width));
    EXPECT_TRUE(lets("NETWORK", width));
    EXPECT_FALSE(lets("networks", width));
}

TEST(RowFilter, FindsAWordInTheSentenceTheValueAndTheDefault) {
    const KnownSetting setting = known("How wide the graph is.", QRVSettingScope::Application);
    SettingRow row = width;
    row.known = &setting;
    row.byDefault = NSArray{"thirty"};
    EXPECT_TRUE(lets("graph", row));
    EXPECT_TRUE(lets("40", row));
    EXPECT_TRUE(lets("THIRTY", row));
    EXPECT_FALSE(lets("fifty", row));
}

TEST(RowFilter, FindsNoWordThatLiesInTwoTexts) {
    SettingRow row = rowOf("A.B", "cd");
    EXPECT_FALSE(lets("Bc", row));
    EXPECT_FALSE(lets("\"B cd\"", row));
}

TEST(RowFilter, NeedsAllWords) {
    EXPECT_TRUE(lets("width network", width));
    EXPECT_TRUE(lets("  width\tnetwork ", width));
    EXPECT_FALSE(lets("width disks", width));
}

TEST(RowFilter, LeavesOutWhatFollowsAMinus) {
    EXPECT_TRUE(lets("-disks", width));
    EXPECT_FALSE(lets("-network", width));
    EXPECT_FALSE(lets("width -network", width));
    EXPECT_TRUE(lets("-is:modified", width));
    EXPECT_FALSE(lets("-\"network.menubar\"", width));
}

TEST(RowFilter, TakesAMinusThatNothingFollowsForText) {
    EXPECT_TRUE(lets("-", rowOf("A-B")));
    EXPECT_FALSE(lets("-", rowOf("A.B")));
    EXPECT_TRUE(lets("- B", rowOf("A-B")));
}

TEST(RowFilter, KeepsBlanksBetweenQuotationMarks) {
    const SettingRow row = rowOf("A", "two words");
    EXPECT_TRUE(lets("\"two words\"", row));
    EXPECT_FALSE(lets("\"words two\"", row));
    EXPECT_TRUE(lets("words two", row));
    EXPECT_TRUE(lets("\"two wor", row));
    EXPECT_FALSE(lets("\"two words\"x", row));
}

TEST(RowFilter, TakesWordsBetweenQuotationMarksForText) {
    EXPECT_TRUE(lets("\"is:modified\"", rowOf("A", "is:modified")));
    EXPECT_FALSE(lets("\"is:modified\"", rowOf("A")));
    EXPECT_THAT(RowFilter("\"is:modifed\"").faults(), IsEmpty());
}

TEST(RowFilter, DoesNotDistinguishCapitalAndSmallLetters) {
    EXPECT_TRUE(lets("\u00e4\u00f6\u00fc", rowOf("A", "\u00c4\u00d6\u00dc")));
    EXPECT_TRUE(lets("\u00c4\u00d6\u00dc", rowOf("A", "\u00e4\u00f6\u00fc")));
    EXPECT_TRUE(lets("\u00de", rowOf("A", "\u00fe")));
    EXPECT_FALSE(lets("\u00d7", rowOf("A", "\u00f7"))) << "signs have no case";
    EXPECT_TRUE(lets("\u017e\u0416", rowOf("A", "\u017e\u0416")));
    EXPECT_TRUE(lets("IS:Locked -Kind:REAL", [] {
        SettingRow row = rowOf("A", 1);
        row.isLocked = true;
        return row;
    }()));
}

TEST(RowFilter, IsModified) {
    SettingRow row = width;
    EXPECT_FALSE(lets("is:modified", row));
    row.isModified = true;
    EXPECT_TRUE(lets("is:modified", row));
}

TEST(RowFilter, IsPendingAndIsLiveAreMarksOfTheCaller) {
    EXPECT_TRUE(lets("is:pending", width, {.isPending = true}));
    EXPECT_FALSE(lets("is:pending", width, {.isLive = true}));
    EXPECT_TRUE(lets("is:live", width, {.isLive = true}));
    EXPECT_FALSE(lets("is:live", width, {.isPending = true}));
    EXPECT_TRUE(RowFilter("a -is:live").looksAtMarks());
    EXPECT_FALSE(RowFilter("live is:known").looksAtMarks());
}

TEST(RowFilter, IsRecordAsksForRecords) {
    SettingRow row = width;
    EXPECT_FALSE(lets("is:record", row));
    row.isRecord = true;
    EXPECT_TRUE(lets("is:record", row));
    EXPECT_TRUE(RowFilter("is:record").asksForRecords());
    EXPECT_TRUE(RowFilter("a scope:record").asksForRecords());
    EXPECT_FALSE(RowFilter("-is:record").asksForRecords());
    EXPECT_FALSE(RowFilter("record").asksForRecords());
}

TEST(RowFilter, IsLocked) {
    SettingRow row = width;
    EXPECT_FALSE(lets("is:locked", row));
    row.isLocked = true;
    EXPECT_TRUE(lets("is:locked", row));
}

TEST(RowFilter, IsKnown) {
    const KnownSetting setting;
    SettingRow row = width;
    EXPECT_FALSE(lets("is:known", row));
    row.known = &setting;
    EXPECT_TRUE(lets("is:known", row));
}

TEST(RowFilter, KindIsThatOfTheEffectiveValue) {
    const std::vector<std::pair<std::string, PropertyListValue>> kinds = {
        {"boolean", true},       {"integer", 1},
        {"real", 1.0},           {"string", "text"},
        {"date", NSDate(1)},     {"data", NSData("a")},
        {"array", NSArray{"a"}}, {"dictionary", NSDictionary{}}};
    for (const auto& [word, value] : kinds)
        for (const auto& [other, valueOfOther] : kinds)
            EXPECT_EQ(lets("kind:" + word, rowOf("A", valueOfOther)), word == other)
                << word << other;
    EXPECT_FALSE(lets("kind:integer", rowOf("A")));
}

TEST(RowFilter, KindColorIsTextOfAColourAlone) {
    EXPECT_TRUE(lets("kind:color", rowOf("CPU.Color", "1 0 0 1")));
    EXPECT_FALSE(lets("kind:string", rowOf("CPU.Color", "1 0 0 1")));
    EXPECT_FALSE(lets("kind:color", rowOf("CPU.Color", "red")));
    EXPECT_FALSE(lets("kind:color", rowOf("CPU.Colors", "1 0 0 1")));
    KnownSetting setting;
    setting.kind = PropertyListValue::Kind::Color;
    SettingRow row = rowOf("CPU.Tint", "1 0 0 1");
    row.known = &setting;
    EXPECT_TRUE(lets("kind:color", row));
    setting.kind = PropertyListValue::Kind::String;
    row.keyPath = "CPU.Color";
    EXPECT_FALSE(lets("kind:color", row));
}

TEST(RowFilter, LayerIsTheOneThatAnswers) {
    SettingRow row = width;
    for (const auto layer : {AnsweringLayer::None, AnsweringLayer::Default, AnsweringLayer::Site,
                             AnsweringLayer::Stored, AnsweringLayer::Profile}) {
        row.layer = layer;
        for (const std::string word : {"none", "default", "site", "stored", "profile"})
            EXPECT_EQ(lets("layer:" + word, row), word == layerWord(layer)) << word;
    }
}

TEST(RowFilter, ScopeIsThatOfTheSetting) {
    EXPECT_TRUE(lets("scope:profile", rowOf("CPU.Menubar.Enabled")));
    EXPECT_TRUE(lets("scope:profile", rowOf("Profiles.Settings.work.CPU.Menubar.Enabled")));
    EXPECT_TRUE(lets("scope:application", rowOf("Own.Setting")));
    EXPECT_TRUE(lets("scope:record", rowOf("Device.Device")));
    EXPECT_FALSE(lets("scope:application", rowOf("Device.Device")));
    const KnownSetting setting = known("", QRVSettingScope::Profile);
    SettingRow row = rowOf("Own.Setting");
    row.known = &setting;
    EXPECT_TRUE(lets("scope:profile", row));
}

TEST(RowFilter, SaysWhatIsWrongWithAWordAndThenMatchesNothing) {
    for (const char* const text : {"is:modifed", "-is:modifed", "width is:modifed"}) {
        EXPECT_THAT(RowFilter(text).faults(),
                    ElementsAre("is:modifed has no meaning; did you mean is:modified?"));
        EXPECT_FALSE(lets(text, width)) << text;
    }
    EXPECT_THAT(RowFilter("layer:banana").faults(),
                ElementsAre("layer:banana has no meaning; there are layer:stored, layer:default, "
                            "layer:site, layer:profile, layer:none"));
    EXPECT_THAT(RowFilter("kind:colour is:").faults(), SizeIs(2));
    EXPECT_THAT(RowFilter("kind:colour").faults(), Contains(HasSubstr("mean kind:color?")));
}

TEST(RowFilter, TakesOtherWordsWithAColonForText) {
    EXPECT_THAT(RowFilter("http://host a:b :").faults(), IsEmpty());
    EXPECT_TRUE(lets("http://host", rowOf("A", "http://host")));
}

TEST(RowFilter, KnowsEachWordThatItOffers) {
    EXPECT_THAT(RowFilter::wordsWithMeaning(), SizeIs(23));
    for (const std::string& word : RowFilter::wordsWithMeaning()) {
        EXPECT_THAT(RowFilter(word).faults(), IsEmpty()) << word;
        EXPECT_FALSE(RowFilter(word).looksAtText()) << word;
    }
}

// SPDX-License-Identifier: MIT
// Reads through the layers: cache, stored values, defaults.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "Support/StoreSupport.h"

using StoreSupport::cached;
using StoreSupport::setDefaults;
using StoreSupport::SystemLogLines;
using StoreSupport::writeSettings;
using testing::IsEmpty;

TEST(Reading, AKeyPathThatNoLayerHoldsIsCachedAsMissing) {
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("A.B").isNull());
    EXPECT_TRUE(cached("A.B").isNullMarker());
    setDefaults({{"A", NSDictionary{{"B", 5}}}});
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("A.B").isNull()) << "the cache answers";
    QRVSettingsClearCacheForKeyPath("A.B");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 5);
}

TEST(Reading, AValueOfTheFileIsCachedAndLaterChangesOfTheFileAreNotSeen) {
    writeSettings(NSDictionary{{"A", NSDictionary{{"B", 1}}}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 1);
    EXPECT_EQ(cached("A.B"), 1);
    writeSettings(NSDictionary{{"A", NSDictionary{{"B", 2}}}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 1);
    QRVSettingsClearCacheForKeyPath("A.B");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 1) << "the stored tree is read once";
}

TEST(Reading, TheCacheAnswersWhateverChangesBelow) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.cache().setObjectForKey("cached", "A");
    store.setStorageCache(NSDictionary{{"A", "stored"}}.mutableCopy());
    setDefaults({{"A", "default"}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), "cached");
    store.cache().removeObjectForKey("A");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), "stored");
    store.cache().removeAllObjects();
    store.setStorageCache(NSMutableDictionary());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), "default");
    EXPECT_EQ(cached("A"), "default");
}

TEST(Reading, AStoredZeroWinsOverADefaultOfTrue) {
    writeSettings(NSDictionary{{"A", 0}});
    setDefaults({{"A", true}, {"B", true}});
    EXPECT_FALSE(QRVSettingsBoolForKeyPath("A"));
    EXPECT_TRUE(QRVSettingsBoolForKeyPath("B"));
    EXPECT_FALSE(QRVSettingsBoolForKeyPath("C"));
    EXPECT_FALSE(QRVSettingsBoolForKeyPath(nullptr));
}

TEST(Reading, ABooleanOfATextGoesByItsFirstCharacter) {
    writeSettings(NSDictionary{{"yes", " +00Yes"}, {"no", "no"}, {"array", NSArray{1}}});
    EXPECT_TRUE(QRVSettingsBoolForKeyPath("yes"));
    EXPECT_FALSE(QRVSettingsBoolForKeyPath("no"));
    EXPECT_FALSE(QRVSettingsBoolForKeyPath("array"));
}

TEST(Reading, LayersAreNotMerged) {
    writeSettings(NSDictionary{{"A", NSDictionary{{"x", 1}}}});
    setDefaults({{"A", NSDictionary{{"x", 0}, {"y", 2}}}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), NSDictionary({{"x", 1}}));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.y"), 2);
}

TEST(Reading, WithoutAFileTheDefaultsAnswerAndNothingIsStored) {
    setDefaults({{"A", 1}});
    EXPECT_TRUE(QRVSettingsStorage().isNull());
    EXPECT_TRUE(QRVSettingsStoredValues().isNull());
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull());
}

TEST(Reading, WhileNothingWasReadAFileThatAppearsIsRead) {
    EXPECT_TRUE(QRVSettingsStoredObjectForKeyPath("A").isNull());
    writeSettings(NSDictionary{{"A", 1}});
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("A"), 1);
}

TEST(Reading, ABinaryFileIsReadLikeAnXMLFile) {
    // {"A": {"B": 42}} in the binary format.
    using namespace std::string_view_literals;
    writeSettings(
        "bplist00\xD1\x01\x02QA\xD1\x03\x04QB\x10\x2A"
        "\x08\x0B\x0D\x10\x12"
        "\0\0\0\0\0\0\x01\x01\0\0\0\0\0\0\0\x05\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x14"sv);
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 42);
}

TEST(Reading, AnOldStyleFileIsReadToo) {
    writeSettings("{ A = { B = \"text\"; }; }");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), "text");
}

TEST(Reading, WhatIsNoSettingsFileReadsAsNothingWithoutALogLine) {
    const SystemLogLines log;
    const StoreSupport::LogMessages messages;
    for (const std::string_view bytes :
         {"", " \n", "word", "<plist><dict>", "bplist00",
          "<plist version=\"1.0\"><array><integer>1</integer></array></plist>"}) {
        writeSettings(bytes);
        EXPECT_TRUE(QRVSettingsStorage().isNull()) << bytes;
        EXPECT_TRUE(QRVSettingsObjectForKeyPath("A").isNull()) << bytes;
        EXPECT_EQ(StoreSupport::contentsOf(QRVSettingsLocation()), bytes)
            << "a read writes nothing";
    }
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(messages.messages(), IsEmpty());
}

TEST(Reading, AFolderInTheFilesPlaceReadsAsNothing) {
    std::filesystem::create_directories(QRVSettingsLocation());
    EXPECT_TRUE(QRVSettingsStorage().isNull());
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("A").isNull());
}

TEST(Reading, ReadingMakesNoFileAndNoFolder) {
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("A").isNull());
    EXPECT_FALSE(std::filesystem::exists(std::getenv("XDG_CONFIG_HOME")));
    writeSettings(NSDictionary{{"A", 1}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), PropertyListValue());
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("A"), 1);
    const auto folder = std::filesystem::path(QRVSettingsLocation()).parent_path();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
}

TEST(Reading, StorageTouchesNoLayer) {
    writeSettings(NSDictionary{{"A", 1}});
    EXPECT_EQ(QRVSettingsStorage(), NSDictionary({{"A", 1}}));
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull());
    EXPECT_EQ(QRVSettings::sharedSettings().cache().count(), 0U);
    writeSettings(NSDictionary{{"A", 2}});
    EXPECT_EQ(QRVSettingsStorage(), NSDictionary({{"A", 2}})) << "freshly read at each call";
}

TEST(Reading, StorageIsImmutable) {
    writeSettings(NSDictionary{{"A", NSDictionary{{"B", 1}}}});
    EXPECT_FALSE(QRVSettingsStorage().isMutable());
    EXPECT_FALSE(QRVSettingsStorage().objectForKey("A").dictionary().isMutable());
}

TEST(Reading, StoredValuesAreAnImmutableShallowCopyOfTheStorageCache) {
    writeSettings(NSDictionary{{"A", NSDictionary{{"B", 1}}}});
    const NSDictionary first = QRVSettingsStoredValues();
    const NSDictionary storageCache = QRVSettings::sharedSettings().storageCache();
    const NSDictionary second = QRVSettingsStoredValues();
    EXPECT_TRUE(storageCache.isMutable());
    EXPECT_FALSE(first.isMutable());
    EXPECT_FALSE(second.isMutable());
    EXPECT_EQ(second, storageCache);
    EXPECT_FALSE(second.isIdenticalTo(storageCache));
    EXPECT_TRUE(second.objectForKey("A").isIdenticalTo(storageCache.objectForKey("A")));
    EXPECT_TRUE(first.objectForKey("A").isIdenticalTo(storageCache.objectForKey("A")));
}

TEST(Reading, ReadsReturnTheStoresOwnObjects) {
    writeSettings(NSDictionary{{"A", NSDictionary{{"B", 1}}}});
    setDefaults({{"D", NSArray{1}}});
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("A").isIdenticalTo(
        QRVSettings::sharedSettings().storageCache().objectForKey("A")));
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("D").isIdenticalTo(
        QRVSettings::sharedSettings().defaults().objectForKey("D")));
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("A").isIdenticalTo(QRVSettingsObjectForKeyPath("A")));
}

TEST(Reading, TheStoredObjectComesFromNeitherCacheNorDefaults) {
    writeSettings(NSDictionary{{"A", 1}});
    setDefaults({{"B", 2}});
    QRVSettings::sharedSettings().cache().setObjectForKey(9, "A");
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("A"), 1);
    EXPECT_TRUE(QRVSettingsStoredObjectForKeyPath("B").isNull());
    EXPECT_TRUE(cached("B").isNull());
    EXPECT_TRUE(QRVSettingsStoredObjectForKeyPath(nullptr).isNull());
}

TEST(Reading, TheDefaultComesFromTheDefaultsAlone) {
    writeSettings(NSDictionary{{"A", 1}});
    EXPECT_TRUE(QRVSettingsDefaultForKeyPath("A").isNull()) << "there are none yet";
    setDefaults({{"A", 2}});
    EXPECT_EQ(QRVSettingsDefaultForKeyPath("A"), 2);
    EXPECT_EQ(QRVSettings::sharedSettings().cache().count(), 0U);
    EXPECT_TRUE(QRVSettingsDefaultForKeyPath(nullptr).isNull());
}

TEST(Reading, ANullKeyPathReadsAsNullAndCachesNothing) {
    writeSettings(NSDictionary{{"", 1}});
    EXPECT_TRUE(QRVSettingsObjectForKeyPath(nullptr).isNull());
    EXPECT_EQ(QRVSettings::sharedSettings().cache().count(), 0U);
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull()) << "nothing is looked up";
    EXPECT_EQ(QRVSettingsObjectForKeyPath(""), 1);
}

TEST(Reading, CacheEntriesOfAKeyPathAndItsParentAreIndependent) {
    writeSettings(NSDictionary{{"A", NSDictionary{{"B", 1}}}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 1);
    EXPECT_TRUE(cached("A").isNull());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), NSDictionary({{"B", 1}}));
    QRVSettingsClearCacheForKeyPath("A");
    EXPECT_EQ(cached("A.B"), 1);
}

TEST(Reading, ADisabledCacheGetsNoEntries) {
    writeSettings(NSDictionary{{"A", 1}});
    setDefaults({{"B", 2}});
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setDisableCache(true);
    store.setCache(NSMutableDictionary());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    EXPECT_EQ(QRVSettingsObjectForKeyPath("B"), 2);
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("C").isNull());
    EXPECT_EQ(store.cache().count(), 0U);
    store.cache().setObjectForKey("cached", "A");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), "cached") << "entries are still looked up";
}

TEST(Reading, AColourInTheCacheIsHandedOnAsItIs) {
    QRVSettings::sharedSettings().cache().setObjectForKey(NSColor{1, 0.5, 0, 1}, "A.Color");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.Color").color(), (NSColor{1, 0.5, 0, 1}));
}

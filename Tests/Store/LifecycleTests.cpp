// SPDX-License-Identifier: MIT
// The store object at its creation, and its properties.
#include <gtest/gtest.h>

#include <array>
#include <barrier>
#include <thread>

#include "Support/StoreSupport.h"

using StoreSupport::writeSettings;

TEST(Lifecycle, ThreadsThatAskFirstAtOnceGetTheSameStore) {
    constexpr std::size_t threadCount = 8;
    std::barrier start(threadCount);
    std::array<QRVSettings*, threadCount> seen{};
    std::vector<std::thread> threads;
    for (auto& store : seen) {
        threads.emplace_back([&start, &store] {
            start.arrive_and_wait();
            store = &QRVSettings::sharedSettings();
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const QRVSettings* store : seen) EXPECT_EQ(store, &QRVSettings::sharedSettings());
    EXPECT_FALSE(QRVSettings::sharedSettings().cache().isNull());
}

TEST(Lifecycle, ANewStoreHoldsAnEmptyCacheAndNothingElse) {
    const QRVSettings& store = QRVSettings::sharedSettings();
    EXPECT_FALSE(store.monitorFileChanges());
    EXPECT_FALSE(store.disableCache());
    EXPECT_FALSE(store.prepared());
    EXPECT_FALSE(store.inBatchSave());
    EXPECT_TRUE(store.defaults().isNull());
    EXPECT_FALSE(store.cache().isNull());
    EXPECT_TRUE(store.cache().isMutable());
    EXPECT_EQ(store.cache().count(), 0U);
    EXPECT_TRUE(store.storageCache().isNull());
    EXPECT_FALSE(store.activeProfile().has_value());
    EXPECT_EQ(store.location(), QRVSettingsLocation());
    EXPECT_EQ(store.queue().label(), "org.qrv.monitor.settings");
    EXPECT_EQ(store.readQueue().label(), "org.qrv.monitor.settings.read");
    EXPECT_EQ(store.presenterQueue(), nullptr);
    EXPECT_FALSE(store.modificationDate().has_value());
    EXPECT_FALSE(store.localChanges().isNull());
    EXPECT_EQ(store.localChanges().count(), 0U);
    EXPECT_FALSE(store.batchLogChanges().isNull());
    EXPECT_EQ(store.batchLogChanges().count(), 0U);
    EXPECT_TRUE(store.currentAppearance().isNull());
    EXPECT_FALSE(store.onChange());
}

TEST(Lifecycle, CreationReadsNoFileAndMakesNone) {
    writeSettings(NSDictionary{{"A", 1}});
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull());
    std::filesystem::remove_all(std::getenv("XDG_CONFIG_HOME"));
    EXPECT_FALSE(QRVSettings::sharedSettings().exists());
    EXPECT_FALSE(std::filesystem::exists(std::getenv("XDG_CONFIG_HOME")));
}

TEST(Lifecycle, TheFileLiesInPreferencesUnderTheConfigurationHome) {
    EXPECT_EQ(QRVSettingsLocation(), std::string(std::getenv("XDG_CONFIG_HOME")) +
                                         "/Preferences/org.qrv.monitor.menubar.7.plist");
}

TEST(Lifecycle, TheLocationIsComputedAfreshButTheStoreKeepsItsOwn) {
    const std::string first = QRVSettings::sharedSettings().location();
    ASSERT_EQ(setenv("XDG_CONFIG_HOME", "/somewhere/else", 1), 0);
    EXPECT_EQ(QRVSettingsLocation(), "/somewhere/else/Preferences/org.qrv.monitor.menubar.7.plist");
    EXPECT_EQ(QRVSettings::sharedSettings().location(), first);
}

TEST(Lifecycle, TheStoreExistsWithItsFileOrAFolderInItsPlace) {
    const QRVSettings& store = QRVSettings::sharedSettings();
    EXPECT_FALSE(store.exists());
    writeSettings("no property list at all");
    EXPECT_TRUE(store.exists());
    std::filesystem::remove(store.location());
    std::filesystem::create_directory(store.location());
    EXPECT_TRUE(store.exists());
}

TEST(Lifecycle, TheStoreExistsAfterTheFirstSaveAndNotBefore) {
    EXPECT_FALSE(QRVSettings::sharedSettings().exists());
    QRVSettingsSetObjectForKeyPath(true, "A.B");
    StoreSupport::finishSaves();
    EXPECT_TRUE(QRVSettings::sharedSettings().exists());
}

TEST(Lifecycle, SettingDisableCacheThrowsTheCacheAwayWhateverTheValue) {
    writeSettings(NSDictionary{{"A", 1}});
    QRVSettings& store = QRVSettings::sharedSettings();
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    EXPECT_EQ(store.cache().count(), 1U);
    store.setDisableCache(false);
    EXPECT_FALSE(store.disableCache());
    EXPECT_TRUE(store.cache().isNull());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    EXPECT_TRUE(store.cache().isNull()) << "nothing makes a cache again";
    store.setDisableCache(true);
    EXPECT_TRUE(store.disableCache());
    EXPECT_TRUE(store.cache().isNull());
}

TEST(Lifecycle, WithoutACacheReadsSeeWhatTheLayersBelowSay) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setDisableCache(false);
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("A").isNull());
    QRVSettingsSetObjectForKeyPath(2, "A");
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 2);
    QRVSettingsClearCacheForKeyPath("A");
    store.setStorageCache(NSDictionary{{"A", 3}}.mutableCopy());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 3);
}

TEST(Lifecycle, TheHostsPropertiesKeepWhatIsSet) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMonitorFileChanges(true);
    store.setPrepared(true);
    store.setActiveProfile("work");
    store.setCurrentAppearance("Dark");
    int calls = 0;
    store.setOnChange(
        [&calls](const NSArray& keyPaths) { calls += static_cast<int>(keyPaths.count()); });
    store.onChange()({"A", "B"});
    EXPECT_TRUE(store.monitorFileChanges());
    EXPECT_TRUE(store.prepared());
    EXPECT_EQ(store.activeProfile(), "work");
    EXPECT_EQ(store.currentAppearance(), "Dark");
    EXPECT_EQ(calls, 2);
}

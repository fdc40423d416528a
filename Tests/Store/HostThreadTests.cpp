// SPDX-License-Identifier: MIT
// Calls on a thread that is not the host's.
#include <gtest/gtest.h>

#include <thread>

#include "QRVSettings/QRVHeldKeys.h"
#include "QRVSettings/QRVSettings.h"

namespace {

template <typename Function>
void runOnAnotherThread(Function function) {
    std::thread(function).join();
}

}  // namespace

TEST(HostThreadDeathTest, AReadOnAnotherThreadEndsTheProcessAndSaysWhy) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    QRVSettingsBoolForKeyPath("A");
    EXPECT_DEATH(
        runOnAnotherThread([] { QRVSettingsObjectForKeyPath("A"); }),
        "QRVSettingsObjectForKeyPath was called on a thread other than the one that it belongs to");
}

TEST(HostThreadDeathTest, AWriteOnAnotherThreadEndsTheProcessAndSaysWhy) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    QRVSettingsBoolForKeyPath("A");
    EXPECT_DEATH(runOnAnotherThread([] { QRVSettingsSetObjectForKeyPath(1, "A"); }),
                 "was called on a thread other than the one that it belongs to");
}

TEST(HostThreadDeathTest, WhoReplacesALayerOnAnotherThreadEndsTheProcessAndSaysWhy) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    QRVSettingsBoolForKeyPath("A");
    QRVSettings& store = QRVSettings::sharedSettings();
    EXPECT_DEATH(runOnAnotherThread([&store] { store.setCache(NSMutableDictionary()); }),
                 "setCache was called on a thread other than the one that it belongs to");
    EXPECT_DEATH(runOnAnotherThread([&store] { store.setStorageCache(NSMutableDictionary()); }),
                 "setStorageCache was called on a thread other than the one that it belongs to");
    EXPECT_DEATH(runOnAnotherThread([] { QRVSettingsClearCacheForKeyPath("A"); }),
                 "was called on a thread other than the one that it belongs to");
}

TEST(HostThreadDeathTest, AHeldKeyReadOnAnotherThreadEndsTheProcessAndSaysWhy) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const QRVHeldKey<bool> held(QRVKey<bool>("A"));
    EXPECT_FALSE(held.value());
    EXPECT_DEATH(runOnAnotherThread([&held] { static_cast<void>(held.value()); }),
                 "was called on a thread other than the one that it belongs to");
}

TEST(HostThread, IsTheOneThatUsesTheStoreFirst) {
    runOnAnotherThread([] {
        QRVSettingsSetObjectForKeyPath(1, "A");
        EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    });
}

TEST(HostThread, OtherThreadsMayAskWhatIsForAnyThread) {
    QRVSettingsSetObjectForKeyPath(1, "A");
    QRVSettings& store = QRVSettings::sharedSettings();
    store.queue().sync([] {});
    runOnAnotherThread([&store] {
        EXPECT_EQ(store.storageCache().objectForKey("A"), 1);
        EXPECT_EQ(store.cache().objectForKey("A"), 1);
        EXPECT_EQ(QRVSettingsStorage().objectForKey("A"), 1);
        EXPECT_TRUE(store.exists());
        EXPECT_FALSE(store.location().empty());
        EXPECT_FALSE(QRVSettingsMigrationNeeded());
    });
}

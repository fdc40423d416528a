// SPDX-License-Identifier: MIT
// Keys that remember where their value is: that they give what the ordinary functions give,
// whatever happens in between.
#include "QRVSettings/QRVHeldKeys.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <random>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "Support/MachineSupport.h"
#include "Support/SiteSupport.h"
#include "Support/StoreSupport.h"

using QRVInside::HeldEntry;
using StoreSupport::setDefaults;

namespace {

constexpr QRVKey<bool> flag("Host.Flag");
constexpr QRVKey<std::int64_t> number("Host.Number");
constexpr QRVKey<double> ratio("Host.Ratio");
constexpr QRVKey<std::string> text("Host.Text");
constexpr QRVKey<NSColor> color("Host.Color");
constexpr QRVKey<NSDate> date("Host.Deep.Date");
constexpr QRVKey<NSData> data("Host.Deep.Data");
constexpr QRVKey<NSArray> list("List");
constexpr QRVKey<NSDictionary> tree("Host.Deep");
constexpr QRVKey<PropertyListValue> anything("Host.Anything");
constexpr std::array keyPaths{flag.keyPath(),     number.keyPath(),        ratio.keyPath(),
                              text.keyPath(),     color.keyPath(),         date.keyPath(),
                              data.keyPath(),     list.keyPath(),          tree.keyPath(),
                              anything.keyPath(), std::string_view("Host")};

QRVSettings& store() {
    return QRVSettings::sharedSettings();
}

/// A key, held in both ways, and what it gives where nothing answers.
template <typename Value>
struct Held {
    QRVKey<Value> key;
    Value fallback;
    QRVHeldKey<Value> plain{key};
    QRVHeldProfileKey<Value> ofProfile{key};

    void expectSame(bool isHeldFirst) {
        if (isHeldFirst) {
            const Value held = plain.value();
            const Value heldOfProfile = ofProfile.value();
            ASSERT_EQ(held, QRVSettingsValue(key)) << key.keyPath();
            ASSERT_EQ(heldOfProfile, QRVSettingsProfileValue(key)) << key.keyPath();
        } else {
            const Value ordinary = QRVSettingsValue(key, fallback);
            const Value ordinaryOfProfile = QRVSettingsProfileValue(key, fallback);
            ASSERT_EQ(plain.value(fallback), ordinary) << key.keyPath();
            ASSERT_EQ(ofProfile.value(fallback), ordinaryOfProfile) << key.keyPath();
        }
    }
    void replaceByACopy() {
        const Held copy = *this;
        plain = copy.plain;
        ofProfile = copy.ofProfile;
    }
};

/// Anything may happen to the store, and then the held keys are asked.
class RandomLife {
  public:
    explicit RandomLife(unsigned seed) : random_(seed) {
        MachineSupport::beMachine("1", "M");
        store().setMergesSaves(seed % 2 == 1);
        store().setMonitorFileChanges(true);
        QRVSettingsPrepareBatchSave();  // Few of the writes need a save.
    }

    void step() {
        try {
            change();
        } catch (const NSInvalidArgumentException&) {
            ++refused_;  // A value is on the way, or the key path is locked by one.
        }
        std::apply([this](auto&... held) { (ask(held), ...); }, held_);
    }

  private:
    std::size_t among(std::size_t count) { return random_() % count; }
    std::string_view keyPath() { return keyPaths[among(keyPaths.size())]; }

    PropertyListValue value() {
        switch (among(11)) {
            case 0:
                return NSArray{static_cast<int>(among(3))};
            case 1:
                return NSDictionary{{"Flag", true}, {"Date", NSDate(3)}};
            case 2:
                return NSDate(static_cast<double>(among(9)));
            case 3:
                return NSData("bytes");
            case 4:
                return "1 0.5 0 1";
            case 5:
                return std::to_string(among(4));
            case 6:
                return 0.5 * static_cast<double>(among(4));
            case 7:
                return static_cast<int>(among(4));
            default:
                return among(2) == 0;
        }
    }
    NSDictionary settings() {
        const NSMutableDictionary host;
        for (const char* key : {"Flag", "Number", "Ratio", "Text", "Color", "Anything"})
            if (among(2) == 0) host.setObjectForKey(value(), key);
        const NSMutableDictionary all;
        if (among(4) != 0) all.setObjectForKey(host.copy(), "Host");
        if (among(2) == 0) all.setObjectForKey(value(), "List");
        all.setObjectForKey(NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}},
                            "Migration");
        return all.copy();
    }

    void change() {
        switch (among(40)) {
            case 0:
                return QRVSettingsImport(settings());
            case 1:
                return beReloaded();
            case 2:
                QRVSettingsCommitBatchSave();
                return QRVSettingsPrepareBatchSave();
            case 3:
                return changeSite();
            case 4:
            case 5:
                return changeProfile();
            case 6:
                return setDefaults(settings());
            case 7:
            case 8:
                return replaceCache();
            case 9:
                return store().setDisableCache(among(2) == 0);
            case 10:
                return store().setStorageCache(among(3) == 0 ? nullptr : settings().mutableCopy());
            case 11:
                return store().cache().removeAllObjects();
            case 12:
                return useManyOthers();
            case 13:
                return std::apply([](auto&... held) { (held.replaceByACopy(), ...); }, held_);
            default:
                return changeOne();
        }
    }

    void changeOne() {
        const std::string_view where = keyPath();
        switch (among(10)) {
            case 0:
                return QRVSettingsSetObjectForKeyPath(nullptr, where);
            case 1:
                return QRVSettingsProfileSetObjectForKeyPath(nullptr, where);
            case 2:
                return QRVSettingsProfileSetObjectForKeyPath(value(), where);
            case 3:
                return QRVSettingsClearCacheForKeyPath(where);
            case 4:
                return QRVSettingsProfileClearCacheForKeyPath(where);
            case 5:
                return store().cache().setObjectForKey(
                    among(2) == 0 ? PropertyListValue(NSNull{}) : value(), where);
            case 6:
                return store().cache().setObjectForKey(NSColor{1, 0, 0, 1},
                                                       QRVSettingsProfileKeyForKey(where));
            case 7:
                return QRVSettingsSetColorForKeyPath(NSColor{0, 1, 0, 1}, where);
            case 8:
                return static_cast<void>(QRVSettingsColorForKeyPath(where));
            default:
                return QRVSettingsSetObjectForKeyPath(value(), where);
        }
    }

    void changeProfile() {
        constexpr std::array names{"default", "work", "a.b"};
        const std::size_t choice = among(names.size() + 1);
        if (choice < names.size())
            store().setActiveProfile(names[choice]);
        else
            store().setActiveProfile(std::nullopt);
    }

    /// One of these has the objects of the keys of the present one.
    void replaceCache() {
        const NSMutableDictionary present = store().cache();
        switch (among(4)) {
            case 0:
                return store().setCache(NSMutableDictionary());
            case 1:
                return store().setCache(present.mutableCopy());
            case 2:
                store().setCache(earlierCache_);
                earlierCache_ = present;
                return;
            default:
                return store().setCache(nullptr);
        }
    }

    // The cache grows, and its entries get other places.
    void useManyOthers() {
        for (std::size_t other = among(100); other > 0; --other)
            QRVSettingsObjectForKeyPath("Other." + std::to_string(other));
        QRVSettingsClearCacheForKeyPath("Other." + std::to_string(among(100)));
    }

    void beReloaded() {
        StoreSupport::finishSaves();
        StoreSupport::writeSettings(settings());
        store().presentedItemDidChange();
        store().readQueue().sync([] {});
        DispatchMainQueue::shared().drain();
    }

    void changeSite() {
        SiteSupport::writeList(settings());
        SiteSupport::writeLocks(among(2) == 0 ? "" : std::string(keyPath()) + "\n");
        store().setUsesSiteDefaults(among(2) == 0);
        store().loadDefaults();
    }

    template <typename Value>
    void ask(Held<Value>& held) {
        if (among(3) != 0) held.expectSame(among(2) == 0);
    }

    std::mt19937 random_;
    int refused_ = 0;
    NSMutableDictionary earlierCache_;
    std::tuple<Held<bool>, Held<std::int64_t>, Held<double>, Held<std::string>, Held<NSColor>,
               Held<NSDate>, Held<NSData>, Held<NSArray>, Held<NSDictionary>,
               Held<PropertyListValue>>
        held_{{flag, true},
              {number, 30},
              {ratio, 1.5},
              {text, "fallback"},
              {color, NSColor{1, 1, 1, 1}},
              {date, NSDate(9)},
              {data, NSData("none")},
              {list, NSArray{"fallback"}},
              {tree, NSDictionary{{"none", 1}}},
              {anything, "fallback"}};
};

}  // namespace

class HeldKeysModel : public testing::TestWithParam<unsigned> {};

TEST_P(HeldKeysModel, GivesWhatTheOrdinaryFunctionsGive) {
    const SiteSupport::Failures failures;
    const StoreSupport::SystemLogLines log;
    RandomLife life(GetParam());
    for (int step = 0; step < 1000 && !HasFatalFailure(); ++step) life.step();
    StoreSupport::finishSaves();
}

INSTANTIATE_TEST_SUITE_P(Seeds, HeldKeysModel, testing::Range(1U, 9U));

TEST(HeldKeys, ReadTheEntryInPlace) {
    HeldEntry entry(HeldEntry::Scope::Application);
    EXPECT_EQ(entry.value(), nullptr);
    QRVSettingsSetObjectForKeyPath(5, number);
    entry.find(number);
    const PropertyListValue* const place = entry.value();
    ASSERT_NE(place, nullptr);
    EXPECT_EQ(*place, 5);
    QRVSettingsSetObjectForKeyPath(6, number);
    ASSERT_EQ(entry.value(), place) << "the entry has not moved";
    EXPECT_EQ(*place, 6);
}

TEST(HeldKeys, FindTheirEntryAtTheNextRead) {
    const QRVHeldKey<bool> isShown(flag);
    const QRVHeldProfileKey<bool> isShownInProfile(flag);
    QRVSettingsSetValue(true, flag);
    EXPECT_TRUE(isShown.value());
    EXPECT_FALSE(isShownInProfile.value());
    EXPECT_TRUE(isShownInProfile.value(true));
    store().setActiveProfile("work");
    QRVSettingsProfileSetValue(true, flag);
    EXPECT_TRUE(isShownInProfile.value());
    store().setActiveProfile("play");
    EXPECT_FALSE(isShownInProfile.value());
    store().setActiveProfile("work");
    EXPECT_TRUE(isShownInProfile.value());
    EXPECT_EQ(isShown.key().keyPath(), flag.keyPath());
}

TEST(HeldKeys, DoNotFindAnEntryOfAnotherKey) {
    HeldEntry entry(HeldEntry::Scope::Application);
    QRVSettingsSetObjectForKeyPath(5, number);
    QRVSettingsSetObjectForKeyPath(6, "Other");
    entry.find(number);
    ASSERT_NE(entry.value(), nullptr);
    // Now the last entry has its place, and then the key has another object.
    QRVSettingsClearCacheForKeyPath(number);
    EXPECT_EQ(entry.value(), nullptr);
    QRVSettingsObjectForKeyPath(number);
    EXPECT_EQ(entry.value(), nullptr);
    entry.find(number);
    EXPECT_NE(entry.value(), nullptr);
}

TEST(HeldKeys, MayOutliveTheCache) {
    QRVHeldKey<std::string> held(text);
    QRVSettingsSetValue("a text that is not short", text);
    EXPECT_EQ(held.value(), "a text that is not short");
    store().setCache(nullptr);
    EXPECT_EQ(held.value(), "a text that is not short");
    store().setCache(NSMutableDictionary());
    QRVSettingsSetValue("another", text);
    EXPECT_EQ(held.value(), "another");
}

TEST(HeldKeys, AreReadWhileOtherThreadsReadTheLayers) {
    QRVSettingsPrepareBatchSave();
    constexpr int count = 2;
    std::atomic<bool> isOver = false;
    std::atomic<int> haveSeen = 0;
    std::vector<std::thread> onlookers;
    for (int onlooker = 0; onlooker < count; ++onlooker)
        onlookers.emplace_back([&isOver, &haveSeen] {
            std::size_t seen = 0;
            bool hasSeen = false;
            while (!isOver) {
                for (const auto& [key, value] : store().cache()) seen += key.size();
                for (const auto& [key, value] : store().storageCache())
                    for (const auto& [inner, leaf] : value.dictionary()) seen += inner.size();
                seen += store().cache().objectForKey(number.keyPath()).isNull() ? 0 : 1;
                if (seen > 0 && !std::exchange(hasSeen, true)) ++haveSeen;
                std::this_thread::yield();
            }
        });
    const QRVHeldKey<std::int64_t> held(number);
    const QRVHeldProfileKey<std::string> heldText(text);
    // At least as long as an onlooker takes to begin.
    for (int round = 0; round < 3000 || haveSeen < count; ++round) {
        QRVSettingsSetValue(round, number);
        QRVSettingsProfileSetValue(std::to_string(round), text);
        EXPECT_EQ(held.value(), round);
        EXPECT_EQ(heldText.value(), std::to_string(round));
        QRVSettingsObjectForKeyPath("Other." + std::to_string(round % 100));
        if (round % 50 == 0) store().setActiveProfile(std::to_string(round));
        if (round % 200 == 0) store().cache().removeAllObjects();
        if (round % 300 == 0) store().setCache(NSMutableDictionary());
        if (round % 700 == 0) store().setStorageCache(store().storageCache().mutableCopy());
    }
    isOver = true;
    for (std::thread& onlooker : onlookers) onlooker.join();
}

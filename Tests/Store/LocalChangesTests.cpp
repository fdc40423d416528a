// SPDX-License-Identifier: MIT
// The change records of this process's recent saves: how they leave, and what they hide.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

#include "QRVSettings/QRVSettings+LocalChanges.h"
#include "Support/StoreSupport.h"

using QRVInside::LocalChanges;
using QRVInside::recordsWithout;
using testing::ElementsAre;

namespace {

NSDictionary record(const PropertyListValue& key, const PropertyListValue& time) {
    return {{"key", key}, {"time", time}};
}

/// Records of `count` writes, all of one key path when `keyPaths` is 1.
NSArray manyRecords(int count, int keyPaths) {
    const NSMutableArray records;
    for (int number = 0; number < count; ++number)
        records.addObject(
            record("Key." + std::to_string(number % keyPaths), 1'700'000'000 + number * 1e-6));
    return records.copy();
}

/// Compares two records, and counts how often it did.
struct CountingEqual {
    bool operator()(const PropertyListValue& left, const PropertyListValue& right) const {
        ++*count;
        return left == right;
    }
    std::size_t* count;
};

std::size_t comparisonsToRemoveAll(const NSArray& records) {
    std::size_t count = 0;
    EXPECT_EQ(recordsWithout(records, records, CountingEqual{&count}).count(), 0U);
    return count;
}

/// The counts that another thread sees from the start of `work` to its end.
std::set<std::size_t> countsDuring(const NSArray& records, const std::function<void()>& work) {
    std::set<std::size_t> counts{records.count()};
    std::atomic<bool> isDone = false;
    std::thread reader([&] {
        while (!isDone) {
            counts.insert(records.count());
            std::this_thread::yield();
        }
    });
    work();
    isDone = true;
    reader.join();
    counts.insert(records.count());
    return counts;
}

std::vector<std::string> textsOf(const NSArray& keyPaths) {
    std::vector<std::string> texts;
    for (const PropertyListValue& keyPath : keyPaths) texts.push_back(keyPath.stringValue());
    return texts;
}

}  // namespace

TEST(LocalChanges, TenThousandRecordsLeaveWithOneComparisonEach) {
    for (const int keyPaths : {1, 100, 10'000}) {
        EXPECT_GE(comparisonsToRemoveAll(manyRecords(10'000, keyPaths)), 10'000U);
        EXPECT_LE(comparisonsToRemoveAll(manyRecords(10'000, keyPaths)), 10'100U) << keyPaths;
    }
}

TEST(LocalChanges, EveryRecordEqualToOneOfTheLogLeavesAndTheOthersKeepTheirOrder) {
    const LocalChanges changes;
    for (const PropertyListValue& present :
         {PropertyListValue(record("A", 1)), PropertyListValue(record("B", 1)),
          PropertyListValue(record("A", 1)), PropertyListValue(record("A", 2)),
          PropertyListValue("a host's own"), PropertyListValue(record("C", 1))})
        changes.records().addObject(present);
    const NSMutableArray held = changes.records();
    changes.expire({record("C", 1), record("A", 1.0), record("D", 1)});
    EXPECT_EQ(held, NSArray({record("B", 1), record("A", 2), "a host's own"}));
    changes.expire({"a host's own"});
    EXPECT_EQ(held, NSArray({record("B", 1), record("A", 2)}));
    changes.expire(nullptr);
    EXPECT_EQ(held.count(), 2U);
}

TEST(LocalChanges, EqualRecordsAreFoundWhateverTheyAre) {
    const std::vector<PropertyListValue> values = {record("A", 1),
                                                   record("A", 1.0),
                                                   record("", -0.0),
                                                   record("", 0.0),
                                                   record(1, "1"),
                                                   record(1.0, "1"),
                                                   record(true, 1),
                                                   record(1, true),
                                                   NSDictionary{},
                                                   NSArray{1, 2},
                                                   "text",
                                                   9007199254740993,
                                                   9007199254740992.0,
                                                   NSDate::now(),
                                                   record("A", 9007199254740993),
                                                   record("A", 9007199254740992.0),
                                                   record("A", NSArray{1})};
    for (const PropertyListValue& left : values) {
        for (const PropertyListValue& right : values) {
            EXPECT_EQ(recordsWithout(NSArray{left}, NSArray{right}).count(),
                      left == right ? 0U : 1U)
                << left << right;
        }
    }
}

TEST(LocalChanges, HideTheirKeyPathsExactly) {
    const LocalChanges changes;
    for (const PropertyListValue& key :
         {PropertyListValue("A"), PropertyListValue("a.b"), PropertyListValue(1)})
        changes.records().addObject(record(key, 1));
    EXPECT_THAT(textsOf(changes.withoutLocal({"A", "B", "a.B", "1", "A.C", "a.b"})),
                ElementsAre("B", "a.B", "1", "A.C"));
}

TEST(LocalChanges, AReaderNeverSeesThemHalfRemoved) {
    const LocalChanges changes;
    const NSArray log = manyRecords(1'000, 1'000);
    const NSArray all = [&] {
        const NSMutableArray records = log.mutableCopy();
        records.addObject("stays");
        return records.copy();
    }();
    std::atomic<bool> isDone = false;
    std::atomic<int> looks = 0;
    std::thread reader([&] {
        while (!isDone) {
            const std::size_t count = changes.records().count();
            ++looks;
            if (count != 0 && count != 1 && count != 1'001) {
                ADD_FAILURE() << count;
                break;
            }
        }
    });
    for (int round = 0; round < 100 || looks < 100; ++round) {
        changes.records().setArray(all);
        changes.expire(log);
    }
    isDone = true;
    reader.join();
}

TEST(LocalChanges, TheRecordsOfManySavesThatAreDueInOneDrainLeaveTogether) {
    // Replacements fail here, which is quicker; the records stay all the same.
    const std::filesystem::path file = QRVSettingsLocation();
    std::filesystem::create_directories(file.parent_path() /
                                        ("." + file.filename().string() + ".tmp") / "inside");
    constexpr std::size_t saves = 1'000;
    for (std::size_t number = 0; number < saves; ++number)
        QRVSettingsSaveObjectWithLog(NSDictionary(), {record("Key" + std::to_string(number), 1)});
    StoreSupport::finishSaves();
    DispatchMainQueue::shared().drain();
    const NSMutableArray records = QRVSettings::sharedSettings().localChanges();
    ASSERT_EQ(records.count(), saves);
    std::this_thread::sleep_for(LocalChanges::lifetime);  // all timers are due then
    EXPECT_EQ(countsDuring(records, [] { DispatchMainQueue::shared().drain(); }),
              (std::set<std::size_t>{0, saves}));
}

TEST(LocalChanges, TheRecordsOfALargeBatchLeaveTogether) {
    constexpr std::size_t writes = 10'000;
    QRVSettingsPrepareBatchSave();
    for (std::size_t number = 0; number < writes; ++number)
        QRVSettingsSetObjectForKeyPath(1, "Batch.Key" + std::to_string(number));
    QRVSettingsCommitBatchSave();
    StoreSupport::finishSaves();
    DispatchMainQueue::shared().drain();
    const NSMutableArray records = QRVSettings::sharedSettings().localChanges();
    ASSERT_EQ(records.count(), writes);
    const auto drain = [&] {
        EXPECT_TRUE(StoreSupport::drainUntil([&] { return records.count() == 0; }));
    };
    EXPECT_EQ(countsDuring(records, drain), (std::set<std::size_t>{0, writes}))
        << "the array was seen half empty";
}

// SPDX-License-Identifier: MIT
// The change records of writes, and what other threads see of a write.
#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "QRVSettings/NSDictionary+QRV.h"
#include "Support/StoreSupport.h"

using StoreSupport::cached;
using StoreSupport::drainUntil;
using StoreSupport::finishSaves;
using StoreSupport::setDefaults;

namespace {

/// Keeps the store's queue from running anything during its life.
class BusyQueue {
  public:
    BusyQueue() {
        std::promise<void> begun;
        QRVSettings::sharedSettings().queue().async([&begun, end = end_.get_future().share()] {
            begun.set_value();
            end.wait();
        });
        begun.get_future().wait();
    }
    BusyQueue(const BusyQueue&) = delete;
    BusyQueue& operator=(const BusyQueue&) = delete;
    ~BusyQueue() { end_.set_value(); }

  private:
    std::promise<void> end_;
};

double now() {
    return NSDate::now().timeIntervalSince1970();
}

/// Returns when the clock shows another time.
void letTheClockRun() {
    const double start = now();
    while (now() <= start) std::this_thread::yield();
}

NSArray localChangesOf(std::size_t count) {
    finishSaves();
    const NSMutableArray changes = QRVSettings::sharedSettings().localChanges();
    EXPECT_TRUE(drainUntil([&] { return changes.count() >= count; }));
    return changes.copy();
}

std::vector<std::string> keysOf(const NSArray& records) {
    std::vector<std::string> keys;
    for (const PropertyListValue& record : records)
        keys.push_back(record.dictionary().objectForKey("key").stringValue());
    return keys;
}

double timeOf(const NSArray& records, std::size_t index) {
    const NSDictionary record = records.objectAtIndex(index).dictionary();
    EXPECT_EQ(record.count(), 2U);
    EXPECT_TRUE(record.objectForKey("key").isString());
    EXPECT_TRUE(record.objectForKey("time").isReal());
    return record.objectForKey("time").doubleValue();
}

/// Whether the store merges saves.
class WriteRecord : public testing::TestWithParam<bool> {
  protected:
    WriteRecord() { QRVSettings::sharedSettings().setMergesSaves(GetParam()); }
};

}  // namespace

TEST_P(WriteRecord, HasTheTimeOfTheWriteHoweverLateItsSaveRuns) {
    std::optional<BusyQueue> busy(std::in_place);
    const double before = now();
    QRVSettingsSetObjectForKeyPath(1, "A.First");
    const double between = now();
    letTheClockRun();
    QRVSettingsSetObjectForKeyPath(2, "A.Second");
    const double after = now();
    letTheClockRun();
    busy.reset();
    const NSArray records = localChangesOf(2);
    ASSERT_EQ(keysOf(records), (std::vector<std::string>{"A.First", "A.Second"}));
    EXPECT_GE(timeOf(records, 0), before);
    EXPECT_LE(timeOf(records, 0), between);
    EXPECT_GT(timeOf(records, 1), between);
    EXPECT_LE(timeOf(records, 1), after);
}

TEST_P(WriteRecord, StandsInTheOrderOfTheWritesOneForEach) {
    std::vector<std::string> expected;
    {
        const BusyQueue busy;
        for (int number = 0; number < 200; ++number) {
            expected.push_back("A.Key" + std::to_string(number % 7));
            QRVSettingsSetObjectForKeyPath(number, expected.back());
        }
    }
    EXPECT_EQ(keysOf(localChangesOf(expected.size())), expected);
}

TEST_P(WriteRecord, KeepsTheTextOfTheKeyPathWhateverBecomesOfTheHosts) {
    setDefaults({{"A", NSDictionary{{"Default", 5}}}});
    std::string keyPath;
    const auto write = [&keyPath](const char* text, const PropertyListValue& value) {
        keyPath = text;
        QRVSettingsSetObjectForKeyPath(value, keyPath);
        keyPath = "overwritten";
    };
    {
        const BusyQueue busy;
        write("A.Value", 1);
        write("A.Value", 2);
        write("A.Value", nullptr);
        write("A.Absent", nullptr);
        write("A.Default", 5);
        QRVSettings::sharedSettings().setDisableCache(true);
        write("A.NotCached", 3);
    }
    EXPECT_EQ(keysOf(localChangesOf(6)),
              (std::vector<std::string>{"A.Value", "A.Value", "A.Value", "A.Absent", "A.Default",
                                        "A.NotCached"}));
}

TEST_P(WriteRecord, GathersInABatchAtOnceAndIsTheSameAfterIt) {
    const QRVSettings& store = QRVSettings::sharedSettings();
    QRVSettingsPrepareBatchSave();
    const double before = now();
    QRVSettingsSetObjectForKeyPath(1, "A.First");
    EXPECT_EQ(keysOf(store.batchLogChanges()), (std::vector<std::string>{"A.First"}));
    QRVSettingsSetObjectForKeyPath(2, "A.Second");
    const NSArray gathered = store.batchLogChanges().copy();
    const double after = now();
    EXPECT_EQ(keysOf(gathered), (std::vector<std::string>{"A.First", "A.Second"}));
    EXPECT_GE(timeOf(gathered, 0), before);
    EXPECT_LE(timeOf(gathered, 1), after);
    QRVSettingsCommitBatchSave();
    EXPECT_EQ(store.batchLogChanges().count(), 0U);
    EXPECT_EQ(localChangesOf(2), gathered);
}

// The tree first, then the cache: whoever finds a value in the cache finds it, or a later one, in
// the tree.
TEST_P(WriteRecord, OtherThreadsSeeAWriteInTheTreeNotLaterThanInTheCache) {
    const QRVSettings& store = QRVSettings::sharedSettings();
    constexpr int last = 2000;
    int earlierInTheTree = 0;
    std::jthread reader([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            const std::int64_t inCache = cached("A.B.Number").integerValue();
            const NSDictionary tree = store.storageCache();
            const std::int64_t inTree =
                NSDictionaryQRV::objectAtKeyPath(tree, "A.B.Number").integerValue();
            if (inTree < inCache) ++earlierInTheTree;
        }
    });
    const auto write = [](int number) {
        QRVSettingsSetObjectForKeyPath(number, "A.B.Number");
        QRVSettingsSetObjectForKeyPath(number, "A.B.Other" + std::to_string(number % 50));
    };
    QRVSettingsSetObjectForKeyPath(0, "A.B.Number");
    for (int number = 1; number <= 20; ++number) write(number);
    QRVSettingsPrepareBatchSave();  // so that they take no save each
    for (int number = 21; number <= last; ++number) write(number);
    QRVSettingsCommitBatchSave();
    reader.request_stop();
    reader.join();
    EXPECT_EQ(earlierInTheTree, 0);
    EXPECT_EQ(cached("A.B.Number"), last);
    finishSaves();
    EXPECT_EQ(NSDictionaryQRV::objectAtKeyPath(StoreSupport::fileTree(), "A.B.Number"), last);
}

INSTANTIATE_TEST_SUITE_P(Saves, WriteRecord, testing::Bool(),
                         [](const auto& merges) { return merges.param ? "Merged" : "Whole"; });

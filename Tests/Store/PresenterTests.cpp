// SPDX-License-Identifier: MIT
// Changes of the file by others: the reload that follows a notification.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <ctime>
#include <future>

#include "Platform/Files/Files.h"
#include "Support/FileEvents.h"
#include "Support/StoreSupport.h"

using namespace QRVPlatform;

using StoreSupport::SystemLogLines;
using StoreSupport::writeSettings;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

namespace {

/// A store that monitors, and what its change handler received.
class Monitoring {
  public:
    Monitoring() {
        QRVSettings& store = QRVSettings::sharedSettings();
        store.setMonitorFileChanges(true);
        store.setOnChange([this](const NSArray& changes) {
            ++calls_;
            keyPaths_.clear();
            for (const PropertyListValue& keyPath : changes)
                keyPaths_.push_back(keyPath.stringValue());
            thread_ = std::this_thread::get_id();
            cacheIsEmpty_ = QRVSettings::sharedSettings().cache().count() == 0;
            tree_ = QRVSettings::sharedSettings().storageCache().copy();
        });
    }
    Monitoring(const Monitoring&) = delete;
    Monitoring& operator=(const Monitoring&) = delete;
    ~Monitoring() { QRVSettings::sharedSettings().setOnChange(nullptr); }

    /// A notification, and everything that follows from it.
    static void notify() {
        QRVSettings::sharedSettings().presentedItemDidChange();
        settle();
    }
    /// A notification, up to the reading of the file.
    static void notifyAndRead() {
        QRVSettings::sharedSettings().presentedItemDidChange();
        QRVSettings::sharedSettings().readQueue().sync([] {});
    }
    /// Publishes what has been read, and runs the second reloads.
    static void settle() {
        constexpr int steps = 3;
        for (int step = 0; step < steps; ++step) {
            QRVSettings::sharedSettings().readQueue().sync([] {});
            DispatchMainQueue::shared().drain();
        }
    }

    [[nodiscard]] int calls() const { return calls_; }
    [[nodiscard]] const std::vector<std::string>& keyPaths() const { return keyPaths_; }
    [[nodiscard]] std::thread::id thread() const { return thread_; }
    [[nodiscard]] bool cacheWasEmpty() const { return cacheIsEmpty_; }
    [[nodiscard]] const NSDictionary& tree() const { return tree_; }

  private:
    int calls_ = 0;
    std::vector<std::string> keyPaths_;
    std::thread::id thread_;
    bool cacheIsEmpty_ = false;
    NSDictionary tree_ = nullptr;
};

/// The file written again, with a date of its own.
void rewriteSettings(const NSDictionary& tree) {
    static int age = 0;
    writeSettings(tree);
    const auto date = std::filesystem::file_time_type::clock::now() - std::chrono::hours(++age);
    std::filesystem::last_write_time(QRVSettingsLocation(), date);
}

/// The file written again, with the date that it gets on a system whose timestamps have the
/// granularity of its clock tick; others have a finer one.
void rewriteSettingsWithCoarseDate(const NSDictionary& tree) {
    writeSettings(tree);
    std::array<timespec, 2> times = {timespec{0, UTIME_OMIT}, timespec{}};
    clock_gettime(CLOCK_REALTIME_COARSE, &times[1]);
    ASSERT_EQ(utimensat(AT_FDCWD, QRVSettingsLocation().c_str(), times.data(), 0), 0);
}

NSDictionary localRecord(const PropertyListValue& key) {
    return {{"key", key}, {"time", 1.0}};
}

}  // namespace

// The operation goes on after the notification, and even waits for what follows from it.
TEST(Reload, OfANotificationByTheHostItselfWithinAnOperationBeginsAtOnce) {
    const Monitoring monitoring;
    rewriteSettings({{"A", 1}});
    QRVSettingsStoredValues();
    rewriteSettings({{"A", 2}});
    std::promise<void> isRead;
    std::promise<void> mayEnd;
    const auto operations = std::make_shared<NSOperationQueue>();
    operations->addOperation([&] {
        Monitoring::notifyAndRead();
        isRead.set_value();
        mayEnd.get_future().wait();
    });
    isRead.get_future().wait();
    DispatchMainQueue::shared().drain();
    EXPECT_EQ(monitoring.calls(), 1);
    mayEnd.set_value();
}

TEST(FileContentsDidChange, WhenTheDateIsAnother) {
    QRVSettings& store = QRVSettings::sharedSettings();
    rewriteSettings({{"A", 1}});
    EXPECT_TRUE(store.fileContentsDidChange()) << "no date is known at first";
    EXPECT_EQ(store.modificationDate(), attributesOfItemAtPath(store.location())->modificationDate);
    EXPECT_FALSE(store.fileContentsDidChange());
    rewriteSettings({{"A", 1}});
    EXPECT_TRUE(store.fileContentsDidChange());
    EXPECT_FALSE(store.fileContentsDidChange());
}

TEST(FileContentsDidChange, AlsoWhenChangesFollowEachOtherWithinATickOfTheClock) {
    for (int number = 0; number < 20; ++number) {
        rewriteSettingsWithCoarseDate({{"A", number}});
        ASSERT_TRUE(QRVSettings::sharedSettings().fileContentsDidChange()) << number;
    }
}

TEST(FileContentsDidChange, AlwaysWhenThereIsNoFile) {
    QRVSettings& store = QRVSettings::sharedSettings();
    EXPECT_TRUE(store.fileContentsDidChange());
    EXPECT_TRUE(store.fileContentsDidChange());
    rewriteSettings({{"A", 1}});
    EXPECT_TRUE(store.fileContentsDidChange());
    std::filesystem::remove(QRVSettingsLocation());
    EXPECT_TRUE(store.fileContentsDidChange());
    EXPECT_FALSE(store.modificationDate().has_value());
}

TEST(Reload, CallsTheHandlerOnceOnTheMainThreadWithTheNewTree) {
    Monitoring monitoring;
    const SystemLogLines log;
    rewriteSettings({{"A", NSDictionary{{"B", 1}, {"C", 1}}}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 1);
    rewriteSettings({{"A", NSDictionary{{"B", 2}, {"C", 1}}}});
    Monitoring::notify();
    EXPECT_EQ(monitoring.calls(), 1);
    EXPECT_THAT(monitoring.keyPaths(), ElementsAre("A.B"));
    EXPECT_EQ(monitoring.thread(), std::this_thread::get_id());
    EXPECT_TRUE(monitoring.cacheWasEmpty());
    EXPECT_EQ(monitoring.tree(), NSDictionary({{"A", NSDictionary{{"B", 2}, {"C", 1}}}}));
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isMutable());
    EXPECT_THAT(log.lines(), ElementsAre("Prefs file changed"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 2);
}

TEST(Reload, WithoutMonitoringNothingIsRead) {
    Monitoring monitoring;
    QRVSettings::sharedSettings().setMonitorFileChanges(false);
    rewriteSettings({{"A", 1}});
    Monitoring::notify();
    EXPECT_EQ(monitoring.calls(), 0);
    EXPECT_FALSE(QRVSettings::sharedSettings().modificationDate().has_value());
}

TEST(Reload, WithTheSameDateNothingIsRead) {
    Monitoring monitoring;
    rewriteSettings({{"A", 1}});
    Monitoring::notify();
    ASSERT_EQ(monitoring.calls(), 1);
    const auto date = std::filesystem::last_write_time(QRVSettingsLocation());
    writeSettings(NSDictionary{{"A", 2}});
    std::filesystem::last_write_time(QRVSettingsLocation(), date);
    Monitoring::notify();
    EXPECT_EQ(monitoring.calls(), 1);
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("A"), 1);
}

TEST(Reload, OfDictionariesWithoutLeavesLeavesTheTreeAsItWas) {
    Monitoring monitoring;
    const SystemLogLines log;
    rewriteSettings({{"A", 1}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    const NSDictionary before = QRVSettings::sharedSettings().storageCache();
    rewriteSettings({{"A", 1}, {"Empty", NSDictionary{{"Deeper", NSDictionary{}}}}});
    Monitoring::notify();
    EXPECT_EQ(monitoring.calls(), 0);
    EXPECT_THAT(log.lines(), ElementsAre());
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isIdenticalTo(before));
    EXPECT_EQ(StoreSupport::cached("A"), 1);
}

TEST(Reload, OfOwnRecentChangesOnlyLeavesTheTreeAsItWas) {
    Monitoring monitoring;
    const SystemLogLines log;
    rewriteSettings({{"A", 1}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    const NSDictionary before = QRVSettings::sharedSettings().storageCache();
    const NSMutableArray localChanges = QRVSettings::sharedSettings().localChanges();
    localChanges.addObject(localRecord("A"));
    rewriteSettings({{"A", 2}});
    Monitoring::notify();
    EXPECT_EQ(monitoring.calls(), 0);
    EXPECT_THAT(log.lines(), ElementsAre());
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isIdenticalTo(before));
    EXPECT_EQ(localChanges.count(), 1U) << "the record stays";
}

TEST(Reload, LeavesOutOwnRecentChangesAndReportsTheOthers) {
    Monitoring monitoring;
    const NSMutableArray localChanges = QRVSettings::sharedSettings().localChanges();
    for (const PropertyListValue& key : {PropertyListValue("A"), PropertyListValue("a.b"),
                                         PropertyListValue("A.B.C"), PropertyListValue(1)})
        localChanges.addObject(localRecord(key));
    rewriteSettings({{"A", 1}, {"B", 1}, {"1", 1}, {"a", NSDictionary{{"B", 1}}}});
    Monitoring::notify();
    EXPECT_EQ(monitoring.calls(), 1);
    EXPECT_THAT(monitoring.keyPaths(), UnorderedElementsAre("B", "1", "a.B"));
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("A"), 1) << "the whole tree is taken over";
}

TEST(Reload, OfAnOwnRecentKeyPathKeepsTheOwnValueUntilSomethingElseChanges) {
    Monitoring monitoring;
    QRVSettingsSetObjectForKeyPath(1, "A");
    StoreSupport::finishSaves();
    DispatchMainQueue::shared().drain();
    rewriteSettings({{"A", 2}});
    Monitoring::notify();
    EXPECT_EQ(monitoring.calls(), 0);
    QRVSettings& store = QRVSettings::sharedSettings();
    ASSERT_TRUE(StoreSupport::drainUntil([&] { return store.localChanges().count() == 0; }));
    store.cache().removeAllObjects();
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1) << "nothing is read again by itself";
    rewriteSettings({{"A", 2}, {"B", 1}});
    Monitoring::notify();
    EXPECT_THAT(monitoring.keyPaths(), UnorderedElementsAre("A", "B"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 2);
}

TEST(Reload, OfAnOwnRecentKeyPathAmongOthersTakesItOverWithoutReportingIt) {
    Monitoring monitoring;
    QRVSettingsSetObjectForKeyPath(1, "A");
    StoreSupport::finishSaves();
    DispatchMainQueue::shared().drain();
    rewriteSettings({{"A", 2}, {"B", 1}});
    Monitoring::notify();
    EXPECT_THAT(monitoring.keyPaths(), ElementsAre("B"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 2);
    QRVSettings& store = QRVSettings::sharedSettings();
    ASSERT_TRUE(StoreSupport::drainUntil([&] { return store.localChanges().count() == 0; }));
    rewriteSettings({{"A", 2}, {"B", 2}});
    Monitoring::notify();
    EXPECT_THAT(monitoring.keyPaths(), ElementsAre("B"));
}

TEST(Reload, OfADeletedFileReportsEveryLeaf) {
    Monitoring monitoring;
    rewriteSettings({{"A", NSDictionary{{"B", 1}}}, {"C", NSArray{}}, {"D", NSDictionary{}}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A.B"), 1);
    std::filesystem::remove(QRVSettingsLocation());
    Monitoring::notify();
    EXPECT_THAT(monitoring.keyPaths(), UnorderedElementsAre("A.B", "C"));
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isNull());
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("A.B").isNull());
}

TEST(Reload, WithoutAHandlerOrACacheStillTakesTheTreeOver) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMonitorFileChanges(true);
    store.setDisableCache(true);
    rewriteSettings({{"A", 1}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    rewriteSettings({{"A", 2}});
    Monitoring::notify();
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 2);
}

TEST(Reload, TheHandlerMayInstallAnother) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMonitorFileChanges(true);
    int calls = 0;
    store.setOnChange([&store, &calls](const NSArray&) {
        store.setOnChange(nullptr);
        ++calls;
    });
    rewriteSettings({{"A", 1}});
    Monitoring::notify();
    EXPECT_EQ(calls, 1);
}

TEST(Reload, ThatWasReadBeforeAnotherWasPublishedReportsNothingTwice) {
    rewriteSettings({{"A", 0}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 0);
    const Monitoring monitoring;
    for (int reading = 0; reading < 2; ++reading) {
        rewriteSettings({{"A", 1}});
        Monitoring::notifyAndRead();
    }
    Monitoring::settle();
    EXPECT_EQ(monitoring.calls(), 1);
    EXPECT_THAT(monitoring.keyPaths(), ElementsAre("A"));
}

TEST(Reload, OfAFileThatWasChangedAndChangedBackBeforeTheFirstWasPublished) {
    rewriteSettings({{"A", 0}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 0);
    const Monitoring monitoring;
    rewriteSettings({{"A", 1}});
    Monitoring::notifyAndRead();
    rewriteSettings({{"A", 0}});
    Monitoring::notifyAndRead();
    Monitoring::settle();
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 0);
    EXPECT_EQ(monitoring.calls(), 2);
}

TEST(Reload, BeforeAPendingSaveIsPublishedAndTheFileIsReadOnceMoreBehindTheSave) {
    rewriteSettings({{"A", 0}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 0);
    const Monitoring monitoring;
    QRVSettings& store = QRVSettings::sharedSettings();
    std::promise<void> gate;
    store.queue().async([passed = gate.get_future().share()] { passed.wait(); });
    QRVSettingsSetObjectForKeyPath(5, "Own");
    rewriteSettings({{"A", 1}});
    Monitoring::notify();
    // No save has recorded "Own" yet.
    EXPECT_THAT(monitoring.keyPaths(), UnorderedElementsAre("A", "Own"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    gate.set_value();
    StoreSupport::finishSaves();
    Monitoring::settle();
    // The save has replaced the other process's change.
    EXPECT_EQ(monitoring.calls(), 2);
    EXPECT_THAT(monitoring.keyPaths(), ElementsAre("A"));
    EXPECT_EQ(StoreSupport::fileTree(), NSDictionary({{"A", 0}, {"Own", 5}}));
    EXPECT_EQ(QRVSettingsStoredValues(), StoreSupport::fileTree());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Own"), 5);
}

TEST(Reload, FromBeforeASaveThatEndsMeanwhileIsPublishedAndReadOnceMore) {
    rewriteSettings({{"A", 0}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 0);
    const Monitoring monitoring;
    QRVSettings& store = QRVSettings::sharedSettings();
    std::promise<void> gate;
    store.queue().async([passed = gate.get_future().share()] { passed.wait(); });
    QRVSettingsSetObjectForKeyPath(5, "Own");
    rewriteSettings({{"A", 1}});
    Monitoring::notifyAndRead();
    gate.set_value();
    StoreSupport::finishSaves();
    Monitoring::settle();
    EXPECT_EQ(monitoring.calls(), 2);
    EXPECT_EQ(QRVSettingsStoredValues(), StoreSupport::fileTree());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Own"), 5);
}

TEST(Reload, HoweverManyAreBesideAWriteTheFileIsReadOnceMoreForAllOfThem) {
    constexpr int many = 50;
    rewriteSettings({{"A", 0}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 0);
    const Monitoring monitoring;
    std::promise<void> gate;
    QRVSettings::sharedSettings().queue().async(
        [passed = gate.get_future().share()] { passed.wait(); });
    QRVSettingsSetObjectForKeyPath(5, "Own");
    for (int number = 1; number <= many; ++number) {
        rewriteSettings({{"A", number}});
        Monitoring::notify();
    }
    EXPECT_EQ(monitoring.calls(), many);
    FileEvents openings(QRVSettingsLocation(), IN_OPEN);
    gate.set_value();
    StoreSupport::finishSaves();
    Monitoring::settle();
    EXPECT_LE(openings.count(), 3) << "the save, the second reading and at most a third";
    EXPECT_EQ(QRVSettingsStoredValues(), StoreSupport::fileTree());
}

TEST(Reload, WhoseSecondReadingFindsOnlyOwnChangesTakesThemOverWithoutReportingThem) {
    rewriteSettings({{"A", 0}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 0);
    const Monitoring monitoring;
    rewriteSettings({{"A", 1}});
    Monitoring::notifyAndRead();
    QRVSettingsSetObjectForKeyPath(2, "A");
    StoreSupport::finishSaves();
    Monitoring::settle();
    EXPECT_EQ(monitoring.calls(), 1);
    EXPECT_THAT(monitoring.keyPaths(), ElementsAre("A"));
    EXPECT_EQ(StoreSupport::fileTree(), NSDictionary({{"A", 2}}));
    EXPECT_EQ(QRVSettingsStoredValues(), StoreSupport::fileTree());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 2);
}

TEST(Reload, ReportsAKeyPathWhoseOwnRecordArrivesAfterTheReading) {
    rewriteSettings({{"A", 0}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 0);
    const Monitoring monitoring;
    QRVSettings& store = QRVSettings::sharedSettings();
    QRVSettingsSetObjectForKeyPath(1, "A");
    store.queue().sync([] {});
    rewriteSettings({{"A", 2}});
    Monitoring::notifyAndRead();
    EXPECT_EQ(store.localChanges().count(), 0U);
    Monitoring::settle();
    EXPECT_EQ(store.localChanges().count(), 1U);
    EXPECT_EQ(monitoring.calls(), 1);
    EXPECT_THAT(monitoring.keyPaths(), ElementsAre("A"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 2);
}

TEST(Reload, OfATreeThatThisProcessHasChangedSinceIsPublishedAndReadOnceMore) {
    rewriteSettings({{"A", 0}, {"B", 0}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 0);
    const Monitoring monitoring;
    rewriteSettings({{"A", 1}, {"B", 0}});
    Monitoring::notifyAndRead();
    QRVSettingsSetObjectForKeyPath(5, "Own");
    DispatchMainQueue::shared().drain();
    EXPECT_THAT(monitoring.keyPaths(), ElementsAre("A")) << "the change is reported all the same";
    StoreSupport::finishSaves();
    Monitoring::settle();
    EXPECT_EQ(QRVSettingsStoredValues(), StoreSupport::fileTree());
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Own"), 5);
}

TEST(Reload, OfAFileThatAReadFoundWhereNoneWasReportsItsSettings) {
    rewriteSettings({{"A", 1}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 1);
    const Monitoring monitoring;
    std::filesystem::remove(QRVSettingsLocation());
    Monitoring::notify();
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("A").isNull());
    rewriteSettings({{"A", 2}, {"B", 3}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("B"), 3) << "reads the file again";
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("A").isNull()) << "cached as absent";
    Monitoring::notify();
    EXPECT_EQ(monitoring.calls(), 2);
    EXPECT_THAT(monitoring.keyPaths(), UnorderedElementsAre("A", "B"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("A"), 2);
}

TEST(Prepare, ActivatesTheDefaultProfileAndMigrates) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setActiveProfile("work");
    writeSettings(
        NSDictionary{{"CPU", NSDictionary{{"Menubar", NSDictionary{{"Enabled", false}}}}}});
    store.prepare();
    EXPECT_EQ(store.activeProfile(), "default");
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath("CPU.Menubar.Enabled"), false);
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("Migration.Profiles"), true);
    EXPECT_FALSE(store.prepared()) << "that flag is the host's";
}

TEST(Prepare, WatchesOnlyWhenAskedTo) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.prepare();
    EXPECT_EQ(store.presenterQueue(), nullptr);
    store.setMonitorFileChanges(true);
    EXPECT_EQ(store.presenterQueue(), nullptr);
    store.prepare();
    EXPECT_NE(store.presenterQueue(), nullptr);
    EXPECT_EQ(store.presentedItemOperationQueue(), store.presenterQueue());
    EXPECT_EQ(store.presentedItemURL(), store.location());
}

TEST(Prepare, RegistersOnceAndDoesTheRestAgain) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMonitorFileChanges(true);
    store.prepare();
    const auto queue = store.presenterQueue();
    store.setActiveProfile("work");
    store.prepare();
    EXPECT_EQ(store.presenterQueue(), queue);
    EXPECT_EQ(store.activeProfile(), "default");
}

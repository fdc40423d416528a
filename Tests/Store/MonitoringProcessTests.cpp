// SPDX-License-Identifier: MIT
// Two processes and one settings file: what one writes reaches the other's change handler.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <set>
#include <string>
#include <thread>
#include <utility>

#include "Files/SystemCallFilter.h"
#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"
#include "Support/MachineSupport.h"
#include "Support/StoreSupport.h"

using namespace QRVPlatform;

using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::SystemLogLines;

namespace {

namespace fs = std::filesystem;

/// The settings of the file with one more, as somebody else writes them.
std::string bytesWith(const std::string& key) {
    const NSDictionary stored = fileTree();
    const NSMutableDictionary tree = stored.isNull() ? NSMutableDictionary() : stored.mutableCopy();
    tree.setObjectForKey("x", key);
    return NSPropertyListSerialization::dataWithPropertyList(tree).bytes;
}

void replaceFileWith(const std::string& key) {
    EXPECT_FALSE(replaceFile(QRVSettingsLocation(), bytesWith(key)));
}

enum class AtStart { Saves, LeavesTheFileAlone };

/// This process as a host that has started and watches, with the key paths that its handler
/// received.
class Host {
  public:
    explicit Host(AtStart atStart = AtStart::Saves) {
        MachineSupport::beMachine("1", "M");
        QRVSettings& store = QRVSettings::sharedSettings();
        store.setInBatchSave(atStart == AtStart::LeavesTheFileAlone);
        store.setMonitorFileChanges(true);
        store.setOnChange([this](const NSArray& changes) {
            for (const PropertyListValue& keyPath : changes)
                received_.insert(keyPath.stringValue());
        });
        store.loadDefaults();
        store.prepare();
        finishSaves();
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host() { QRVSettings::sharedSettings().setOnChange(nullptr); }

    [[nodiscard]] const std::multiset<std::string>& received() const { return received_; }
    /// False when the key path has not arrived by the deadline.
    [[nodiscard]] bool receives(const std::string& keyPath) const {
        return drainUntil([&] { return received_.contains(keyPath); });
    }

    /// When this returns, everything that the watcher noticed before is handled.
    void receiveAChangeBySomebodyElse() const {
        replaceFileWith("Other");
        EXPECT_TRUE(receives("Other"));
        settle();
    }

    /// Waits until changes are no longer taken for those that this process made at its start.
    static void forgetOwnChanges() {
        DispatchMainQueue::shared().drain();
        const NSMutableArray localChanges = QRVSettings::sharedSettings().localChanges();
        EXPECT_GT(localChanges.count(), 0U);
        EXPECT_TRUE(drainUntil([&] { return localChanges.count() == 0; }));
    }

    /// Returns when every change that the watcher has noticed is handled.
    static void settle() {
        QRVSettings& store = QRVSettings::sharedSettings();
        store.readQueue().sync([] {});
        DispatchMainQueue::shared().drain();
    }

  private:
    std::multiset<std::string> received_;
};

// Made before the host's threads are, so that the fork copies none of them.
class Writer {
  public:
    explicit Writer(const std::function<void()>& work)
        : process_([this, work] {
              if (!start_.wait()) return false;
              work();
              finishSaves();
              return true;
          }) {}
    bool run() {
        start_.open();
        return process_.succeeded();
    }

  private:
    Gate start_;
    ChildProcess process_;
};

/// How often the threads of this process but the main one have gone to sleep.
std::size_t sleepsOfOtherThreads() {
    std::size_t count = 0;
    for (const auto& task : fs::directory_iterator("/proc/self/task")) {
        if (task.path().filename() == std::to_string(getpid())) continue;
        std::ifstream status(task.path() / "status");
        for (std::string word; status >> word;) {
            std::size_t sleeps = 0;
            if (word == "voluntary_ctxt_switches:" && status >> sleeps) count += sleeps;
        }
    }
    return count;
}

std::set<int> descriptorsThatStayOpenOnExec() {
    std::set<int> numbers;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        const int number = std::stoi(entry.path().filename());
        if ((fcntl(number, F_GETFD) & FD_CLOEXEC) == 0) numbers.insert(number);
    }
    return numbers;
}

fs::path settingsFolder() {
    return fs::path(QRVSettingsLocation()).parent_path();
}

}  // namespace

TEST(Monitoring, AChangeByAnotherProcessReachesTheHandler) {
    Writer writer([] { QRVSettingsSetObjectForKeyPath(false, "CPU.Menubar.Enabled"); });
    const Host host;
    EXPECT_TRUE(QRVSettingsBoolForKeyPath("CPU.Menubar.Enabled"));
    ASSERT_TRUE(writer.run());
    EXPECT_TRUE(host.receives("CPU.Menubar.Enabled"));
    EXPECT_EQ(host.received().size(), 1U);
    EXPECT_FALSE(QRVSettingsBoolForKeyPath("CPU.Menubar.Enabled"));
}

TEST(Monitoring, AChangeByAnotherProcessWakesOneThreadBesideTheMainOne) {
    constexpr std::size_t changes = 100;
    const Gate isWanted;
    Writer writer([&isWanted] {
        std::ifstream wanted(isWanted.pathToWait());
        for (std::size_t number = 0; number < changes; ++number) {
            wanted.get();
            QRVSettingsSetObjectForKeyPath(static_cast<int>(number), "Other");
            finishSaves();
        }
    });
    const Host host;
    host.receiveAChangeBySomebodyElse();
    const std::size_t received = host.received().size();
    // What others do in folders above wakes the watching thread, too: so the quietest ten changes
    // count.
    constexpr std::size_t together = 10;
    std::size_t least = SIZE_MAX;
    std::size_t before = sleepsOfOtherThreads();
    std::thread run([&writer] { EXPECT_TRUE(writer.run()); });
    bool hasAll = true;
    for (std::size_t number = 1; number <= changes; ++number) {
        isWanted.open();
        hasAll = hasAll && drainUntil([&] { return host.received().size() == received + number; });
        if (number % together != 0) continue;
        const std::size_t now = sleepsOfOtherThreads();
        least = std::min(least, now - std::exchange(before, now));
    }
    run.join();
    EXPECT_TRUE(hasAll);
    EXPECT_LE(least, 3 * together);
}

TEST(Monitoring, ABatchOfAnotherProcessArrivesAsOneChange) {
    Writer writer([] {
        QRVSettingsPrepareBatchSave();
        QRVSettingsSetObjectForKeyPath(1, "X.A");
        QRVSettingsSetObjectForKeyPath(2, "X.B");
        QRVSettingsCommitBatchSave();
    });
    const Host host;
    ASSERT_TRUE(writer.run());
    EXPECT_TRUE(drainUntil([&] { return !host.received().empty(); }));
    EXPECT_EQ(host.received(), (std::multiset<std::string>{"X.A", "X.B"}));
}

TEST(Monitoring, TheFinalContentsArriveHoweverManySavesThereWere) {
    constexpr int saves = 300;
    Writer writer([] {
        for (int number = 1; number <= saves; ++number) {
            QRVSettingsSetObjectForKeyPath(number, "Counter");
            finishSaves();
        }
    });
    const Host host;
    ASSERT_TRUE(writer.run());
    EXPECT_TRUE(drainUntil([] { return QRVSettingsObjectForKeyPath("Counter") == saves; }));
}

TEST(Monitoring, TheWriterDoesNotReceiveItsOwnSaves) {
    const Host host;
    const SystemLogLines log;
    for (int number = 1; number <= 100; ++number) QRVSettingsSetObjectForKeyPath(number, "Own");
    finishSaves();
    host.receiveAChangeBySomebodyElse();
    EXPECT_EQ(host.received(), (std::multiset<std::string>{"Other"}));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Own"), 100);
}

TEST(Monitoring, AnEditorsWriteInPiecesArrivesWhole) {
    const Host host;
    host.receiveAChangeBySomebodyElse();
    const std::string bytes = bytesWith("Edited");
    {
        std::ofstream file(QRVSettingsLocation(), std::ios::binary);
        for (const char byte : bytes) file.put(byte).flush();
    }
    EXPECT_TRUE(host.receives("Edited"));
    Host::settle();
    EXPECT_EQ(host.received(), (std::multiset<std::string>{"Edited", "Other"}));
}

TEST(Monitoring, DeletingAndCreatingTheFileArrives) {
    const Host host;
    Host::forgetOwnChanges();
    const NSDictionary tree = fileTree();
    std::filesystem::remove(QRVSettingsLocation());
    EXPECT_TRUE(host.receives("Device.Model"));
    StoreSupport::writeSettings(tree);
    EXPECT_TRUE(drainUntil([&] { return host.received().count("Device.Model") == 2; }));
    EXPECT_EQ(QRVSettingsStoredValues(), tree);
}

TEST(Monitoring, RestoringAnOlderFileArrives) {
    const Host host;
    const std::string backup = QRVSettingsLocation() + ".backup";
    StoreSupport::writeFile(backup, bytesWith("Restored"));
    const auto date = std::filesystem::file_time_type::clock::now() - std::chrono::hours(48);
    std::filesystem::last_write_time(backup, date);
    std::filesystem::rename(backup, QRVSettingsLocation());
    EXPECT_TRUE(host.receives("Restored"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Restored"), "x");
}

TEST(Monitoring, AFileThatIsTouchedOrReplacedByItselfCallsNothing) {
    const Host host;
    Host::forgetOwnChanges();
    const SystemLogLines log;
    const std::string same = StoreSupport::contentsOf(QRVSettingsLocation());
    for (int round = 0; round < 3; ++round) {
        EXPECT_FALSE(replaceFile(QRVSettingsLocation(), same));
        fs::last_write_time(QRVSettingsLocation(), fs::file_time_type::clock::now());
    }
    host.receiveAChangeBySomebodyElse();
    EXPECT_EQ(host.received(), (std::multiset<std::string>{"Other"}));
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"Prefs file changed"}));
}

TEST(Monitoring, AChangeThroughASymbolicLinkArrives) {
    const fs::path target = fs::absolute("elsewhere/settings.plist");
    StoreSupport::writeFile(target, "");
    fs::create_directories(settingsFolder());
    fs::create_symlink(target, QRVSettingsLocation());
    const Host host;
    EXPECT_FALSE(replaceFile(target, bytesWith("AtTheTarget")));
    EXPECT_TRUE(host.receives("AtTheTarget"));
    replaceFileWith("ThroughTheLink");
    EXPECT_TRUE(host.receives("ThroughTheLink"));
    EXPECT_TRUE(fs::is_symlink(QRVSettingsLocation()));
}

TEST(Monitoring, AFolderThatComesAfterPrepareIsWatched) {
    const Host host(AtStart::LeavesTheFileAlone);
    ASSERT_FALSE(fs::exists(settingsFolder()));
    StoreSupport::writeSettings(bytesWith("First"));
    EXPECT_TRUE(host.receives("First"));
    replaceFileWith("Second");
    EXPECT_TRUE(host.receives("Second"));
}

TEST(Monitoring, AFolderThatIsDeletedRenamedAndRecreatedIsFollowed) {
    const Host host;
    Host::forgetOwnChanges();
    const std::string bytes = bytesWith("Recreated");
    fs::remove_all(settingsFolder());
    EXPECT_TRUE(host.receives("Device.Model"));
    StoreSupport::writeSettings(bytes);
    EXPECT_TRUE(host.receives("Recreated"));
    fs::rename(settingsFolder(), "away");
    EXPECT_TRUE(drainUntil([&] { return host.received().count("Recreated") == 2; }));
    EXPECT_EQ(QRVSettingsStoredValues(), nullptr);
    fs::rename("away", settingsFolder());
    EXPECT_TRUE(drainUntil([&] { return host.received().count("Recreated") == 3; }));
    replaceFileWith("Last");
    EXPECT_TRUE(host.receives("Last"));
}

TEST(Monitoring, WithoutInotifyChangesStillArrive) {
    const Gate isReady;
    ChildProcess child([&] {
        failCall(SystemCall::InotifyStart, EMFILE);
        const Host host;
        isReady.open();
        return host.receives("Polled");
    });
    ASSERT_TRUE(isReady.wait());
    replaceFileWith("Polled");
    EXPECT_TRUE(child.succeeded());
}

TEST(Monitoring, TwoThatSaveHundredsOfTimesEndWithTheSameSettings) {
    constexpr int saves = 300;
    const auto saveMany = [](const std::string& keyPath) {
        for (int number = 1; number <= saves; ++number) {
            QRVSettingsSetObjectForKeyPath(number, keyPath);
            finishSaves();
            DispatchMainQueue::shared().drain();
        }
    };
    const auto agreesWithTheFile = [] {
        return drainUntil([] { return QRVSettingsStoredValues() == fileTree(); });
    };
    const Gate isReady;
    const Gate hasSaved;
    ChildProcess other([&] {
        const Host host;
        isReady.open();
        saveMany("B");
        hasSaved.open();
        return agreesWithTheFile();
    });
    ASSERT_TRUE(isReady.wait());
    const Host host;
    saveMany("A");
    ASSERT_TRUE(hasSaved.wait());
    EXPECT_TRUE(agreesWithTheFile()) << QRVSettingsStoredValues() << fileTree();
    EXPECT_TRUE(other.succeeded());
}

TEST(Monitoring, AChangeReadBesideAWriteArrivesAndMemoryEndsAsTheFile) {
    Writer writer([] { QRVSettingsSetObjectForKeyPath("x", "Other"); });
    const Host host;
    ASSERT_TRUE(writer.run());
    const QRVSettings& store = QRVSettings::sharedSettings();
    ASSERT_TRUE(waitUntil([&store] {
        const auto attributes = attributesOfItemAtPath(store.location());
        return attributes && store.modificationDate() == attributes->modificationDate;
    }));
    store.readQueue().sync([] {});  // it is read now, and not yet published
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("Other").isNull());
    QRVSettingsSetObjectForKeyPath("y", "Own");
    EXPECT_TRUE(host.receives("Other"));
    finishSaves();
    EXPECT_EQ(fileTree().objectForKey("Own"), "y");
    EXPECT_TRUE(drainUntil([] { return QRVSettingsStoredValues() == fileTree(); }));
}

TEST(Monitoring, WhatChangedBeforeTheWatchBeganReachesTheHandler) {
    StoreSupport::writeSettings(NSDictionary{{"First", 1}});
    MachineSupport::beMachine("1", "M");
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);  // nothing of this process's own goes over the change
    std::set<std::string> received;
    store.setOnChange([&received](const NSArray& changes) {
        for (const PropertyListValue& keyPath : changes) received.insert(keyPath.stringValue());
    });
    store.setMonitorFileChanges(true);
    store.loadDefaults();
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("Missed").isNull());
    replaceFileWith("Missed");
    store.prepare();
    EXPECT_TRUE(drainUntil([&received] { return received.contains("Missed"); }));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Missed"), "x");
    store.setOnChange(nullptr);
}

TEST(Monitoring, AStartWithoutChangesPublishesNothing) {
    MachineSupport::beMachine("1", "M");
    StoreSupport::writeSettings(NSDictionary{{"First", 1}});
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setInBatchSave(true);
    const SystemLogLines log;
    store.setMonitorFileChanges(true);
    store.loadDefaults();
    store.prepare();
    const NSDictionary stored = store.storageCache();
    store.readQueue().sync([] {});
    DispatchMainQueue::shared().drain();
    EXPECT_FALSE(store.modificationDate());
    EXPECT_TRUE(store.storageCache().isIdenticalTo(stored));
    EXPECT_THAT(log.lines(), testing::Not(testing::Contains("Prefs file changed")));
}

TEST(Monitoring, AWholeLifeOpensEverythingCloseOnExec) {
    ChildProcess life([] {
        MachineSupport::beMachine("1", "M");
        const std::set<int> inherited = descriptorsThatStayOpenOnExec();
        const std::string theirs = bytesWith("Other");
        dieAtOpenWithoutCloseOnExec();
        QRVSettings& store = QRVSettings::sharedSettings();
        store.setMonitorFileChanges(true);
        store.loadDefaults();
        store.prepare();
        finishSaves();
        EXPECT_FALSE(replaceFile(QRVSettingsLocation(), theirs));
        EXPECT_TRUE(drainUntil([] { return QRVSettingsStoredObjectForKeyPath("Other") == "x"; }));
        EXPECT_EQ(descriptorsThatStayOpenOnExec(), inherited);
        return !testing::Test::HasFailure();
    });
    EXPECT_TRUE(life.succeeded());
}

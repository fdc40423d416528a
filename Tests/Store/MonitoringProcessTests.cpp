// SPDX-License-Identifier: MIT
// Two processes and one settings file: what one writes, the other's change handler is given.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"
#include "Support/MachineSupport.h"
#include "Support/StoreSupport.h"

using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::SystemLogLines;

namespace {

/// This process as a host that has started and watches, with what it was told so far.
class Host {
  public:
    Host() {
        MachineSupport::beMachine("1", "M");
        QRVSettings& store = QRVSettings::sharedSettings();
        store.setMonitorFileChanges(true);
        store.setOnChange([this](const NSArray& changes) {
            for (const PropertyListValue& keyPath : changes) told_.insert(keyPath.stringValue());
        });
        store.loadDefaults();
        store.prepare();
        finishSaves();
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host() { QRVSettings::sharedSettings().setOnChange(nullptr); }

    [[nodiscard]] const std::multiset<std::string>& told() const { return told_; }

    /// All that the watcher saw before has been handled then.
    void hearOfAChangeBySomebodyElse() const {
        const NSMutableDictionary tree = fileTree().mutableCopy();
        tree.setObjectForKey("x", "Other");
        const auto bytes = NSPropertyListSerialization::dataWithPropertyList(tree).bytes;
        EXPECT_FALSE(replaceFile(QRVSettingsLocation(), bytes));
        EXPECT_TRUE(drainUntil([this] { return told_.contains("Other"); }));
        settle();
    }

    /// Waits until changes are no longer taken for those that this process made at its start.
    static void forgetOwnChanges() {
        DispatchMainQueue::shared().drain();
        const NSMutableArray localChanges = QRVSettings::sharedSettings().localChanges();
        EXPECT_GT(localChanges.count(), 0U);
        EXPECT_TRUE(drainUntil([&] { return localChanges.count() == 0; }));
    }

    /// Everything that the watcher has been told of has been handled.
    static void settle() {
        QRVSettings& store = QRVSettings::sharedSettings();
        store.readQueue().sync([] {});
        DispatchMainQueue::shared().drain();
    }

  private:
    std::multiset<std::string> told_;
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

}  // namespace

TEST(Monitoring, AChangeByAnotherProcessReachesTheHandler) {
    Writer writer([] { QRVSettingsSetObjectForKeyPath(false, "CPU.Menubar.Enabled"); });
    const Host host;
    EXPECT_TRUE(QRVSettingsBoolForKeyPath("CPU.Menubar.Enabled"));
    ASSERT_TRUE(writer.run());
    EXPECT_TRUE(drainUntil([&] { return host.told().contains("CPU.Menubar.Enabled"); }));
    EXPECT_EQ(host.told().size(), 1U);
    EXPECT_FALSE(QRVSettingsBoolForKeyPath("CPU.Menubar.Enabled"));
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
    EXPECT_TRUE(drainUntil([&] { return !host.told().empty(); }));
    EXPECT_EQ(host.told(), (std::multiset<std::string>{"X.A", "X.B"}));
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

TEST(Monitoring, TheWriterIsNotToldOfItsOwnSaves) {
    const Host host;
    const SystemLogLines log;
    for (int number = 1; number <= 100; ++number) QRVSettingsSetObjectForKeyPath(number, "Own");
    finishSaves();
    host.hearOfAChangeBySomebodyElse();
    EXPECT_EQ(host.told(), (std::multiset<std::string>{"Other"}));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Own"), 100);
}

TEST(Monitoring, AnEditorsWriteInPiecesArrivesWhole) {
    const Host host;
    host.hearOfAChangeBySomebodyElse();
    const NSMutableDictionary tree = fileTree().mutableCopy();
    tree.setObjectForKey("edited", "Edited");
    const std::string bytes = NSPropertyListSerialization::dataWithPropertyList(tree).bytes;
    {
        std::ofstream file(QRVSettingsLocation(), std::ios::binary);
        for (const char byte : bytes) file.put(byte).flush();
    }
    EXPECT_TRUE(drainUntil([&] { return host.told().contains("Edited"); }));
    Host::settle();
    EXPECT_EQ(host.told(), (std::multiset<std::string>{"Edited", "Other"}));
}

TEST(Monitoring, DeletingAndCreatingTheFileArrives) {
    const Host host;
    Host::forgetOwnChanges();
    const NSDictionary tree = fileTree();
    std::filesystem::remove(QRVSettingsLocation());
    EXPECT_TRUE(drainUntil([&] { return host.told().contains("Device.Model"); }));
    StoreSupport::writeSettings(tree);
    EXPECT_TRUE(drainUntil([&] { return host.told().count("Device.Model") == 2; }));
    EXPECT_EQ(QRVSettingsStoredValues(), tree);
}

TEST(Monitoring, RestoringAnOlderFileArrives) {
    const Host host;
    const std::string backup = QRVSettingsLocation() + ".backup";
    const NSMutableDictionary tree = fileTree().mutableCopy();
    tree.setObjectForKey("old", "Restored");
    StoreSupport::writeFile(backup, NSPropertyListSerialization::dataWithPropertyList(tree).bytes);
    const auto date = std::filesystem::file_time_type::clock::now() - std::chrono::hours(48);
    std::filesystem::last_write_time(backup, date);
    std::filesystem::rename(backup, QRVSettingsLocation());
    EXPECT_TRUE(drainUntil([&] { return host.told().contains("Restored"); }));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Restored"), "old");
}

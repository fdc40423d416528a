// SPDX-License-Identifier: MIT
// Everything at once: a host that reads, writes, commits batches and receives changes, while two
// other processes save into the same file.

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <string>
#include <thread>

#include "Support/HostProcess.h"

using namespace HostProcess;
using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;

namespace {

/// Created while this process has no other thread. Saves many times, and a last time when nobody
/// else saves any more.
class Writer {
  public:
    Writer(std::string keyPath, Mode mode)
        : process_([this, keyPath, mode] {
              QRVSettings::sharedSettings().setMergesSaves(mode == Mode::Merging);
              if (!start_.wait()) return false;
              for (int number = 0; number < 100; ++number) {
                  QRVSettingsSetObjectForKeyPath(number, keyPath);
                  if (number % 5 == 0) finishSaves();
              }
              finishSaves();
              manyAreDone_.open();
              if (!last_.wait()) return false;
              // A new look at the file first: this process does not watch it.
              QRVSettings::sharedSettings().setStorageCache(nullptr);
              QRVSettingsSetObjectForKeyPath("last", keyPath);
              finishSaves();
              return true;
          }) {}

    void start() const { start_.open(); }
    [[nodiscard]] bool manyAreDone() const { return manyAreDone_.isOpen(); }
    bool saveTheLast() {
        last_.open();
        return process_.succeeded();
    }

  private:
    Gate start_;
    Gate manyAreDone_;
    Gate last_;
    ChildProcess process_;
};

/// What any thread may ask, asked all the time.
class Onlooker {
  public:
    Onlooker()
        : thread_([this] {
              const QRVSettings& store = QRVSettings::sharedSettings();
              while (!isOver_) {
                  seen_ += store.storageCache().count() + store.cache().count();
                  seen_ += store.monitorFileChanges() ? 1U : 0U;
                  seen_ += store.modificationDate().has_value() ? 1U : 0U;
                  seen_ += QRVSettingsMenuThemeForAppearance("NSAppearanceNameDarkAqua").size();
                  std::this_thread::yield();
              }
          }) {}
    Onlooker(const Onlooker&) = delete;
    Onlooker& operator=(const Onlooker&) = delete;
    ~Onlooker() {
        isOver_ = true;
        thread_.join();
        EXPECT_GT(seen_, 0U);
    }

  private:
    std::atomic<bool> isOver_ = false;
    std::uint64_t seen_ = 0;
    std::thread thread_;
};

std::string someKeyPath(std::mt19937& random) {
    return "Host.Group" + std::to_string(random() % 3) + ".Key" + std::to_string(random() % 5);
}

/// What this host wrote last, by key path.
using OwnWrites = std::map<std::string, int>;

void doSomething(std::mt19937& random, OwnWrites& own) {
    const std::string keyPath = someKeyPath(random);
    const int number = static_cast<int>(random() % 100);
    switch (random() % 10) {
        case 0:
            QRVSettingsPrepareBatchSave();
            break;
        case 1:
            QRVSettingsCommitBatchSave();
            break;
        case 2:
            QRVSettingsProfileSetObjectForKeyPath(NSArray({number}), keyPath);
            break;
        case 3:
            QRVSettingsSetObjectForKeyPath(number, keyPath);
            own[keyPath] = number;
            break;
        case 4:
            QRVSettingsClearCacheForKeyPath(keyPath);
            break;
        case 5:  // as a host that is not ahead of the disk for long
            finishSaves();
            DispatchMainQueue::shared().drain();
            break;
        case 6:
            QRVSettingsWaitForSaves(std::chrono::milliseconds(number % 2));
            break;
        case 7:  // as a notification, also when nothing has changed
            QRVSettings::sharedSettings().presenterQueue()->addOperation(
                [] { QRVSettings::sharedSettings().presentedItemDidChange(); });
            break;
        default:
            QRVSettingsBoolForKeyPath(keyPath);
            QRVSettingsProfileObjectForKeyPath(keyPath);
    }
}

OwnWrites runAmongTwoWriters(Mode mode) {
    Writer first("First", mode);
    Writer second("Second", mode);
    MachineSupport::beMachine("1", "M");
    QRVSettings& store = QRVSettings::sharedSettings();
    int changes = 0;
    store.setOnChange([&](const NSArray& keyPaths) {
        ++changes;
        for (const PropertyListValue& keyPath : keyPaths)
            QRVSettingsObjectForKeyPath(keyPath.stringValue());
    });
    HostProcess::start(mode, true);
    const Onlooker onlooker;
    first.start();
    second.start();

    OwnWrites own;
    std::mt19937 random(20);
    while (!first.manyAreDone() || !second.manyAreDone()) doSomething(random, own);
    QRVSettingsCommitBatchSave();
    finishSaves();
    EXPECT_TRUE(first.saveTheLast());
    EXPECT_TRUE(second.saveTheLast());

    EXPECT_TRUE(drainUntil([] {
        return QRVSettingsStoredObjectForKeyPath("First") == "last" &&
               QRVSettingsStoredObjectForKeyPath("Second") == "last";
    }));
    EXPECT_EQ(QRVSettingsStoredValues(), fileTree());
    EXPECT_GT(changes, 0);
    store.setOnChange(nullptr);
    return own;
}

}  // namespace

TEST(Stress, AHostAmongTwoWritersEndsWithWhatIsInTheFile) {
    runAmongTwoWriters(Mode::WholeTrees);
}

TEST(Stress, AHostThatMergesAmongTwoWritersLosesNothing) {
    const OwnWrites own = runAmongTwoWriters(Mode::Merging);
    const NSDictionary tree = fileTree();
    for (const auto& [keyPath, number] : own)
        EXPECT_EQ(NSDictionaryQRV::objectAtKeyPath(tree, keyPath), number) << keyPath;
    EXPECT_FALSE(own.empty());
}

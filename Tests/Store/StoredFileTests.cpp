// SPDX-License-Identifier: MIT
// When a save backs up the file first, and the changes by others that the start of the watch
// publishes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <set>

#include "Platform/Files/Files.h"
#include "Support/StoreSupport.h"

using StoreSupport::drainUntil;
using StoreSupport::fileTree;
using StoreSupport::finishSaves;
using StoreSupport::SystemLogLines;
using StoreSupport::writeSettings;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

namespace fs = std::filesystem;

fs::path settingsFile() {
    return QRVSettingsLocation();
}

/// Something that is there and cannot be read.
void putPipeInPlace() {
    fs::create_directories(settingsFile().parent_path());
    ASSERT_EQ(mkfifo(settingsFile().c_str(), 0600), 0);
}

/// Somebody else's settings, which take the place of whatever is there.
void renameIntoPlace(const NSDictionary& tree) {
    const fs::path made = fs::absolute("made");
    StoreSupport::writeFile(made, NSPropertyListSerialization::dataWithPropertyList(tree).bytes);
    fs::create_directories(settingsFile().parent_path());
    fs::rename(made, settingsFile());
}

std::set<std::string> filesInTheFolder() {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(settingsFile().parent_path()))
        names.insert(entry.path().filename());
    return names;
}

std::set<std::string> fileAndLock() {
    const std::string name = settingsFile().filename();
    return {name, "." + name + ".lock"};
}

std::set<std::string> fileLockAndBackup() {
    std::set<std::string> names = fileAndLock();
    names.insert(settingsFile().filename().string() + ".damaged-1");
    return names;
}

void save(const PropertyListValue& value, QRVKeyPath keyPath) {
    QRVSettingsSetObjectForKeyPath(value, keyPath);
    finishSaves();
}

/// The key paths that the change handler received.
class Received {
  public:
    Received() {
        QRVSettings& store = QRVSettings::sharedSettings();
        store.setMonitorFileChanges(true);
        store.setOnChange([this](const NSArray& changes) {
            for (const PropertyListValue& keyPath : changes)
                keyPaths_.insert(keyPath.stringValue());
        });
    }
    Received(const Received&) = delete;
    Received& operator=(const Received&) = delete;
    ~Received() { QRVSettings::sharedSettings().setOnChange(nullptr); }

    [[nodiscard]] bool includes(const std::string& keyPath) const {
        return drainUntil([&] { return keyPaths_.contains(keyPath); });
    }
    [[nodiscard]] const std::set<std::string>& keyPaths() const { return keyPaths_; }

  private:
    std::set<std::string> keyPaths_;
};

/// Saves nothing, so that the file stays as the others wrote it.
void prepareInABatch() {
    QRVSettings::sharedSettings().setInBatchSave(true);
    QRVSettings::sharedSettings().prepare();
}

/// All that a notification or the start of the watch leads to has been done.
void settle() {
    QRVSettings& store = QRVSettings::sharedSettings();
    constexpr int steps = 3;
    for (int step = 0; step < steps; ++step) {
        store.queue().sync([] {});
        store.readQueue().sync([] {});
        DispatchMainQueue::shared().drain();
    }
}

}  // namespace

TEST(Backup, AFileThatAReloadHasTakenOverNeedsNone) {
    putPipeInPlace();
    EXPECT_TRUE(QRVSettingsObjectForKeyPath("A").isNull());
    {
        const Received received;
        QRVSettings::sharedSettings().prepare();
        finishSaves();
        const SystemLogLines log;
        renameIntoPlace({{"A", 1}});
        ASSERT_TRUE(received.includes("A"));
        save(2, "B");
        EXPECT_THAT(log.lines(), ElementsAre("Prefs file changed"));
    }
    EXPECT_EQ(filesInTheFolder(), fileAndLock());
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"B", 2}}));
}

TEST(Backup, AFileThatAReloadHasFoundEqualNeedsNone) {
    putPipeInPlace();
    const Received received;
    save(1, "A");
    renameIntoPlace({{"A", 1}});
    QRVSettings::sharedSettings().presentedItemDidChange();
    settle();
    const SystemLogLines log;
    save(2, "B");
    EXPECT_THAT(received.keyPaths(), testing::IsEmpty());
    EXPECT_THAT(log.lines(), testing::IsEmpty());
    EXPECT_EQ(filesInTheFolder(), fileAndLock());
}

TEST(Backup, AFileThatCameAfterASaveOfThisProcessNeedsNone) {
    putPipeInPlace();
    save(1, "A");
    fs::remove(settingsFile());
    save(2, "B");
    ASSERT_EQ(fileTree(), NSDictionary({{"A", 1}, {"B", 2}}));
    renameIntoPlace({{"C", 3}});
    const SystemLogLines log;
    save(4, "D");
    EXPECT_THAT(log.lines(), testing::IsEmpty());
    EXPECT_EQ(filesInTheFolder(), fileAndLock());
}

TEST(Backup, AFileThatCouldNotBeReadAndWasNotReloadedNeedsOne) {
    putPipeInPlace();
    save(1, "A");
    renameIntoPlace({{"Unknown", 1}});
    const SystemLogLines log;
    save(2, "B");
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("could not be read before")));
    EXPECT_EQ(filesInTheFolder(), fileLockAndBackup());
    EXPECT_EQ(fileTree(), NSDictionary({{"A", 1}, {"B", 2}}));
    save(3, "C");
    EXPECT_EQ(filesInTheFolder(), fileLockAndBackup()) << "one backup is enough";
}

TEST(Backup, AFileThatAReloadCouldNotReadEitherNeedsOne) {
    putPipeInPlace();
    const Received received;
    save(nullptr, "A");  // a tree without a value, so that the reload finds no change
    QRVSettings::sharedSettings().presentedItemDidChange();
    settle();
    renameIntoPlace({{"Unknown", 1}});
    const SystemLogLines log;
    save(2, "B");
    EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("could not be read before")));
    EXPECT_EQ(filesInTheFolder(), fileLockAndBackup());
}

TEST(StartOfTheWatch, PublishesWhatChangedSinceTheStoreReadTheTree) {
    const Received received;
    writeSettings(NSDictionary{{"First", 1}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("First"), 1);
    renameIntoPlace({{"First", 1}, {"Missed", 1}});
    prepareInABatch();
    EXPECT_TRUE(received.includes("Missed"));
}

TEST(StartOfTheWatch, PublishesWhatChangedSinceTheHostReadTheTree) {
    const Received received;
    writeSettings(NSDictionary{{"First", 1}});
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setStorageCache(QRVSettingsStorage().mutableCopy());
    renameIntoPlace({{"First", 1}, {"Missed", 1}});
    prepareInABatch();
    EXPECT_TRUE(received.includes("Missed"));
    EXPECT_EQ(QRVSettingsObjectForKeyPath("Missed"), 1);
}

TEST(StartOfTheWatch, PublishesAFileThatWasNotThereWhenTheHostRead) {
    const Received received;
    EXPECT_TRUE(QRVSettingsStorage().isNull());
    renameIntoPlace({{"Missed", 1}});
    EXPECT_EQ(QRVSettingsStoredObjectForKeyPath("Missed"), 1);
    QRVSettings::sharedSettings().setStorageCache(NSMutableDictionary());
    prepareInABatch();
    EXPECT_TRUE(received.includes("Missed"));
}

TEST(StartOfTheWatch, PublishesWhatChangedSinceAReload) {
    const Received received;
    writeSettings(NSDictionary{{"First", 1}});
    QRVSettings::sharedSettings().presentedItemDidChange();
    ASSERT_TRUE(received.includes("First"));
    renameIntoPlace({{"First", 1}, {"Missed", 1}});
    prepareInABatch();
    EXPECT_TRUE(received.includes("Missed"));
}

TEST(StartOfTheWatch, PublishesNothingTwice) {
    const Received received;
    writeSettings(NSDictionary{{"First", 1}});
    EXPECT_EQ(QRVSettingsObjectForKeyPath("First"), 1);
    renameIntoPlace({{"First", 2}});
    QRVSettings::sharedSettings().presentedItemDidChange();
    ASSERT_TRUE(received.includes("First"));
    prepareInABatch();
    const NSDictionary tree = QRVSettings::sharedSettings().storageCache();
    settle();
    EXPECT_EQ(received.keyPaths(), std::set<std::string>{"First"});
    EXPECT_TRUE(QRVSettings::sharedSettings().storageCache().isIdenticalTo(tree))
        << "the unsaved writes of the batch are still there";
}

TEST(StartOfTheWatch, PublishesNoOwnWrites) {
    const Received received;
    writeSettings(NSDictionary{{"First", 1}});
    EXPECT_EQ(QRVSettingsStorage(), NSDictionary({{"First", 1}}));
    QRVSettingsImport({{"Imported", 1}});
    QRVSettings::sharedSettings().prepare();
    save(1, "Own");
    settle();
    EXPECT_THAT(received.keyPaths(), testing::IsEmpty());
    EXPECT_EQ(QRVSettingsStoredValues(), fileTree());
}

TEST(StartOfTheWatch, WithoutAReadingPublishesLaterChangesOnly) {
    const Received received;
    writeSettings(NSDictionary{{"First", 1}});
    QRVSettings::sharedSettings().setStorageCache(NSMutableDictionary{{"Own", 1}});
    prepareInABatch();
    settle();
    EXPECT_THAT(received.keyPaths(), testing::IsEmpty());
    renameIntoPlace({{"Second", 1}});
    EXPECT_TRUE(received.includes("Second"));
}

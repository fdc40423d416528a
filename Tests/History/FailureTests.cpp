// SPDX-License-Identifier: MIT
// What stands in the way of the database, and that saves do not notice.

#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>

#include <fstream>
#include <memory>
#include <mutex>

#include "HistorySupport.h"
#include "Recorder.h"
#include "Support/ChildProcess.h"
#include "Support/Shortages.h"

using namespace HistorySupport;
using QRVHistoryInside::Recorder;
namespace fs = std::filesystem;

namespace {

/// What the failure handler receives during its life.
class Failures {
  public:
    Failures() {
        QRVPlatform::setFileFailureHandler([this](const QRVPlatform::FileFailure& failure) {
            const std::lock_guard lock(mutex_);
            if (failure.operation == "write history") failures_.push_back(failure);
        });
    }
    Failures(const Failures&) = delete;
    Failures& operator=(const Failures&) = delete;
    ~Failures() { QRVPlatform::setFileFailureHandler(nullptr); }

    [[nodiscard]] std::vector<QRVPlatform::FileFailure> all() {
        const std::lock_guard lock(mutex_);
        return failures_;
    }

  private:
    std::mutex mutex_;
    std::vector<QRVPlatform::FileFailure> failures_;
};

/// Another program at the database.
class OtherConnection {
  public:
    OtherConnection() { sqlite3_open(QRVHistoryLocation().c_str(), &database_); }
    OtherConnection(const OtherConnection&) = delete;
    OtherConnection& operator=(const OtherConnection&) = delete;
    ~OtherConnection() { sqlite3_close(database_); }
    void run(const char* statement) const {
        EXPECT_EQ(sqlite3_exec(database_, statement, nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(database_);
    }

  private:
    sqlite3* database_ = nullptr;
};

bool isStored(const PropertyListValue& value, const char* key) {
    return QRVSettingsWaitForSaves(longTime).state == QRVSaveStatus::State::Saved &&
           StoreSupport::fileTree().objectForKey(key) == value;
}

/// Saves twice, which the history cannot enter.
void expectSavesWithoutEntry(Failures& failures, std::errc reason) {
    for (const int value : {1, 2}) {
        QRVSettingsSetObjectForKeyPath(value, "A");
        EXPECT_TRUE(isStored(value, "A"));
        EXPECT_FALSE(QRVHistoryWait(longTime));
    }
    ASSERT_EQ(failures.all().size(), 1U);
    EXPECT_EQ(failures.all()[0].path, QRVHistoryLocation());
    EXPECT_EQ(failures.all()[0].error, reason) << failures.all()[0].error.message();
}

/// What is entered of so many saves, each of a file of this size, that had to wait in memory.
Lines enteredLater(int count, std::uint64_t size) {
    StoreSupport::writeFile(getenv("XDG_STATE_HOME"), "a file in its place");
    start();
    const auto now = static_cast<std::int64_t>(NSDate::now().timeIntervalSince1970() * 1e9);
    const auto identity = [now, size](int value) {
        QRVPlatform::FileIdentity file;
        file.inode = 1;
        file.size = size;
        file.modificationTime = now - 1'000'000'000 + value;
        return file;
    };
    for (int value = 1; value <= count; ++value) {
        QRVFileChange change{.origin = "set", .isBeforeKnown = true};
        change.before = NSDictionary{{"A", value - 1}};
        change.after = NSDictionary{{"A", value}};
        change.fileBefore = identity(value - 1);
        change.fileAfter = identity(value);
        Recorder::shared()->add(change);
    }
    EXPECT_FALSE(QRVHistoryWait(longTime));
    fs::remove(getenv("XDG_STATE_HOME"));
    wait();
    Lines entered = lines();
    std::erase(entered, "?: A " + std::to_string(count) + " > none");  // There is no file.
    return entered;
}

/// Root may write anywhere. The home folder of the test becomes that of another user.
bool isNotRootFromNowOn() {
    if (geteuid() != 0) return true;
    constexpr uid_t nobody = 65534;
    return chown(getenv("HOME"), nobody, nobody) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0;
}

}  // namespace

TEST(HistoryFailure, OfAMissingFolderIsToldOnceAndMadeUpForLater) {
    Failures failures;
    StoreSupport::writeFile(getenv("XDG_STATE_HOME"), "a file in its place");
    start();
    expectSavesWithoutEntry(failures, std::errc::not_a_directory);
    fs::remove(getenv("XDG_STATE_HOME"));
    set(3, "A");
    EXPECT_EQ(lines(), (Lines{"test/set: A none > 1", "test/set: A 1 > 2", "test/set: A 2 > 3"}));
}

TEST(HistoryFailure, OfAFolderThatIsReadOnlyIsToldOnce) {
    ASSERT_TRUE(isNotRootFromNowOn());
    Failures failures;
    fs::create_directories(getenv("XDG_STATE_HOME"));
    fs::permissions(getenv("XDG_STATE_HOME"), fs::perms(0500));
    start();
    expectSavesWithoutEntry(failures, std::errc::permission_denied);
    fs::permissions(getenv("XDG_STATE_HOME"), fs::perms(0700));
}

TEST(HistoryFailure, OfSomethingElseInItsPlaceIsToldOnce) {
    Failures failures;
    fs::create_directories(QRVHistoryLocation());
    start();
    expectSavesWithoutEntry(failures, std::errc::not_supported);
}

TEST(HistoryFailure, OfALinkOfAnotherUserIsToldOnceToRootWhichLeavesItsFileAlone) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root";
    constexpr uid_t nobody = 65534;
    Failures failures;
    const std::string file = fs::absolute("of-the-system").string();
    StoreSupport::writeFile(file, "");
    fs::permissions(file, fs::perms(0644));
    fs::create_directories(fs::path(QRVHistoryLocation()).parent_path());
    fs::create_symlink(file, QRVHistoryLocation());
    ASSERT_EQ(lchown(QRVHistoryLocation().c_str(), nobody, nobody), 0);
    start();
    expectSavesWithoutEntry(failures, std::errc::operation_not_permitted);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0644));
    EXPECT_EQ(StoreSupport::contentsOf(file), "");
}

TEST(HistoryFailure, OfALaterVersionLeavesTheDatabaseAlone) {
    Failures failures;
    StoreSupport::writeFile(QRVHistoryLocation(), "");
    OtherConnection().run("PRAGMA user_version = 1000000; CREATE TABLE later(a)");
    const std::string bytes = StoreSupport::contentsOf(QRVHistoryLocation());
    start();
    expectSavesWithoutEntry(failures, std::errc::not_supported);
    EXPECT_EQ(StoreSupport::contentsOf(QRVHistoryLocation()), bytes);
    EXPECT_NE(QRVHistorySaves().failure, "");
}

TEST(HistoryFailure, OfALockedDatabaseIsMadeUpForWhenItIsFree) {
    start();
    set(1, "A");
    OtherConnection other;
    other.run("BEGIN EXCLUSIVE");
    QRVSettingsSetObjectForKeyPath(2, "A");
    EXPECT_TRUE(isStored(2, "A"));
    EXPECT_FALSE(QRVHistoryWait(std::chrono::milliseconds(10)));
    QRVSettingsSetObjectForKeyPath(3, "A");
    EXPECT_TRUE(isStored(3, "A"));
    other.run("COMMIT");
    wait();
    EXPECT_EQ(lines(), (Lines{"test/set: A none > 1", "test/set: A 1 > 2", "test/set: A 2 > 3"}));
}

TEST(HistoryFailure, OfALockThatStaysIsToldOnceAndRetriedByTheMainQueue) {
    using std::chrono::milliseconds;
    Recorder::waits() = {milliseconds(20), milliseconds(10), milliseconds(100)};
    Failures failures;
    start();
    set(1, "A");
    OtherConnection other;
    other.run("BEGIN EXCLUSIVE");
    QRVSettingsSetObjectForKeyPath(2, "A");
    EXPECT_TRUE(StoreSupport::drainUntil([&] { return !failures.all().empty(); }));
    EXPECT_EQ(failures.all().at(0).error, std::errc::timed_out);
    other.run("COMMIT");
    EXPECT_TRUE(StoreSupport::drainUntil([] { return lines().size() == 2; }));
    EXPECT_EQ(failures.all().size(), 1U);
}

TEST(HistoryFailure, OfADamagedDatabaseRenamesItAndBeginsANewOne) {
    start();
    set(1, "A");
    for (const char* const name : {".damaged-1", ".damaged-2"}) {
        Failures failures;
        StoreSupport::writeFile(QRVHistoryLocation(), std::string(10'000, 'x'));
        EXPECT_NE(QRVHistorySaves().failure, "");
        set(name, "A");
        EXPECT_EQ(lines(),
                  Lines{std::string("test/set: A ") +
                        (name == std::string(".damaged-1") ? "1" : ".damaged-1") + " > " + name});
        EXPECT_EQ(StoreSupport::contentsOf(QRVHistoryLocation() + name), std::string(10'000, 'x'));
        ASSERT_EQ(failures.all().size(), 1U);
        EXPECT_EQ(failures.all()[0].error, std::errc::bad_message);
    }
}

TEST(HistoryFailure, OfADatabaseCutOffIsSurvived) {
    start();
    for (int value = 0; value < 200; ++value)
        QRVSettingsSetObjectForKeyPath(std::string(200, 'a') + std::to_string(value),
                                       "Key" + std::to_string(value));
    wait();
    const auto size = fs::file_size(QRVHistoryLocation());
    ASSERT_GT(size, 40'000U);
    fs::resize_file(QRVHistoryLocation(), size / 2);
    set(1, "A");
    EXPECT_TRUE(isStored(1, "A"));
    EXPECT_EQ(lines({.prefix = "A"}), Lines{"test/set: A none > 1"});
}

TEST(HistoryFailure, OfAWriterThatDiedInTheMiddleIsRolledBackByTheNextReader) {
    if (isSanitized) GTEST_SKIP() << "forks beside threads";
    start();
    set(1, "A");
    ChildProcess killed([] {
        const OtherConnection other;
        other.run(
            "PRAGMA cache_size = 1; PRAGMA journal_mode = TRUNCATE; BEGIN IMMEDIATE;"
            "DELETE FROM changes; CREATE TABLE half(a);"
            "WITH RECURSIVE number(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM number LIMIT 200)"
            " INSERT INTO half SELECT randomblob(10000) FROM number");
        raise(SIGKILL);
        return false;
    });
    EXPECT_TRUE(killed.diedOf(SIGKILL));
    EXPECT_EQ(lines(), Lines{"test/set: A none > 1"});
    set(2, "A");
    EXPECT_EQ(lines().size(), 2U);
}

TEST(HistoryFailure, OfARemovedDatabaseBeginsANewOne) {
    start();
    set(1, "A");
    fs::remove_all(getenv("XDG_STATE_HOME"));
    set(2, "A");
    EXPECT_EQ(lines(), Lines{"test/set: A 1 > 2"});
}

TEST(HistoryFailure, OfAFullDiskIsToldOnceAndMadeUpForLater) {
    signal(SIGXFSZ, SIG_IGN);
    Failures failures;
    start();
    set(1, "A");
    {
        struct rlimit before {};
        getrlimit(RLIMIT_FSIZE, &before);
        // The settings file stays smaller than this, the database does not.
        limit(RLIMIT_FSIZE, 20'000);
        for (const char* const key : {"B", "C"}) {
            QRVSettingsSetObjectForKeyPath(std::string(4'000, 'b'), key);
            EXPECT_TRUE(isStored(std::string(4'000, 'b'), key));
            EXPECT_FALSE(QRVHistoryWait(longTime));
        }
        setrlimit(RLIMIT_FSIZE, &before);
    }
    EXPECT_EQ(failures.all().size(), 1U);
    set(2, "A");
    EXPECT_EQ(lines().size(), 4U);
}

TEST(HistoryFailure, ForgetsTheOldestOfTooManySavesInMemory) {
    const int count = static_cast<int>(QRVHistoryMaximumPending) + 5;
    const Lines entered = enteredLater(count, 1'000);
    ASSERT_EQ(entered.size(), QRVHistoryMaximumPending);
    EXPECT_EQ(entered.front(), "test/set: A 5 > 6");
    EXPECT_EQ(entered.back(),
              "test/set: A " + std::to_string(count - 1) + " > " + std::to_string(count));
}

TEST(HistoryFailure, ForgetsTheOldestOfTooLargeSavesInMemory) {
    EXPECT_EQ(enteredLater(5, QRVHistoryMaximumPendingBytes / 2),
              (Lines{"test/set: A 3 > 4", "test/set: A 4 > 5"}));
}

TEST(HistoryFailure, KeepsTheLatestSaveInMemoryHoweverLargeItIs) {
    EXPECT_EQ(enteredLater(3, QRVHistoryMaximumPendingBytes + 1), Lines{"test/set: A 2 > 3"});
}

TEST(HistoryBounds, TheOldestSavesGoAsAWholeWhenThereAreTooManyChanges) {
    start();
    const auto importMany = [](int value) {
        const NSMutableDictionary many{
            {"Migration", NSDictionary{{"CombinedPowerItems", true}, {"Profiles", true}}}};
        for (int number = 0; number < 4'000; ++number)
            many.setObjectForKey(value, "Key" + std::to_string(number));
        QRVSettingsImport(many);
        wait();
    };
    importMany(1);
    importMany(2);
    EXPECT_EQ(saves().size(), 2U);
    importMany(3);
    const auto kept = saves();
    ASSERT_EQ(kept.size(), 2U);
    EXPECT_EQ(kept[0].changes.at(0).after, 3);
    EXPECT_EQ(kept[1].changes.size(), 4'000U);
}

TEST(HistoryBounds, TheLastSaveStaysHoweverLargeItIs) {
    start();
    const NSMutableDictionary many;
    for (std::size_t number = 0; number <= QRVHistoryMaximumChanges; ++number)
        many.setObjectForKey(1, "Key" + std::to_string(number));
    QRVSettingsSaveObject(many);
    wait();
    EXPECT_EQ(saves().at(0).changes.size(), QRVHistoryMaximumChanges + 1);
    set(1, "A");
    EXPECT_EQ(lines(), Lines{"test/set: A none > 1"});
}

TEST(HistoryBounds, WhatIsTooOldGoes) {
    start();
    set(1, "A");
    set(2, "A");
    OtherConnection().run(
        "UPDATE saves SET time = time - 91 * 24 * 3600 WHERE id = (SELECT min(save) FROM changes)");
    set(3, "A");
    EXPECT_EQ(lines(), (Lines{"test/set: A 1 > 2", "test/set: A 2 > 3"}));
}

// SPDX-License-Identifier: MIT
// The way of a save into the database: the store's queue hands it over, and the queue of the
// history enters it, with all that has come meanwhile, in one transaction. The connection is opened
// for it and closed after it. So nothing is open at a fork, nor when somebody removes or replaces
// the database between two entries.
//
// What cannot be entered stays here. The next save retries it; while another process keeps the
// database locked, so does a timer of the main queue.

#include "Recorder.h"

#include <atomic>
#include <exception>
#include <utility>

#include "HistoryFile.h"
#include "Platform/Files/Files.h"
#include "Platform/System/System.h"
#include "QRVHistory/QRVHistory.h"
#include "QRVSettings/QRVSettings.h"

namespace QRVHistoryInside {

namespace {

std::atomic<Recorder*>& current() {
    static std::atomic<Recorder*> recorder = nullptr;
    return recorder;
}

}  // namespace

Recorder::Recorder(std::string program, std::string database, Recorder* parent)
    : program_(std::move(program)),
      database_(std::move(database)),
      process_(processIdentifier()),
      parent_(parent) {}

Recorder* Recorder::shared() {
    Recorder* recorder = current().load();
    if (recorder == nullptr || recorder->process_ == processIdentifier()) return recorder;
    auto* const own = new Recorder(recorder->program_, recorder->database_, recorder);
    if (current().compare_exchange_strong(recorder, own)) return own;
    delete own;
    return recorder;
}

void Recorder::start(const std::string& program) {
    current() = new Recorder(program, databasePath(), nullptr);
}

Recorder::Waits& Recorder::waits() {
    static Waits waits;
    return waits;
}

DispatchQueue& Recorder::queue() {
    static auto& queue = *new DispatchQueue(QRV_APPLICATION_IDENTIFIER ".settings.history",
                                            DispatchQueue::AtFork::FinishWork);
    return queue;
}

void Recorder::add(const QRVFileChange& change) {
    {
        const std::lock_guard lock(mutex_);
        waiting_.saves.push_back({change, {program_, process_, change.origin}});
        forgetTheOldest();
    }
    queueEntries();
}

/// Called with the mutex held. A save keeps about as much in memory as its file has on the disk.
void Recorder::forgetTheOldest() {
    std::deque<OwnSave>& saves = waiting_.saves;
    std::uint64_t bytes = 0;
    for (const OwnSave& save : saves) bytes += save.change.fileAfter.size;
    while (saves.size() > QRVHistoryMaximumPending ||
           (bytes > QRVHistoryMaximumPendingBytes && saves.size() > 1)) {
        bytes -= saves.front().change.fileAfter.size;
        saves.pop_front();
        ++forgotten_;
    }
}

void Recorder::addOthers() {
    {
        const std::lock_guard lock(mutex_);
        waiting_.withOthers = true;
    }
    queueEntries();
}

void Recorder::queueEntries() {
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(isQueued_, true)) return;
    }
    queue().async([] { shared()->enterWaiting(); });
}

void Recorder::enterWaiting() {
    Batch batch;
    std::uint64_t forgotten = 0;
    {
        const std::lock_guard lock(mutex_);
        isQueued_ = false;
        isBusy_ = true;
        batch = waiting_;
        waiting_.withOthers = false;
        forgotten = forgotten_;
    }
    const Result result = resultOf(batch, false);
    bool isRetryNeeded = false;
    {
        const std::lock_guard lock(mutex_);
        isBusy_ = false;
        ++attempts_;
        lastResult_ = result;
        if (result == Result::Entered) {
            // Some of them may have given way meanwhile.
            std::uint64_t entered = batch.saves.size();
            entered -= std::min(entered, forgotten_ - forgotten);
            const auto begin = waiting_.saves.begin();
            waiting_.saves.erase(begin, begin + static_cast<std::ptrdiff_t>(entered));
        } else {
            waiting_.withOthers = waiting_.withOthers || batch.withOthers;
        }
        if (result == Result::Locked) isRetryNeeded = !std::exchange(isRetryQueued_, true);
    }
    changed_.notify_all();
    if (isRetryNeeded)
        DispatchMainQueue::shared().asyncAfter(waits().retryInterval, [] { shared()->retry(); });
}

void Recorder::retry() {
    {
        const std::lock_guard lock(mutex_);
        isRetryQueued_ = false;
    }
    queueEntries();
}

bool Recorder::waitUntil(std::chrono::steady_clock::time_point deadline) {
    std::unique_lock lock(mutex_);
    while (!waiting_.saves.empty() || waiting_.withOthers || isBusy_ || isQueued_) {
        const std::uint64_t attempts = attempts_;
        const bool isUnderWay = isBusy_ || isQueued_;
        lock.unlock();
        if (!isUnderWay) queueEntries();
        lock.lock();
        const bool hasEnded =
            changed_.wait_until(lock, deadline, [&] { return attempts_ != attempts; });
        if (!hasEnded || std::chrono::steady_clock::now() >= deadline) break;
        if (lastResult_ == Result::Failed && !isBusy_ && !isQueued_) break;
    }
    return waiting_.saves.empty() && !waiting_.withOthers && !isBusy_ && !isQueued_;
}

Recorder::Result Recorder::resultOf(const Batch& batch, bool isRetry) {
    if (batch.saves.empty() && !batch.withOthers) return Result::Entered;
    if (const std::error_code error = makeDatabaseFile(database_)) {
        tell("cannot be made", error);
        return Result::Failed;
    }
    const std::uint64_t inode = inodeAt(database_);
    try {
        return enter(batch);
    } catch (const SQLiteError& error) {
        if (error.kind() == SQLiteError::Kind::Damaged && !isRetry && renameDamagedDatabase(inode))
            return resultOf(batch, true);
        return resultOfFailure(error);
    } catch (const std::exception& exception) {
        tell(exception.what(), make_error_code(std::errc::not_enough_memory));
        return Result::Failed;
    }
}

Recorder::Result Recorder::enter(const Batch& batch) {
    Database database(database_, Database::Access::ReadAndWrite, waits().busy);
    Transaction transaction(database.connection());
    const double now = NSDate::now().timeIntervalSince1970();
    Entry entry(database, QRVSettings::sharedSettings().location(), now);
    for (const OwnSave& save : batch.saves) entry.enter(save);
    if (batch.withOthers) entry.enterOthers();
    database.prune(now);
    transaction.commit();
    isTold_ = false;
    lockedSince_.reset();
    return Result::Entered;
}

Recorder::Result Recorder::resultOfFailure(const SQLiteError& error) {
    if (error.kind() != SQLiteError::Kind::Locked) {
        tell(error.what(), error.code());
        return Result::Failed;
    }
    const auto now = std::chrono::steady_clock::now();
    if (!lockedSince_) lockedSince_ = now;
    if (now - *lockedSince_ >= waits().tellLockedAfter)
        tell("locked by another program", error.code());
    return Result::Locked;
}

bool Recorder::renameDamagedDatabase(std::uint64_t inode) {
    std::error_code error;
    const std::string name = renameDamaged(database_, inode, error);
    if (error) return false;
    if (!name.empty()) {
        const auto damaged = make_error_code(std::errc::bad_message);
        NSLog("Settings history was damaged, it is renamed to %@", {name});
        QRVPlatform::reportFileFailure({"write history", database_, damaged});
    }
    return true;
}

void Recorder::tell(const std::string& what, std::error_code error) {
    if (std::exchange(isTold_, true)) return;
    NSLog("Settings history not written: %@, %@, %@", {what, error.message(), database_});
    QRVPlatform::reportFileFailure({"write history", database_, error});
}

}  // namespace QRVHistoryInside

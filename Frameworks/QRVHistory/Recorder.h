// SPDX-License-Identifier: MIT
#pragma once

// The entries that this process has still to write.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>

#include "Entry.h"
#include "Platform/Dispatch/Dispatch.h"

namespace QRVHistoryInside {

/// One for each process: a forked child has one of its own, and leaves alone that of its parent,
/// whose lock another thread may have held at the fork. Never destroyed. Any thread.
class Recorder {
  public:
    struct Waits {
        /// Of an entry for another process that writes.
        std::chrono::milliseconds busy = busyTime;
        /// Of the main queue, until it tries again.
        std::chrono::milliseconds retryInterval{1'000};
        /// Others who write at the same time are no failure before that.
        std::chrono::milliseconds tellLockedAfter{5'000};
    };
    /// A test may shorten them before `start`.
    static Waits& waits();

    /// Of this process; null before `start`.
    static Recorder* shared();
    static void start(const std::string& program);
    /// The queue on which this process writes to the database.
    static DispatchQueue& queue();

    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// To be entered as of this program.
    void add(const QRVFileChange& change);
    /// What others have changed is to be entered.
    void addOthers();
    /// True when everything is entered; false at the deadline, and when it cannot be entered.
    bool waitUntil(std::chrono::steady_clock::time_point deadline);

  private:
    enum class Result { Entered, Locked, Failed };
    struct Batch {
        std::deque<OwnSave> saves;
        bool withOthers = false;
    };

    Recorder(std::string program, std::string database, Recorder* parent);
    ~Recorder() = default;

    void forgetTheOldest();
    void queueEntries();
    void retry();
    void enterWaiting();
    Result enter(const Batch& batch);
    Result resultOf(const Batch& batch, bool isRetry);
    Result resultOfFailure(const class SQLiteError& error);
    bool renameDamagedDatabase(std::uint64_t inode);
    void tell(const std::string& what, std::error_code error);

    const std::string program_;
    const std::string database_;
    const std::int64_t process_;
    [[maybe_unused]] Recorder* const parent_;  ///< still reachable, for those who look for leaks

    std::mutex mutex_;
    std::condition_variable changed_;
    Batch waiting_;
    std::uint64_t forgotten_ = 0;  ///< saves of `waiting_` that gave way to later ones
    bool isQueued_ = false;
    bool isBusy_ = false;
    bool isRetryQueued_ = false;
    std::uint64_t attempts_ = 0;
    Result lastResult_ = Result::Entered;

    // Used on the queue.
    bool isTold_ = false;
    std::optional<std::chrono::steady_clock::time_point> lockedSince_;
};

}  // namespace QRVHistoryInside

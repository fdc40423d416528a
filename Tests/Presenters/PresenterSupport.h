// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "Files/TestFiles.h"
#include "Platform/Dispatch/NSOperationQueue.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Platform/Files/NSFilePresenter.h"
#include "Support/ChildProcess.h"

namespace PresenterSupport {

constexpr const char* missing = "(missing)";

inline std::string contentsOrMissing(const std::string& path) {
    const QRVPlatform::FileContents contents = QRVPlatform::contentsOfFile(path, 1 << 20);
    return contents.isMissing() ? missing : contents.bytes;
}

/// Presents a file as long as it lives, and reads it at every notification.
class Reader : public NSFilePresenter {
  public:
    explicit Reader(std::string path, std::function<void(Reader&)> whenNotified = {})
        : path_(std::move(path)),
          whenNotified_(std::move(whenNotified)),
          queue_(std::make_shared<NSOperationQueue>()) {
        NSFileCoordinator::addFilePresenter(*this);
    }
    ~Reader() override { NSFileCoordinator::removeFilePresenter(*this); }

    [[nodiscard]] std::string presentedItemURL() const override { return path_; }
    [[nodiscard]] std::shared_ptr<NSOperationQueue> presentedItemOperationQueue() const override {
        return queue_;
    }
    void presentedItemDidChange() override {
        ++count_;
        if (whenNotified_) whenNotified_(*this);
        const std::string contents = contentsOrMissing(path_);
        const std::lock_guard guard(mutex_);
        contents_ = contents;
    }

    [[nodiscard]] int count() const { return count_; }
    /// False when the last notification has not read this until the deadline.
    [[nodiscard]] bool sees(const std::string& contents) const {
        return waitUntil([&] {
            const std::lock_guard guard(mutex_);
            return contents_ == contents;
        });
    }
    [[nodiscard]] bool isNotifiedMoreThan(int count) const {
        return waitUntil([&] { return count_ > count; });
    }
    /// False when a notification is still to come, or under way, at the deadline.
    [[nodiscard]] bool finishQueue() const {
        return queue_->waitUntilAllOperationsAreFinished(std::chrono::steady_clock::now() +
                                                         testDeadline);
    }

  private:
    std::string path_;
    std::function<void(Reader&)> whenNotified_;
    std::shared_ptr<NSOperationQueue> queue_;
    std::atomic<int> count_ = 0;
    mutable std::mutex mutex_;
    std::string contents_ = "(never read)";
};

/// Returns when everything that has happened up to now was noticed: events are handled in order,
/// and this makes a last one. False after a deadline.
inline bool finishEvents() {
    static int number = 0;
    const std::string path = "probe/" + std::to_string(++number);
    std::filesystem::create_directory("probe");
    const Reader probe(path);
    writePlainly(path, "x");
    return probe.sees("x");
}

/// How often the reader has been notified of what has happened up to now; -1 after a deadline.
inline int finalCount(const Reader& reader) {
    return finishEvents() && reader.finishQueue() ? reader.count() : -1;
}

/// A replacement by nobody in particular, beside which there is no lock.
inline void replaceByRename(const std::string& path, const std::string& bytes) {
    writePlainly(path + ".new", bytes);
    std::filesystem::rename(path + ".new", path);
}

inline bool save(const NSFilePresenter* performer, const std::string& path,
                 const std::string& bytes) {
    bool isReplaced = false;
    NSFileCoordinator(performer).coordinateWritingItemAtURL(
        path, NSFileCoordinator::WritingOptions::ForReplacing,
        [&](const std::string& url) { isReplaced = !QRVPlatform::replaceFile(url, bytes); });
    return isReplaced;
}

inline bool setModificationTime(const std::string& path, long seconds) {
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    return utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
}

}  // namespace PresenterSupport

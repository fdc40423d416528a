// SPDX-License-Identifier: MIT
#pragma once

/// Coordinated access to one file among threads and processes that all go through a coordinator.
///
/// Writers exclude each other by an advisory lock on a lock file beside the file meant
/// (`QRVPlatform::filesBeside`; mode 0600, never deleted). Readers and writers exclude each other
/// by a lock on the file itself, which readers share. So readers need no lock file, wherever the
/// file comes from. A lock is held while the accessor runs, and ends with the process however that
/// ends. A file that `QRVPlatform::replaceFile` puts in place is locked from its first moment on.
///
/// What the library itself saves keeps readers out only while the new file is put in place, when
/// that is on the disk already. So no reader waits for the disk of a save.
///
/// Readers and writers wait for each other for `readerLockTimeout` at the longest, and then go on:
/// nobody who is stopped, and nobody who may only read the file, holds them up for longer. What a
/// reader reads is whole all the same, as long as writers replace the file (`replaceFile`). Writers
/// wait for each other as long as it takes.
///
/// What is not promised:
/// - Nothing keeps out a program that does not coordinate, nor a writer that reaches the file
///   through another hard link. Waiting writers are served in no particular order.
/// - Where there is no file, readers have nothing to lock: the accessor of one may run while a
///   writer creates the file. It finds no file or the new one, whole if `replaceFile` made it.
/// - A file that an accessor puts in place by other means than `replaceFile` is not locked.
/// - On file systems that cannot replace an open file in one step (network ones, FUSE), readers
///   share the lock file of the writers instead, if there is one. There they wait for the disk too.

#include <chrono>
#include <functional>
#include <string>
#include <system_error>

#include "Platform/Export.h"

class NSFilePresenter;

namespace QRVPlatform {

/// How long coordinated readers and writers wait for each other before they go on without the lock.
inline constexpr std::chrono::seconds readerLockTimeout(2);

}  // namespace QRVPlatform

/// Holds no state between accesses; any number may be used on any threads.
///
/// `url` is a path. When it names a symbolic link, the link is followed as by
/// `QRVPlatform::resolvedPath`, also to a target that does not exist yet, and the access is to the
/// target; the accessor gets the path to use. A loop is an error.
///
/// The accessor runs exactly once, on the calling thread, before the call returns, or not at all;
/// the answer is empty when it ran, and says why when it did not. An exception from it passes on
/// with the lock released. The accessor of a write may coordinate reading of the same file on its
/// thread, but not writing, which would wait for itself forever. Writing within the accessor of a
/// read waits for `readerLockTimeout`.
class QRV_EXPORT NSFileCoordinator {
  public:
    enum class ReadingOptions : unsigned { None = 0 };
    /// ForReplacing: the whole file is going to be replaced. The coordination is the same.
    enum class WritingOptions : unsigned { None = 0, ForReplacing = 8 };
    using Accessor = std::function<void(const std::string& url)>;

    /// With a presenter, the accesses are the presenter's own: it is not notified when the accessor
    /// replaces the file by `replaceFile` on the thread that it runs on, under whatever path leads
    /// to the file. All other presenters are notified. The presenter itself is notified of what the
    /// accessor does to the file by other means.
    explicit NSFileCoordinator(const NSFilePresenter* performer = nullptr)
        : performer_(performer) {}

    /// Null when the accesses are nobody's own.
    [[nodiscard]] const NSFilePresenter* performer() const noexcept { return performer_; }

    /// From the return on the presenter is notified of changes, until it is removed; it must live
    /// that long. Adding it again changes nothing.
    ///
    /// Throws NSInvalidArgumentException when the presenter has no path or no queue. Shortages and
    /// forks: see NSFilePresenter.
    static void addFilePresenter(NSFilePresenter& presenter);

    /// After it has returned no notification of the presenter is under way or will come, and the
    /// presenter may be destroyed. It waits for the one under way, except from within that one. So
    /// it must not be called where a notification could be waiting for the caller: inside an access
    /// to the file, for one. A presenter that is not registered is ignored.
    static void removeFilePresenter(NSFilePresenter& presenter);

    /// Creates nothing on disk. Where the lock cannot be had, and where there is no file, the
    /// accessor runs without it.
    std::error_code coordinateReadingItemAtURL(const std::string& url, ReadingOptions options,
                                               const Accessor& accessor);

    /// Creates the missing folders above the file (each of mode 0700) and the lock file. Fails when
    /// there is something else than a regular file in the lock file's place, a symbolic link
    /// included. What `replaceFile` has put in place outlasts a crash of the system from the return
    /// on; others may read it when the accessor has ended.
    std::error_code coordinateWritingItemAtURL(const std::string& url, WritingOptions options,
                                               const Accessor& accessor);

  private:
    const NSFilePresenter* performer_;
};

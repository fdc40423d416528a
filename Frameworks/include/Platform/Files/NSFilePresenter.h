// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "Platform/Dispatch/NSOperationQueue.h"
#include "Platform/Export.h"

namespace QRVPlatform {

/// How often a presented file is checked for changes where it cannot be watched.
inline constexpr std::chrono::seconds filePollingInterval(2);

/// How long after a write in place the presenter is notified if the writer keeps the file open.
inline constexpr std::chrono::seconds openWriterTimeout(2);

}  // namespace QRVPlatform

/// Observer of one file. Registered by NSFileCoordinator::addFilePresenter, until
/// NSFileCoordinator::removeFilePresenter.
///
/// Every change leads to at least one notification that begins after the change: a presenter that
/// reads the file at every notification has read its final contents in the end. A change is
/// whatever makes the path name another file, other contents, or nothing: a file replaced, written
/// in place, deleted, created or touched; a symbolic link on the way that leads elsewhere; a folder
/// on the way that is created, deleted or replaced. The path need not exist. There may be more
/// notifications than changes.
///
/// At most one notification of a presenter is under way at a time. Changes meanwhile lead to
/// exactly one more.
///
/// A write in place is notified when the writer closes the file, or after `openWriterTimeout` if
/// the writer keeps it open. All other changes are notified at once. Where the system has no means
/// left to watch the file (its limits for that are per user), or does not allow it, the file is
/// polled every `filePollingInterval` instead, until it can be watched.
///
/// Shortages never reach the adding thread. When the means to watch are exhausted, the failure
/// handler of `QRVPlatform::setFileFailureHandler` is called once. So it is when the system has no
/// thread left to watch with: then notifications come late, after the next use of a queue
/// (`DispatchQueue`, `DispatchMainQueue`, `NSOperationQueue`) for which there is a thread.
///
/// A forked child has the presenters of its parent. It watches their files from its first use of a
/// queue on; a loop that polls `DispatchMainQueue::fd()` is woken for that. Each presenter is then
/// notified once, also without a change: the parent may have noticed one that the child has not
/// handled.
///
/// What is not promised: to notice a write through a memory mapping, through another hard link in
/// another folder or one that bears the name of a temporary or lock file of this library, a file
/// system mounted over a folder on the way, or what another machine does to a shared folder. A
/// folder on the way that may not be read may be replaced unnoticed.
class QRV_EXPORT NSFilePresenter {
  public:
    NSFilePresenter() = default;
    NSFilePresenter(const NSFilePresenter&) = delete;
    NSFilePresenter& operator=(const NSFilePresenter&) = delete;
    virtual ~NSFilePresenter();

    /// The path of the file. Called once, when the presenter is added, on the adding thread; a
    /// relative path is meant from the working folder of that moment.
    [[nodiscard]] virtual std::string presentedItemURL() const = 0;
    /// The queue on which the presenter is notified. Each notification is an operation of this
    /// queue; while the process has no other presenter, it runs on the thread that watches files.
    /// Called once, when the presenter is added, on the adding thread.
    [[nodiscard]] virtual std::shared_ptr<NSOperationQueue> presentedItemOperationQueue() const = 0;
    /// The notification: the file has changed. It may coordinate reading and writing, also of this
    /// file, and add and remove presenters. An exception from it ends the program.
    virtual void presentedItemDidChange() = 0;
};

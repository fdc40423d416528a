// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "Platform/Dispatch/NSOperationQueue.h"
#include "Platform/Export.h"

/// Wants to know when the file that it presents has changed. Registered with
/// NSFileCoordinator::addFilePresenter, until NSFileCoordinator::removeFilePresenter.
///
/// Every change leads to at least one notification that begins after the change: who reads the file
/// at every notification has its final contents in the end. A change is whatever lets the path name
/// another file or other contents, or none: a file replaced, written in place, deleted, created,
/// touched; a symbolic link on the way that leads elsewhere; a folder on the way that comes, goes
/// or is another one. The path need not exist. It may be told more often than there were changes.
///
/// At most one notification of a presenter is under way at a time. Changes meanwhile lead to
/// exactly one more.
///
/// A file written in place is told when the writer closes it, or two seconds after a write if the
/// writer keeps it open. All else is told at once; but where the system has no means left to watch
/// (its limits for that are per user), or does not allow it, the file is looked at every two
/// seconds instead.
///
/// What is not promised: to notice a write through a memory mapping, through another hard link in
/// another folder or one that bears the name of a temporary or lock file of this library, a file
/// system mounted over a folder on the way, or what another machine does to a shared folder. Where
/// a folder on the way may not be read, it may be replaced unnoticed.
class QRV_EXPORT NSFilePresenter {
  public:
    NSFilePresenter() = default;
    NSFilePresenter(const NSFilePresenter&) = delete;
    NSFilePresenter& operator=(const NSFilePresenter&) = delete;
    virtual ~NSFilePresenter();

    /// The path of the file. Asked once, when the presenter is added, on the adding thread; a
    /// relative path is meant from the working folder of that moment.
    [[nodiscard]] virtual std::string presentedItemURL() const = 0;
    /// The queue on which the presenter is notified. Asked once, when the presenter is added, on
    /// the adding thread.
    [[nodiscard]] virtual std::shared_ptr<NSOperationQueue> presentedItemOperationQueue() const = 0;
    /// The file has changed. May coordinate reading and writing, also of this file, and add and
    /// remove presenters. An exception ends the program.
    virtual void presentedItemDidChange() = 0;
};

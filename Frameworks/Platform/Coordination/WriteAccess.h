// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <system_error>

#include "Platform/Coordination/FileLock.h"
#include "Platform/Files/HeldFile.h"

class NSFilePresenter;

namespace QRVPlatform {

/// A coordinated write of one file, from before its lock is taken until after the lock is released.
/// A replacement that it is passed to belongs to it. Lives on the stack.
class WriteAccess {
  public:
    /// When coordinated readers of the file are kept out. DuringAccess: from `lockAgainstReaders`
    /// until the end of the access.
    enum class ReadersWait { Never, DuringReplacement, DuringAccess };

    /// `path` is the file's own, not that of a link. Replacements are the performer's own; without
    /// a performer, nobody's.
    WriteAccess(const NSFilePresenter* performer, const std::string& path,
                ReadersWait readersWait = ReadersWait::Never);
    WriteAccess(const WriteAccess&) = delete;
    WriteAccess& operator=(const WriteAccess&) = delete;
    /// Lets readers read, and syncs the folder if there was a replacement.
    ~WriteAccess();

    [[nodiscard]] const NSFilePresenter* performer() const { return performer_; }
    [[nodiscard]] const std::string& path() const { return path_; }
    /// Has an effect with DuringAccess only. Waits for the readers that are there, for
    /// `readerLockTimeout` at the longest.
    void lockAgainstReaders();
    /// Renames the file at `newFile` to the path, when the readers of the old file have ended;
    /// waits for them as `lockAgainstReaders` does.
    std::error_code putInPlace(const std::string& newFile);
    /// What the last replacement has put in place; nothing known without one.
    [[nodiscard]] const HeldFile& newFile() const { return newFile_; }

    /// As long as it lives, the public `replaceFile` on this thread replaces the file under the
    /// access. The file's folder has to be there.
    class OnThisThread;
    /// The innermost such access to the file that `path` names, however that is spelled; null when
    /// there is none. A link as the last component is not followed.
    static WriteAccess* onThisThreadTo(const std::string& path);

  private:
    const NSFilePresenter* performer_;
    std::string path_;
    ReadersWait readersWait_;
    bool isReplaced_ = false;
    FileLock lockAgainstReaders_;
    HeldFile newFile_;
    /// Of the file that was replaced; released. So nobody waits until its space is free.
    FileLock ofReplaced_;
};

class WriteAccess::OnThisThread {
  public:
    explicit OnThisThread(WriteAccess& access);
    OnThisThread(const OnThisThread&) = delete;
    OnThisThread& operator=(const OnThisThread&) = delete;
    ~OnThisThread();

  private:
    friend class WriteAccess;
    /// Where a file is: the same for every path that leads to it.
    struct Place {
        explicit Place(const std::string& path);
        bool operator==(const Place&) const = default;

        std::uint64_t folderDevice = 0;
        std::uint64_t folderInode = 0;
        std::string name;
    };

    WriteAccess& access_;
    Place place_;
    OnThisThread* outer_;
};

}  // namespace QRVPlatform

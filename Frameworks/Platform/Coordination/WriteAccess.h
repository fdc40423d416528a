// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>

#include "Platform/Descriptors/FileDescriptor.h"
#include "Platform/Files/HeldFile.h"

class NSFilePresenter;

namespace QRVPlatform {

/// A coordinated write of one file, from before its lock is taken until after the lock is released.
/// A replacement that it is passed to belongs to it. Lives on the stack.
class WriteAccess {
  public:
    /// `path` is the file's own, not that of a link. Replacements are the performer's own; without
    /// a performer, nobody's.
    WriteAccess(const NSFilePresenter* performer, const std::string& path);
    WriteAccess(const WriteAccess&) = delete;
    WriteAccess& operator=(const WriteAccess&) = delete;
    /// Syncs the folder and closes the old file if there was a replacement.
    ~WriteAccess();

    [[nodiscard]] const NSFilePresenter* performer() const { return performer_; }
    [[nodiscard]] const std::string& path() const { return path_; }
    /// The file has been replaced. The end of the access does the rest, when readers may read.
    void noteReplacement(FileDescriptor oldFile, HeldFile newFile);
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
    bool isReplaced_ = false;
    FileDescriptor oldFile_;
    HeldFile newFile_;
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

// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Platform/Descriptors/FileDescriptor.h"

class NSFilePresenter;

namespace QRVPlatform {

/// A coordinated write of the file at `path` on this thread, from before its lock is taken until
/// after that is let go. Lives on the stack.
class WriteAccess {
  public:
    /// Replacements of the file are the performer's own; without one, nobody's.
    WriteAccess(const NSFilePresenter* performer, const std::string& path);
    WriteAccess(const WriteAccess&) = delete;
    WriteAccess& operator=(const WriteAccess&) = delete;
    ~WriteAccess();

    /// The innermost one of the file at `path` on this thread; null when there is none.
    static WriteAccess* to(const std::string& path);

    [[nodiscard]] const NSFilePresenter* performer() const { return performer_; }
    /// The file has been replaced. To sync the folder and to close the old file is left to the end
    /// of the access.
    void noteReplacement(FileDescriptor oldFile);

  private:
    const NSFilePresenter* performer_;
    const std::string& path_;
    const std::string folder_;
    WriteAccess* outer_;
    bool isReplaced_ = false;
    FileDescriptor oldFile_;
};

}  // namespace QRVPlatform

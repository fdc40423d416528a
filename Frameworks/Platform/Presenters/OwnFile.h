// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Platform/Descriptors/FileDescriptor.h"
#include "Platform/Files/Files.h"

namespace QRVPlatform {

/// Equal but for the change time: the same file with, as far as can be told, the same bytes.
bool isSameFile(const FileIdentity& first, const FileIdentity& second);

/// A file that a presenter has written. It is kept open, because its inode number would come back
/// for somebody else's file otherwise; nothing is read or written through it.
class OwnFile {
  public:
    OwnFile() = default;
    /// The file at `path`, as it is now; nothing when there is none.
    explicit OwnFile(const std::string& path);

    /// Whether a file found now is this one, unchanged.
    [[nodiscard]] bool is(const FileIdentity& found) const;

  private:
    FileDescriptor file_;
    FileIdentity identity_;
};

}  // namespace QRVPlatform

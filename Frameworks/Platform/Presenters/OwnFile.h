// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Platform/Descriptors/FileDescriptor.h"
#include "Platform/Files/Files.h"

namespace QRVPlatform {

/// Equal apart from the change time: the same file, which has not been written to as far as can be
/// told.
bool isSameFile(const FileIdentity& first, const FileIdentity& second);

/// A file that a presenter has written. It is kept open if there is a descriptor, so that no other
/// file can get its inode number; nothing is read or written through it.
class OwnFile {
  public:
    OwnFile() = default;
    /// The file at `path`, as it is now, or no file.
    explicit OwnFile(const std::string& path);

    /// Whether a file found now is this one, unchanged.
    [[nodiscard]] bool is(const FileIdentity& found) const;

  private:
    FileDescriptor file_;
    FileIdentity identity_;
};

}  // namespace QRVPlatform

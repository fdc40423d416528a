// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "Platform/Descriptors/FileDescriptor.h"

struct stat;

namespace QRVPlatform {

/// A file that is being written. The end of this removes it, unless it is kept.
class NewFile {
  public:
    NewFile() = default;
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    /// Fails when there is anything at `path`. The file gets the permission bits of `model` and,
    /// where allowed, its owner and group; mode 0600 without a model. It never has more.
    std::error_code create(const std::string& path, const struct stat* model);
    std::error_code write(std::string_view bytes);
    /// Sets the modification date to the exact time, and to at least a microsecond after that of
    /// `model` (or null), so that whoever compares dates notices the change. The system's own
    /// timestamps have a granularity of some milliseconds.
    std::error_code date(const struct stat* model);
    /// Syncs the bytes to the disk and closes the file.
    std::error_code finish();
    /// The file stays, or has been renamed.
    void keep() { path_.clear(); }

  private:
    FileDescriptor file_;
    std::string path_;
};

}  // namespace QRVPlatform

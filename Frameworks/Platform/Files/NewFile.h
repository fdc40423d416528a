// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "Platform/Descriptors/FileDescriptor.h"

struct stat;

namespace QRVPlatform {

/// A file in the making: removed again unless it is kept.
class NewFile {
  public:
    NewFile() = default;
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    /// Fails when there is anything at `path`. The file gets the permission bits of `model` and,
    /// where allowed, its owner and group; mode 0600 without a model. At no moment it has more.
    std::error_code create(const std::string& path, const struct stat* model);
    std::error_code write(std::string_view bytes);
    /// Gives the file the exact time as its modification date, and a later one than that of `model`
    /// (or null), by a microsecond at least: who goes by the date sees the change. The system's own
    /// dates repeat themselves for some milliseconds.
    std::error_code date(const struct stat* model);
    /// Brings the bytes to the disk and ends writing.
    std::error_code finish();
    /// The file stays, or has gone to another name.
    void keep() { path_.clear(); }

  private:
    FileDescriptor file_;
    std::string path_;
};

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "Platform/Files/FileDescriptor.h"

struct stat;

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
    /// Gives the file a later modification date than that of `model`, by a microsecond, where the
    /// grain of the system's clock has made the two equal: who goes by the date sees the change.
    std::error_code dateAfter(const struct stat& model);
    /// Brings the bytes to the disk and ends writing.
    std::error_code finish();
    /// The file stays, or has gone to another name.
    void keep() { path_.clear(); }

  private:
    FileDescriptor file_;
    std::string path_;
};

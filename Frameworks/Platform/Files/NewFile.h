// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <system_error>

#include "Platform/Descriptors/FileDescriptor.h"
#include "Platform/Files/FileModel.h"

namespace QRVPlatform {

/// A file that is being written. The end of this removes it, unless it is kept.
class NewFile {
  public:
    NewFile() = default;
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    /// Fails when there is anything at `path`. Without a model the file is of mode 0600 and belongs
    /// to the owner of the folder, where that is allowed; `FileRights::copyFrom` says what it has
    /// of a model.
    std::error_code create(const std::string& path, const FileModel* model);
    std::error_code write(std::string_view bytes);
    /// Sets the modification date to the exact time, and to at least a microsecond after that of
    /// `model` (or null), so that whoever compares dates notices the change. The system's own
    /// timestamps have a granularity of some milliseconds. They stay where the system sets no
    /// others, which is no error.
    std::error_code date(const FileModel* model);
    /// Syncs the bytes to the disk and closes the file.
    std::error_code finish();
    /// The file stays, or has been renamed.
    void keep() { path_.clear(); }

  private:
    FileDescriptor file_;
    std::string path_;
};

}  // namespace QRVPlatform

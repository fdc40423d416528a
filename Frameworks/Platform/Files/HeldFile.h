// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "Platform/Descriptors/FileDescriptor.h"
#include "Platform/Files/Files.h"

namespace QRVPlatform {

/// One state of a file, or its absence, which cannot be mistaken for a later one: the file is kept
/// open, so that no other file can get its inode number. Nothing is read or written through it.
/// Cheap to copy; a copy may be used on another thread.
class HeldFile {
  public:
    /// Nothing is known: no file is it.
    HeldFile() = default;
    /// What `path` names now, or its absence. Links are followed.
    static HeldFile at(const std::string& path);
    /// The same file in its state of now. Renaming it has changed its state.
    [[nodiscard]] HeldFile afterRename() const;

    /// Whether `path` still names this file and nobody has written to it; for an absence, whether
    /// there is still nothing.
    [[nodiscard]] bool isAt(const std::string& path) const;
    [[nodiscard]] const FileIdentity& identity() const { return identity_; }

  private:
    bool isKnown_ = false;
    std::shared_ptr<const FileDescriptor> file_;
    FileIdentity identity_;
};

}  // namespace QRVPlatform

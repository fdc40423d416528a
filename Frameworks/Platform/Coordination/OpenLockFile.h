// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "Platform/Descriptors/FileDescriptor.h"

namespace QRVPlatform {

/// A lock file that is open in this process only. A forked child would share its lock and keep it
/// after the parent's end: there the descriptor is closed, and the lock not held.
namespace OpenLockFile {

struct Forget {
    void operator()(FileDescriptor* file) const;
};
using Handle = std::unique_ptr<FileDescriptor, Forget>;

/// Null with `errno` set when it cannot be opened.
Handle open(const std::string& path, int flags, unsigned mode = 0);

}  // namespace OpenLockFile

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>

#include "Platform/Descriptors/FileDescriptor.h"

namespace QRVPlatform {

/// Files that are open in the process that opened them only: a forked child has their descriptors
/// closed. Otherwise it would share a lock on such a file and keep it after the parent's end.
namespace CloseOnFork {

struct Forget {
    void operator()(FileDescriptor* file) const;
};
using Handle = std::unique_ptr<FileDescriptor, Forget>;

/// Null with `errno` set when it cannot be opened. For any threads.
Handle open(const std::string& path, int flags, unsigned mode = 0);

}  // namespace CloseOnFork

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#pragma once

#include <system_error>

#include "Platform/Files/Files.h"

struct stat;
struct statfs;

namespace QRVPlatform::FileStatus {

FileIdentity identityOf(const struct stat& status);

/// Empty for a regular file.
std::error_code errorUnlessRegular(const struct stat& status);

/// To replace a file that somebody has open, these file systems rename the old one away before:
/// for a moment there would be no file. Or they refuse.
bool movesOpenFilesAway(const struct statfs& system);

}  // namespace QRVPlatform::FileStatus

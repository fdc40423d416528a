// SPDX-License-Identifier: MIT
#pragma once

#include <system_error>

#include "Platform/Files/Files.h"

struct stat;

namespace QRVPlatform::FileStatus {

FileIdentity identityOf(const struct stat& status);

/// Empty for a regular file.
std::error_code errorUnlessRegular(const struct stat& status);

}  // namespace QRVPlatform::FileStatus

// SPDX-License-Identifier: MIT
#pragma once

// Coordinated writing for the library itself, which passes the access on. Hosts use
// `NSFileCoordinator::coordinateWritingItemAtURL` and the `replaceFile` of `Files.h`.

#include <functional>
#include <string>
#include <string_view>
#include <system_error>

#include "Platform/Coordination/WriteAccess.h"
#include "Platform/Files/NSFileCoordinator.h"

namespace QRVPlatform {

/// As `coordinateWritingItemAtURL`, but the accessor gets the access too.
std::error_code coordinateWriting(
    const NSFileCoordinator& coordinator, const std::string& url,
    NSFileCoordinator::WritingOptions options,
    const std::function<void(const std::string& path, WriteAccess& access)>& accessor);

/// Replaces the file that the access is to; `path` is the one that the accessor got.
std::error_code replaceFile(const std::string& path, std::string_view bytes, WriteAccess& access);

}  // namespace QRVPlatform

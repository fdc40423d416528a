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

/// As `coordinateWritingItemAtURL`, but the accessor gets the access, which has the path, and
/// changes the file by `replaceFile` only. So readers are kept out only while the new file is put
/// in place, when it is on the disk already. `wait` is for the other writers; when its deadline
/// passes, the accessor does not run.
std::error_code coordinateWriting(const NSFileCoordinator& coordinator, const std::string& url,
                                  NSFileCoordinator::WritingOptions options,
                                  const std::function<void(WriteAccess& access)>& accessor,
                                  const LockWait& wait = {});

/// Replaces the file that the access is to, as the `replaceFile` of `Files.h` does.
std::error_code replaceFile(WriteAccess& access, std::string_view bytes);

}  // namespace QRVPlatform

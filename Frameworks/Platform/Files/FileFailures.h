// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <system_error>

namespace QRVPlatform::FileFailures {

/// The error of `errno`.
std::error_code lastError();

/// Whether the system, or this process, has no means left: descriptors, memory, watches. The same
/// may succeed later, without any change of the file.
bool isShortage(std::error_code error);

/// Calls the failure handler if there is an error; returns the error.
std::error_code reported(const std::string& operation, const std::string& path,
                         std::error_code error);

}  // namespace QRVPlatform::FileFailures

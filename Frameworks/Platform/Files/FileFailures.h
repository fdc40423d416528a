// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <system_error>

namespace QRVPlatform::FileFailures {

/// What `errno` says.
std::error_code lastError();

/// Tells the failure handler, unless there is no error; returns the error.
std::error_code reported(const std::string& operation, const std::string& path,
                         std::error_code error);

}  // namespace QRVPlatform::FileFailures

// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <system_error>

namespace QRVPlatform::FileFailures {

/// The error of `errno`.
std::error_code lastError();

/// Calls the failure handler if there is an error; returns the error.
std::error_code reported(const std::string& operation, const std::string& path,
                         std::error_code error);

}  // namespace QRVPlatform::FileFailures

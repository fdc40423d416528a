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

/// Calls the failure handler if there is an error; returns the error. `keyPath` names the value in
/// the file that the failure is about; empty when it is about the whole file.
std::error_code reported(const std::string& operation, const std::string& path,
                         std::error_code error, const std::string& keyPath = {});

/// The same for what does not make an operation fail: the handler is called once in the life of the
/// process for each operation on a path, or on a value in its file.
void reportOnce(const std::string& operation, const std::string& path, std::error_code error,
                const std::string& keyPath = {});

/// The system does not do this here, whoever asks how often.
bool isRefusal(std::error_code error);

}  // namespace QRVPlatform::FileFailures

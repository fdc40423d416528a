// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace QRVPlatform::FilePaths {

/// The folder that `path` is in: "." for a bare name, "/" at the top.
std::string folderOf(const std::string& path);

/// `name` beside what `path` names.
std::string siblingOf(const std::string& path, std::string_view name);

/// Where the symbolic link at `path` points; empty when there is no link there.
std::optional<std::string> linkTarget(const std::string& path);

/// There is a folder at `path`, no link to one.
bool isFolder(const std::string& path);

/// Makes the folder and those above that are missing, each of mode 0700 and of the owner of the
/// folder above, where that is allowed. Empty when it is there.
std::error_code createFolder(const std::string& path);

/// After it, the names in the folder survive a crash of the system, where the file system can sync
/// folders.
void syncFolder(const std::string& path);

}  // namespace QRVPlatform::FilePaths

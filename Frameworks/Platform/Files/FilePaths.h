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

/// What ends the names of the files that saving makes beside a file.
inline constexpr std::string_view temporarySuffix = ".tmp";
inline constexpr std::string_view lockSuffix = ".lock";

/// `.<file name><suffix>` beside the file; empty when `path` ends in no file name.
std::string hiddenSiblingOf(const std::string& path, std::string_view suffix);

/// Where the symbolic link at `path` points; empty when there is no link there.
std::optional<std::string> linkTarget(const std::string& path);

/// There is a folder at `path`, no link to one.
bool isFolder(const std::string& path);

struct Resolution {
    std::string path;
    std::error_code error;
};
/// Follows the symbolic links of the last component, also to a target that does not exist. Fails
/// only for too many of them; a link that cannot be read counts as a file.
Resolution resolved(std::string path);

/// Makes the folder and those above that are missing, each of mode 0700. Empty when it is there.
std::error_code createFolder(const std::string& path);

/// Makes the names in a folder outlast a crash of the system, where the file system can do that.
void syncFolder(const std::string& path);

}  // namespace QRVPlatform::FilePaths

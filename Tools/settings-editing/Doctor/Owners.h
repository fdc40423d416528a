// SPDX-License-Identifier: MIT
#pragma once

// Whose the settings file and what lies around it should be: this user's, and for root that of the
// owner of the folder that they lie in.

#include <optional>
#include <string>

namespace Tool {

/// What is wrong with an owner, as far as the rest of a sentence: "belongs to root, ...". Empty
/// when nothing is, or nothing is there.
std::optional<std::string> faultOfOwner(const std::string& path);

/// How a file with such an owner gets the right one: as this user where that is possible, else as
/// root. A lock file may be removed instead.
std::string adviceForOwner(const std::string& path, bool isLockFile);

/// A folder on the way that belongs to another user than the folder above it, who is not root.
struct FolderOfAnother {
    std::string path;   ///< with those below it of the same owner
    std::string above;  ///< the folder above
};
std::optional<FolderOfAnother> folderOfAnother(const std::string& folder);

/// How this user gets the right to write into a folder.
std::string adviceToWriteInto(const std::string& folder);

}  // namespace Tool

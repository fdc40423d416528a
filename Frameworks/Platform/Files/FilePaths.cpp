// SPDX-License-Identifier: MIT
#include "Platform/Files/FilePaths.h"

#include "Platform/Files/Files.h"

namespace QRVPlatform {

std::string FilePaths::folderOf(const std::string& path) {
    const std::size_t lastSlash = path.rfind('/');
    if (lastSlash == std::string::npos) return ".";
    const std::size_t end = path.find_last_not_of('/', lastSlash);
    return end == std::string::npos ? "/" : path.substr(0, end + 1);
}

std::string FilePaths::siblingOf(const std::string& path, std::string_view name) {
    return path.substr(0, path.rfind('/') + 1).append(name);
}

FilesBeside filesBeside(const std::string& resolvedPath) {
    const std::string name = resolvedPath.substr(resolvedPath.rfind('/') + 1);
    const bool namesAFile = !name.empty() && name != "." && name != "..";
    const std::string hidden = FilePaths::siblingOf(resolvedPath, "." + name);
    return {namesAFile ? hidden + ".lock" : "", namesAFile ? hidden + ".tmp" : "",
            resolvedPath + ".damaged-"};
}

}  // namespace QRVPlatform

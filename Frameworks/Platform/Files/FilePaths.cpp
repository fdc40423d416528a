// SPDX-License-Identifier: MIT
#include "Platform/Files/FilePaths.h"

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

std::string FilePaths::hiddenSiblingOf(const std::string& path, std::string_view suffix) {
    const std::string name = path.substr(path.rfind('/') + 1);
    if (name.empty() || name == "." || name == "..") return {};
    return siblingOf(path, "." + name).append(suffix);
}

}  // namespace QRVPlatform

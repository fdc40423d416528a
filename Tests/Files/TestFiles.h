// SPDX-License-Identifier: MIT
#pragma once

// Plain looks at the disk, made without the code under test.

#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

inline void writePlainly(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string readPlainly(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The permission bits of what is there, links not followed; 0 when there is nothing.
inline unsigned modeOf(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
}

/// The paths of everything below a folder.
inline std::set<std::string> everythingIn(const std::string& folder) {
    std::set<std::string> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        paths.insert(entry.path().lexically_relative(folder).string());
    return paths;
}

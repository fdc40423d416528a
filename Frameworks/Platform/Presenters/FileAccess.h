// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace QRVPlatform {

/// Who may do what with a file.
struct FileAccess {
    unsigned mode = 0;
    unsigned owner = 0;
    unsigned group = 0;

    bool operator==(const FileAccess&) const = default;
};

/// Empty for everything but a regular file, also for a symbolic link.
std::optional<FileAccess> accessOfFileAtPath(const std::string& path);

}  // namespace QRVPlatform

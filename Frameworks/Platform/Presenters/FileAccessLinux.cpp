// SPDX-License-Identifier: MIT
#include <sys/stat.h>

#include "Platform/Presenters/FileAccess.h"

namespace QRVPlatform {

std::optional<FileAccess> accessOfFileAtPath(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return FileAccess{status.st_mode, status.st_uid, status.st_gid};
}

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#pragma once

#include <string>

struct stat;

namespace QRVPlatform {

/// The file that a new one is made after, while nobody changes it. `path` is no link.
struct FileModel {
    const std::string& path;
    const struct stat& status;
};

}  // namespace QRVPlatform

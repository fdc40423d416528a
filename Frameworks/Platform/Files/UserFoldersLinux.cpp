// SPDX-License-Identifier: MIT
#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "Platform/Files/UserFolders.h"

namespace QRVPlatform {

const char* UserFolders::trustedVariable(const char* name) {
    return secure_getenv(name);
}

std::string UserFolders::homeFromPasswordDatabase() {
    constexpr std::size_t largestEntry = std::size_t{1} << 20;
    for (std::size_t size = 1024; size <= largestEntry; size *= 4) {
        std::vector<char> buffer(size);
        passwd entry{};
        passwd* found = nullptr;
        const int error = getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found);
        if (found != nullptr && found->pw_dir != nullptr) return found->pw_dir;
        if (error != ERANGE) break;
    }
    return {};
}

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#include "Platform/Files/UserFolders.h"

#include <string_view>

#include "Platform/Files/Files.h"

namespace QRVPlatform {

namespace {

bool isAbsolute(const char* path) {
    return path != nullptr && path[0] == '/';
}

std::string withoutSlashesAtTheEnd(std::string_view path) {
    return std::string(path.substr(0, path.find_last_not_of('/') + 1));
}

std::string configurationFolderOf(std::string_view home) {
    return withoutSlashesAtTheEnd(home) + "/.config";
}

}  // namespace

std::string UserFolders::libraryFolder(const char* configurationHome, const char* home,
                                       std::string (*databaseHome)()) {
    if (isAbsolute(configurationHome)) {
        const std::string folder = withoutSlashesAtTheEnd(configurationHome);
        return folder.empty() ? "/." : folder;
    }
    if (isAbsolute(home)) return configurationFolderOf(home);
    const std::string lastResort = databaseHome();
    return isAbsolute(lastResort.c_str()) ? configurationFolderOf(lastResort) : std::string();
}

std::string userLibraryFolder() {
    return UserFolders::libraryFolder(UserFolders::trustedVariable("XDG_CONFIG_HOME"),
                                      UserFolders::trustedVariable("HOME"),
                                      UserFolders::homeFromPasswordDatabase);
}

}  // namespace QRVPlatform

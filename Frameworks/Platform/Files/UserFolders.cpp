// SPDX-License-Identifier: MIT
#include "Platform/Files/UserFolders.h"

#include <cstdlib>

#include "Platform/Files/Files.h"

namespace QRVPlatform {

namespace {

bool isAbsolute(const char* path) {
    return path != nullptr && path[0] == '/';
}

}  // namespace

std::string UserFolders::libraryFolder(const char* configurationHome, const char* home,
                                       std::string (*databaseHome)()) {
    if (isAbsolute(configurationHome)) return configurationHome;
    if (isAbsolute(home)) return std::string(home) + "/.config";
    const std::string lastResort = databaseHome();
    return isAbsolute(lastResort.c_str()) ? lastResort + "/.config" : std::string();
}

std::string userLibraryFolder() {
    return UserFolders::libraryFolder(std::getenv("XDG_CONFIG_HOME"), std::getenv("HOME"),
                                      UserFolders::homeFromPasswordDatabase);
}

}  // namespace QRVPlatform

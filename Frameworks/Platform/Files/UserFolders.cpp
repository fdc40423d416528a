// SPDX-License-Identifier: MIT
#include "Platform/Files/UserFolders.h"

#include <algorithm>
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

/// `chosen` when that is absolute, else `usual` in the home folder.
std::string baseFolder(const char* chosen, std::string_view usual, const char* home,
                       std::string (*databaseHome)()) {
    if (isAbsolute(chosen)) {
        const std::string folder = withoutSlashesAtTheEnd(chosen);
        return folder.empty() ? "/." : folder;
    }
    if (isAbsolute(home)) return withoutSlashesAtTheEnd(home).append(usual);
    const std::string lastResort = databaseHome();
    if (!isAbsolute(lastResort.c_str())) return {};
    return withoutSlashesAtTheEnd(lastResort).append(usual);
}

}  // namespace

std::string UserFolders::libraryFolder(const char* configurationHome, const char* home,
                                       std::string (*databaseHome)()) {
    return baseFolder(configurationHome, "/.config", home, databaseHome);
}

std::string UserFolders::stateFolder(const char* stateHome, const char* home,
                                     std::string (*databaseHome)()) {
    return baseFolder(stateHome, "/.local/state", home, databaseHome);
}

std::vector<std::string> UserFolders::siteFolders(const char* configurationFolders) {
    std::string_view rest = configurationFolders == nullptr ? "" : configurationFolders;
    if (rest.empty()) rest = "/etc/xdg";
    std::vector<std::string> folders;
    while (!rest.empty()) {
        const std::string folder(rest.substr(0, rest.find(':')));
        rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
        if (!isAbsolute(folder.c_str())) continue;
        std::string path = withoutSlashesAtTheEnd(folder);
        if (path.empty()) path = "/.";
        if (std::find(folders.begin(), folders.end(), path) == folders.end())
            folders.push_back(std::move(path));
    }
    return folders;
}

std::vector<std::string> UserFolders::siteFolders() {
    return siteFolders(trustedVariable("XDG_CONFIG_DIRS"));
}

std::string userLibraryFolder() {
    return UserFolders::libraryFolder(UserFolders::trustedVariable("XDG_CONFIG_HOME"),
                                      UserFolders::trustedVariable("HOME"),
                                      UserFolders::homeFromPasswordDatabase);
}

std::string userStateFolder() {
    return UserFolders::stateFolder(UserFolders::trustedVariable("XDG_STATE_HOME"),
                                    UserFolders::trustedVariable("HOME"),
                                    UserFolders::homeFromPasswordDatabase);
}

}  // namespace QRVPlatform

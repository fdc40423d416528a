// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace QRVPlatform::UserFolders {

/// The library folder, without a slash at its end: null and relative paths do not count. The third
/// is called only when the others do not count: its answer may come over the network.
std::string libraryFolder(const char* configurationHome, const char* home,
                          std::string (*databaseHome)());

/// The folders of the text of `$XDG_CONFIG_DIRS`, without slashes at their ends, in its order and
/// each once; `/etc/xdg` when it is null or empty. Relative ones do not count.
std::vector<std::string> siteFolders(const char* configurationFolders);

/// Of this process: a privileged program has `/etc/xdg`, whatever the environment says.
std::vector<std::string> siteFolders();

/// The user's folder for state, as `libraryFolder` for settings.
std::string stateFolder(const char* stateHome, const char* home, std::string (*databaseHome)());

/// The value of an environment variable. Null when it is not set, and in a privileged program
/// (set-user-id, set-group-id, file capabilities), whose environment its caller has chosen.
const char* trustedVariable(const char* name);

/// The home folder that the password database has for the user; empty when it has none.
std::string homeFromPasswordDatabase();

}  // namespace QRVPlatform::UserFolders

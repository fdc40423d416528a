// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace QRVPlatform::UserFolders {

/// The library folder, without a slash at its end: null and relative paths do not count. The third
/// is called only when the others do not count: its answer may come over the network.
std::string libraryFolder(const char* configurationHome, const char* home,
                          std::string (*databaseHome)());

/// The same for the folder of the user's state.
std::string stateFolder(const char* stateHome, const char* home, std::string (*databaseHome)());

/// The value of an environment variable. Null when it is not set, and in a privileged program
/// (set-user-id, set-group-id, file capabilities), whose environment its caller has chosen.
const char* trustedVariable(const char* name);

/// The home folder that the password database has for the user; empty when it has none.
std::string homeFromPasswordDatabase();

}  // namespace QRVPlatform::UserFolders

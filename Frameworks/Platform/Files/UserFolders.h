// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace QRVPlatform::UserFolders {

/// The library folder that follows from these three; null and relative ones do not count. The third
/// is asked only when it is needed: the answer may come over the network.
std::string libraryFolder(const char* configurationHome, const char* home,
                          std::string (*databaseHome)());

/// The home folder that the password database has for the user; empty when it has none.
std::string homeFromPasswordDatabase();

}  // namespace QRVPlatform::UserFolders

// SPDX-License-Identifier: MIT
#pragma once

// The database as a file, and this process as the system knows it.

#include <cstdint>
#include <string>
#include <system_error>

namespace QRVHistoryInside {

/// Empty when the user has no home folder.
std::string databasePath();

/// Makes the file and the folders above it where they are missing. What root makes in somebody's
/// home belongs to that user.
std::error_code makeDatabaseFile(const std::string& path);

/// Tells one file at a path from another; 0 for none.
std::uint64_t inodeAt(const std::string& path);

/// Renames the database to the first free name for a damaged one, with what SQLite keeps beside it,
/// and returns that name. Empty when the file is another one than `inode` by now: then another
/// process has done it.
std::string renameDamaged(const std::string& path, std::uint64_t inode, std::error_code& error);

std::int64_t processIdentifier();
std::string programName();
/// The environment says so, and may be followed.
bool isSwitchedOff();

}  // namespace QRVHistoryInside

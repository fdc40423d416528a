// SPDX-License-Identifier: MIT
#pragma once

// The state of a file, as the system reports it. Nothing here changes or creates one.

#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

namespace Tool {

struct PathFacts {
    enum class Kind { Missing, File, Folder, Link, Other };
    static constexpr unsigned ownerMayWrite = 0200;
    static constexpr unsigned sticky = 01000;  ///< of a folder: only owners may replace files
    Kind kind = Kind::Missing;
    std::error_code error{};  ///< why the path cannot be examined; not that it is missing
    std::uint64_t size = 0;   ///< bytes
    unsigned mode = 0;        ///< permission bits
    std::string owner{};      ///< the name, or the number of one without
    bool isOwnedByUser = false;
    bool isOwnedByRoot = false;
};
/// Permission bits as four octal digits.
std::string modeText(unsigned mode);
/// Of a link itself, not of its target.
PathFacts factsOfPath(const std::string& path);

bool isRoot();
/// The name of the user of this process, or the number of one without.
std::string nameOfThisUser();
bool isReadableFile(const std::string& path);

/// Whether this process may make and remove files there.
bool isWritableFolder(const std::string& path);

/// "a file", "a folder", "a link"; "what is neither file nor folder" for a pipe or device.
std::string kindName(PathFacts::Kind kind);

/// Why a save cannot open its lock file, which exists. Takes no lock.
std::error_code errorOfOpeningLock(const std::string& path);

struct LockFacts {
    enum class State { Missing, NoFile, Unusable, Free, Held };
    State state = State::Missing;
    std::error_code error{};  ///< why it is unusable
    struct Holder {
        std::int64_t process = 0;
        std::string name{};
        bool isStopped = false;
        bool isOwn = false;  ///< it is this process
    };
    std::vector<Holder> holders{};  ///< those that the system lists
};
/// `path` is that of the lock file.
LockFacts factsOfLock(const std::string& path);

/// Those that have a lock on the file at `path` itself, as readers of a settings file have.
std::vector<LockFacts::Holder> holdersOfFile(const std::string& path);

/// `process 4711 (monitor, stopped)`, joined by commas.
std::string holdersText(const std::vector<LockFacts::Holder>& holders);

struct WatchFacts {
    std::error_code error{};     ///< why changes in the folder cannot be watched
    std::uint64_t watchers = 0;  ///< how many a user may have; 0 when unknown
    std::uint64_t folders = 0;   ///< how many they may watch; 0 when unknown
};
WatchFacts factsOfWatching(const std::string& folder);

}  // namespace Tool

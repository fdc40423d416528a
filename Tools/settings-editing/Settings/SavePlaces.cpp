// SPDX-License-Identifier: MIT
#include "Settings/SavePlaces.h"

#include "Platform/Files/Files.h"
#include "Settings/FileFacts.h"

namespace Tool {

std::string obstacleToSaves(const std::string& target) {
    using Kind = PathFacts::Kind;
    const QRVPlatform::FilesBeside beside = QRVPlatform::filesBeside(target);
    const Kind lock = factsOfPath(beside.lock).kind;
    if (lock != Kind::Missing && lock != Kind::File)
        return kindName(lock) + " lies in the place of the lock file, " + beside.lock;
    if (lock == Kind::File)
        if (const auto error = errorOfOpeningLock(beside.lock))
            return "the lock file cannot be opened: " + error.message() + ", " + beside.lock;
    if (factsOfPath(beside.temporary).kind == Kind::Folder)
        return "a folder lies where saves begin, " + beside.temporary;
    return "";
}

}  // namespace Tool

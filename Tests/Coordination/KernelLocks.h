// SPDX-License-Identifier: MIT
#pragma once

#include <regex>
#include <string>

#include "Files/TestFiles.h"
#include "Platform/Coordination/FileLock.h"
#include "Support/ChildProcess.h"

/// The process waits for an exclusive lock, as far as given on the file with this inode number: the
/// kernel's list of locks marks those who wait by an arrow.
inline bool isWaitingForALock(pid_t pid, const std::string& inode = "\\d+") {
    const std::string pattern =
        "-> FLOCK +ADVISORY +WRITE +" + std::to_string(pid) + " \\S+:" + inode + " ";
    return std::regex_search(readPlainly("/proc/locks"), std::regex(pattern));
}

inline bool isHeldBySomeone(const std::string& lockPath) {
    ChildProcess other([&] {
        QRVPlatform::FileLock lock;
        return !QRVPlatform::FileLock::acquireExclusive(lockPath, lock);
    });
    return waitUntil([&] { return other.hasEnded() || isWaitingForALock(other.pid()); }) &&
           !other.hasEnded();
}

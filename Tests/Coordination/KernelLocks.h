// SPDX-License-Identifier: MIT
#pragma once

// Who has or awaits a lock, as the kernel says it.

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <regex>
#include <string>

#include "Files/TestFiles.h"
#include "Support/ChildProcess.h"

/// The process waits for an exclusive lock, as far as given on the file with this inode number: the
/// kernel's list of locks marks those who wait by an arrow.
inline bool isWaitingForALock(pid_t pid, const std::string& inode = "\\d+") {
    const std::string pattern =
        "-> FLOCK +ADVISORY +WRITE +" + std::to_string(pid) + " \\S+:" + inode + " ";
    return std::regex_search(readPlainly("/proc/locks"), std::regex(pattern));
}

/// A lock that does not go with `operation` is on the file.
inline bool isRefused(const std::string& path, int operation) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    const bool isRefused = flock(file, operation | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(file);
    return isRefused;
}

/// Somebody has the lock, shared or alone.
inline bool isLocked(const std::string& path) {
    return isRefused(path, LOCK_EX);
}

inline bool isLockedAlone(const std::string& path) {
    return isRefused(path, LOCK_SH);
}

inline bool hasOpen(pid_t pid, const std::string& path) {
    const std::string target = std::filesystem::canonical(path);
    std::error_code error;
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd", error))
        if (std::filesystem::read_symlink(entry, error) == target) return true;
    return false;
}

/// How often the first thread of the process has begun to wait for something.
inline long pausesOf(pid_t pid) {
    const std::string status = readPlainly("/proc/" + std::to_string(pid) + "/status");
    std::smatch match;
    const std::regex pattern("\nvoluntary_ctxt_switches:\\s+(\\d+)");
    return std::regex_search(status, match, pattern) ? std::stol(match[1]) : -1;
}

/// The process has the file open, and tries again and again to get its lock.
inline bool isPollingForTheLockOf(ChildProcess& process, const std::string& path) {
    constexpr long enough = 6;
    long start = -1;
    return waitUntil([&] {
               if (process.hasEnded()) return true;
               if (start < 0 && hasOpen(process.pid(), path)) start = pausesOf(process.pid());
               return start >= 0 && pausesOf(process.pid()) >= start + enough &&
                      hasOpen(process.pid(), path);
           }) &&
           !process.hasEnded();
}

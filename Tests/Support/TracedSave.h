// SPDX-License-Identifier: MIT
#pragma once

// Saves whose system calls are watched: which of them concern the settings, and which may fail.

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "Platform/Files/NSFileCoordinator.h"
#include "Support/ChildProcess.h"
#include "Support/StoreSupport.h"
#include "Support/TracedProcess.h"

namespace TracedSave {

using TracedProcess::Call;

inline std::filesystem::path folder() {
    return std::filesystem::path(QRVSettingsLocation()).parent_path();
}

inline std::set<std::string> filesInFolder() {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder()))
        names.insert(entry.path().filename().string());
    return names;
}

inline std::set<std::string> fileAndLock() {
    const std::string name = std::filesystem::path(QRVSettingsLocation()).filename().string();
    return {name, "." + name + ".lock"};
}

inline bool isOnPath(const Call& call, std::size_t argument) {
    return call.textOf(argument).starts_with(folder().string());
}

/// A write to a file of the settings; not a wake-up, nor what a sanitizer writes for itself.
inline bool isFileWrite(const Call& call) {
    if (!call.is({SYS_write})) return false;
    std::error_code error;
    const auto target = std::filesystem::read_symlink(
        "/proc/" + std::to_string(call.thread) + "/fd/" + std::to_string(call.arguments[0]), error);
    return target.string().starts_with(folder().string());
}

/// A call of a save that the file system may refuse.
inline bool mayFail(const Call& call) {
    if (call.is({SYS_openat})) return isOnPath(call, 1);
    if (call.is({SYS_rename, SYS_unlink, SYS_mkdir})) return isOnPath(call, 0);
    if (call.is({SYS_write})) return isFileWrite(call);
    return call.is({SYS_fsync, SYS_fdatasync, SYS_flock, SYS_fchmod, SYS_fchown, SYS_utimensat,
                    SYS_llistxattr, SYS_lgetxattr, SYS_fgetxattr});
}

/// Nothing fails after this.
inline void endOfFailures() {
    syscall(SYS_getppid);
}

inline bool writerGetsTheLock() {
    ChildProcess process([] {
        bool got = false;
        NSFileCoordinator().coordinateWritingItemAtURL(
            QRVSettingsLocation(), NSFileCoordinator::WritingOptions::ForReplacing,
            [&got](const std::string&) { got = true; });
        return got;
    });
    return process.succeeded();
}

}  // namespace TracedSave

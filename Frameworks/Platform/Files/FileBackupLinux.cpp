// SPDX-License-Identifier: MIT
// Backups of a file beside it (`backUpFile` of Files.h).

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FilePaths.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/NewFile.h"

namespace QRVPlatform {

namespace {

std::error_code copyBytes(const FileDescriptor& source, NewFile& copy) {
    std::array<char, 65536> buffer{};
    for (;;) {
        const ssize_t count = read(source.number(), buffer.data(), buffer.size());
        if (count == 0) return {};
        if (count < 0 && errno != EINTR) return FileFailures::lastError();
        if (count < 0) continue;
        if (const auto error = copy.write({buffer.data(), static_cast<std::size_t>(count)}))
            return error;
    }
}

std::error_code copyFile(const std::string& path, const std::string& copyPath) {
    const FileDescriptor source(
        open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!source.isOpen() || fstat(source.number(), &status) != 0) return FileFailures::lastError();
    NewFile copy;
    const FileModel model{path, status};
    if (const auto error = copy.create(copyPath, &model)) return error;
    if (const auto error = copyBytes(source, copy)) return error;
    if (const auto error = copy.finish()) return error;
    copy.keep();
    return {};
}

/// File systems without links report that by different errors. Any other reason makes the copy fail
/// too.
std::error_code linkOrCopy(const std::string& path, const std::string& newPath) {
    if (link(path.c_str(), newPath.c_str()) == 0) return {};
    if (errno == EEXIST) return FileFailures::lastError();
    return copyFile(path, newPath);
}

FileBackup backUpTarget(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return {{}, FileFailures::lastError()};
    if (const auto error = FileStatus::errorUnlessRegular(status)) return {{}, error};
    const std::string backupStart = filesBeside(path).backupStart;
    for (unsigned long number = 1;; ++number) {
        const std::string newPath = backupStart + std::to_string(number);
        const std::error_code error = linkOrCopy(path, newPath);
        if (error == std::errc::file_exists) continue;
        if (error) return {{}, error};
        FilePaths::syncFolder(FilePaths::folderOf(path));
        return {newPath, {}};
    }
}

}  // namespace

FileBackup backUpFile(const std::string& path) {
    const auto [target, error] = resolvedPath(path);
    FileBackup backup = error ? FileBackup{{}, error} : backUpTarget(target);
    FileFailures::reported("back up file", path, backup.error);
    return backup;
}

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <optional>
#include <utility>

#include "Platform/Descriptors/FileDescriptor.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FilePaths.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/FolderOwner.h"

namespace QRVPlatform {

namespace {

std::error_code checkFolder(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return FileFailures::lastError();
    return S_ISDIR(status.st_mode) ? std::error_code()
                                   : make_error_code(std::errc::not_a_directory);
}

/// False with `errno` set when it cannot.
bool makeFolder(const std::string& path) {
    if (mkdir(path.c_str(), S_IRWXU) != 0) return false;
    const FileDescriptor folder(
        open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (folder.isOpen()) FolderOwner::give(folder, path);
    FilePaths::syncFolder(FilePaths::folderOf(path));
    return true;
}

}  // namespace

std::optional<std::string> FilePaths::linkTarget(const std::string& path) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = readlink(path.c_str(), target.data(), target.size());
    if (length < 0) return std::nullopt;
    target.resize(static_cast<std::size_t>(length));
    return target;
}

bool FilePaths::isFolder(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

ResolvedPath resolvedPath(std::string path) {
    for (int links = 0;; ++links) {
        const std::optional<std::string> target = FilePaths::linkTarget(path);
        if (!target) return {std::move(path), {}};
        if (links == maximumSymbolicLinks)
            return {{}, make_error_code(std::errc::too_many_symbolic_link_levels)};
        path = target->starts_with('/') ? *target : FilePaths::siblingOf(path, *target);
    }
}

std::error_code FilePaths::createFolder(const std::string& path) {
    if (makeFolder(path)) return {};
    if (errno == EEXIST) return checkFolder(path);
    const std::string parent = folderOf(path);
    if (errno != ENOENT || parent == path) return FileFailures::lastError();
    if (const std::error_code error = createFolder(parent)) return error;
    const bool isThere = makeFolder(path) || errno == EEXIST;
    return isThere ? std::error_code() : FileFailures::lastError();
}

void FilePaths::syncFolder(const std::string& path) {
    const FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen()) fsync(folder.number());
}

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#include "Platform/Files/FolderOwner.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <string_view>

#include "Platform/Files/FilePaths.h"

namespace QRVPlatform {

namespace {

bool isEmptyFolder(const FileDescriptor& folder) {
    const int copy = openat(folder.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (copy < 0) return false;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(fdopendir(copy), closedir);
    if (entries == nullptr) close(copy);
    if (entries == nullptr) return false;
    while (const dirent* const entry = readdir(entries.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") return false;
    }
    return true;
}

/// The owner of a folder could exchange what is at the path for something else of this user: a link
/// to a file elsewhere, or a folder that this user has filled.
bool isAsJustMade(const FileDescriptor& made, const struct stat& status) {
    if (S_ISDIR(status.st_mode)) return isEmptyFolder(made);
    return status.st_nlink == 1 && status.st_size == 0;
}

FileDescriptor openedFolderOf(const std::string& path) {
    return FileDescriptor(
        open(FilePaths::folderOf(path).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

bool isIn(const FileDescriptor& folder, const std::string& path, const struct stat& made) {
    const std::string name = path.substr(path.rfind('/') + 1);
    struct stat named {};
    return fstatat(folder.number(), name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           named.st_dev == made.st_dev && named.st_ino == made.st_ino;
}

}  // namespace

// The folder above could have been exchanged, too. So its owner counts only if what was made is in
// it; the order of the tests matters, because a second name of a file stays.
void FolderOwner::give(const FileDescriptor& made, const std::string& path) {
    const FileDescriptor folder = openedFolderOf(path);
    struct stat owner {};
    struct stat status {};
    if (!folder.isOpen() || fstat(folder.number(), &owner) != 0 ||
        fstat(made.number(), &status) != 0 || owner.st_uid == status.st_uid)
        return;
    if (!isIn(folder, path, status) || fstat(made.number(), &status) != 0) return;
    if (status.st_uid != geteuid() || !isAsJustMade(made, status)) return;
    // An ordinary user may not give files away.
    [[maybe_unused]] const int result = fchown(made.number(), owner.st_uid, owner.st_gid);
}

bool FolderOwner::hasBoth(const FileDescriptor& made, const std::string& path,
                          const FileModel& model) {
    const FileDescriptor folder = openedFolderOf(path);
    struct stat status {};
    return folder.isOpen() && fstat(made.number(), &status) == 0 && isIn(folder, path, status) &&
           isIn(folder, model.path, model.status);
}

}  // namespace QRVPlatform

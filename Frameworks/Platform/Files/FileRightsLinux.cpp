// SPDX-License-Identifier: MIT
#include "Platform/Files/FileRights.h"

#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files/ExtendedAttributes.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FolderOwner.h"

namespace QRVPlatform {

namespace {

constexpr mode_t permissionBits = S_IRWXU | S_IRWXG | S_IRWXO;

/// Sets owner and group, or the group alone, or neither, as far as the system allows it. False when
/// the file has another group. Some file systems give all files to one owner, which the file then
/// has anyway.
///
/// Another user, who may be able to exchange the folder for a link to another one, gets nothing
/// that lies elsewhere than the old file.
bool copyOwner(const FileModel& oldFile, const FileDescriptor& file, const std::string& path) {
    const struct stat& model = oldFile.status;
    if (model.st_uid != geteuid() && !FolderOwner::hasBoth(file, path, oldFile)) return false;
    if (fchown(file.number(), model.st_uid, model.st_gid) == 0) return true;
    if (fchown(file.number(), static_cast<uid_t>(-1), model.st_gid) == 0) return true;
    struct stat status {};
    return fstat(file.number(), &status) == 0 && status.st_gid == model.st_gid;
}

/// The members of the old group are now among the others, and may do no more than before.
mode_t withoutGroup(mode_t mode) {
    constexpr unsigned bitsOfAClass = 3;
    const mode_t othersInGroup = mode & (mode >> bitsOfAClass) & S_IRWXO;
    return (mode & S_IRWXU) | othersInGroup;
}

enum class MorePermissions { Allowed, AnError };

std::error_code setMode(const FileDescriptor& file, const std::string& path, mode_t mode,
                        MorePermissions more) {
    if (fchmod(file.number(), mode) == 0) return {};
    const std::error_code error = FileFailures::lastError();
    struct stat status {};
    if (!FileFailures::isRefusal(error) || fstat(file.number(), &status) != 0) return error;
    const mode_t actual = status.st_mode & permissionBits;
    if (actual == mode) return {};
    if (more == MorePermissions::AnError && (actual & ~mode) != 0) return error;
    FileFailures::reportOnce("set mode of file", path, error);
    return {};
}

}  // namespace

std::error_code FileRights::makePrivate(const FileDescriptor& file, const std::string& path) {
    ExtendedAttributes::removeAccessList(file);
    return setMode(file, path, S_IRUSR | S_IWUSR, MorePermissions::Allowed);
}

// The mode comes last: no group has permissions that are meant for another, and no list that the
// folder gives to new files becomes effective.
std::error_code FileRights::copyFrom(const FileModel& model, const FileDescriptor& file,
                                     const std::string& path) {
    ExtendedAttributes::copyOrdinary(model.path, file, path);
    mode_t mode = model.status.st_mode & permissionBits;
    const bool hasItsGroup = copyOwner(model, file, path);
    if (!hasItsGroup) mode = withoutGroup(mode);
    const ExtendedAttributes::AccessList list = ExtendedAttributes::accessListOf(model.path);
    const bool hadList = list.name != nullptr;
    if (hadList && hasItsGroup && ExtendedAttributes::setAccessList(file, list)) return {};
    if (!ExtendedAttributes::removeAccessList(file) || hadList) mode &= S_IRWXU;
    return setMode(file, path, mode, MorePermissions::AnError);
}

}  // namespace QRVPlatform

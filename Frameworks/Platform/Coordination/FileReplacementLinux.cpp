// SPDX-License-Identifier: MIT
// Replacing a file as a whole, under a coordinated write or without (`replaceFile` of Files.h).

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

#include "Platform/Coordination/CoordinatedWrite.h"
#include "Platform/Coordination/WriteAccess.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FilePaths.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/NewFile.h"
#include "Platform/Presenters/PresenterRegistry.h"

namespace QRVPlatform {

namespace {

/// Removes what an earlier process has left there.
std::error_code createTemporary(NewFile& file, const std::string& path, const FileModel* model) {
    const std::error_code error = file.create(path, model);
    if (error != std::errc::file_exists) return error;
    unlink(path.c_str());
    return file.create(path, model);
}

std::error_code writeNewFile(NewFile& file, const std::string& path, const FileModel* model,
                             std::string_view bytes) {
    if (const auto error = createTemporary(file, path, model)) return error;
    if (const auto error = file.write(bytes)) return error;
    if (const auto error = file.date(model)) return error;
    return file.finish();
}

std::error_code putInPlace(const std::string& newFile, const std::string& path,
                           const NSFilePresenter* performer) {
    return PresenterRegistry::replaceFor(performer, newFile, [&] {
        return rename(newFile.c_str(), path.c_str()) == 0 ? std::error_code()
                                                          : FileFailures::lastError();
    });
}

/// These file systems rename an open file away before it is replaced: for a moment there would be
/// no file.
bool movesOpenFilesAway(const FileDescriptor& file) {
    struct statfs system {};
    if (fstatfs(file.number(), &system) != 0) return true;
    return system.f_type == NFS_SUPER_MAGIC || system.f_type == AFS_SUPER_MAGIC ||
           system.f_type == AFS_FS_MAGIC;
}

/// Keeps the old file open across the rename. Otherwise the rename would free the space of the old
/// file, which can take as long as all the rest, while readers wait. O_PATH needs no permission to
/// read, and closing it is no event.
FileDescriptor openedToBeReplaced(const std::string& path) {
    FileDescriptor file(open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (file.isOpen() && movesOpenFilesAway(file)) file.close();
    return file;
}

std::error_code replaceUnder(WriteAccess& access, std::string_view bytes) {
    const std::string& path = access.path();
    struct stat old {};
    const bool exists = lstat(path.c_str(), &old) == 0;
    if (!exists && errno != ENOENT) return FileFailures::lastError();
    if (const auto error = exists ? FileStatus::errorUnlessRegular(old) : std::error_code())
        return error;
    const std::string temporary = filesBeside(path).temporary;
    if (temporary.empty()) return make_error_code(std::errc::is_a_directory);
    const FileModel model{path, old};
    NewFile file;
    if (const auto error = writeNewFile(file, temporary, exists ? &model : nullptr, bytes))
        return error;
    FileDescriptor oldFile = openedToBeReplaced(path);
    if (const auto error = putInPlace(temporary, path, access.performer())) return error;
    file.keep();
    access.noteReplacement(std::move(oldFile));
    return {};
}

// The accessor of a host gets a path and no access, so this finds the access of its thread.
std::error_code replaceTarget(const std::string& path, std::string_view bytes) {
    if (WriteAccess* const access = WriteAccess::onThisThreadTo(path))
        return replaceUnder(*access, bytes);
    WriteAccess ownAccess(nullptr, path);
    return replaceUnder(ownAccess, bytes);
}

}  // namespace

std::error_code replaceFile(WriteAccess& access, std::string_view bytes) {
    return FileFailures::reported("replace file", access.path(), replaceUnder(access, bytes));
}

std::error_code replaceFile(const std::string& path, std::string_view bytes) {
    auto [target, error] = resolvedPath(path);
    if (!error) error = replaceTarget(target, bytes);
    return FileFailures::reported("replace file", path, error);
}

}  // namespace QRVPlatform

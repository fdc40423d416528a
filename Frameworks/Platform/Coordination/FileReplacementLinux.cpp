// SPDX-License-Identifier: MIT
// Replacing a file as a whole, under a coordinated write or without (`replaceFile` of Files.h).

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "Platform/Coordination/CoordinatedWrite.h"
#include "Platform/Coordination/WriteAccess.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FilePaths.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/NewFile.h"

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
    if (const auto error = access.putInPlace(temporary)) return error;
    file.keep();
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

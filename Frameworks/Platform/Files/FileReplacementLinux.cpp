// SPDX-License-Identifier: MIT
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FilePaths.h"
#include "Platform/Files/FilePresenters.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/NewFile.h"
#include "Platform/Files/OwnWrites.h"

namespace {

std::error_code writeNewFile(NewFile& file, const std::string& path, const struct stat* model,
                             std::string_view bytes) {
    if (const auto error = file.create(path, model)) return error;
    if (const auto error = file.write(bytes)) return error;
    if (const auto error = file.date(model)) return error;
    return file.finish();
}

std::error_code putInPlace(const std::string& newFile, const std::string& path) {
    return FilePresenters::replaceFor(OwnWrites::performerAt(path), newFile, [&] {
        return rename(newFile.c_str(), path.c_str()) == 0 ? std::error_code()
                                                          : FileFailures::lastError();
    });
}

std::error_code replaceTarget(const std::string& path, std::string_view bytes) {
    struct stat old {};
    const bool exists = lstat(path.c_str(), &old) == 0;
    if (!exists && errno != ENOENT) return FileFailures::lastError();
    if (const auto error = exists ? FileStatus::errorUnlessRegular(old) : std::error_code())
        return error;
    const std::string temporary = FilePaths::hiddenSiblingOf(path, ".tmp");
    if (temporary.empty()) return make_error_code(std::errc::is_a_directory);
    unlink(temporary.c_str());
    NewFile file;
    if (const auto error = writeNewFile(file, temporary, exists ? &old : nullptr, bytes))
        return error;
    if (const auto error = putInPlace(temporary, path)) return error;
    file.keep();
    FilePaths::syncFolder(FilePaths::folderOf(path));
    return {};
}

}  // namespace

std::error_code replaceFile(const std::string& path, std::string_view bytes) {
    auto [target, error] = FilePaths::resolved(path);
    if (!error) error = replaceTarget(target, bytes);
    return FileFailures::reported("replace file", path, error);
}

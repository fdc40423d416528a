// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <ctime>

#include "Platform/Files/FileFailures.h"
#include "Platform/Files/NewFile.h"

namespace QRVPlatform {

namespace {

constexpr mode_t privateMode = S_IRUSR | S_IWUSR;

/// Sets owner and group, or the group alone, or neither, as far as the system allows it. Returns
/// the mode that the file may have: another group does not get the permissions of the old one.
mode_t keepOwner(const FileDescriptor& file, const struct stat& model, mode_t mode) {
    if (fchown(file.number(), model.st_uid, model.st_gid) == 0) return mode;
    if (fchown(file.number(), static_cast<uid_t>(-1), model.st_gid) == 0) return mode;
    return mode & ~static_cast<mode_t>(S_IRWXG);
}

constexpr std::int64_t aSecond = 1'000'000'000;
constexpr std::int64_t aMicrosecond = 1000;

std::int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * aSecond + time.tv_nsec;
}

}  // namespace

NewFile::~NewFile() {
    if (!path_.empty()) unlink(path_.c_str());
}

// The owner first, then the mode: no group ever has the permissions that are meant for another.
std::error_code NewFile::create(const std::string& path, const struct stat* model) {
    constexpr mode_t permissionBits = S_IRWXU | S_IRWXG | S_IRWXO;
    mode_t mode = model != nullptr ? model->st_mode & permissionBits : privateMode;
    file_ = FileDescriptor(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                mode & privateMode));
    if (!file_.isOpen()) return FileFailures::lastError();
    path_ = path;
    if (model != nullptr) mode = keepOwner(file_, *model, mode);
    return fchmod(file_.number(), mode) == 0 ? std::error_code() : FileFailures::lastError();
}

std::error_code NewFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file_.number(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) return FileFailures::lastError();
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return {};
}

std::error_code NewFile::date(const struct stat* model) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::int64_t date = nanoseconds(now);
    if (model != nullptr) {
        const std::int64_t next = nanoseconds(model->st_mtim) + aMicrosecond;
        // A date further in the future comes from another clock, and is not followed.
        if (next - date <= aSecond) date = std::max(date, next);
    }
    const std::array<timespec, 2> times = {timespec{0, UTIME_OMIT},
                                           timespec{date / aSecond, date % aSecond}};
    return futimens(file_.number(), times.data()) == 0 ? std::error_code()
                                                       : FileFailures::lastError();
}

std::error_code NewFile::finish() {
    while (fdatasync(file_.number()) != 0)
        if (errno != EINTR) return FileFailures::lastError();
    return file_.close() ? std::error_code() : FileFailures::lastError();
}

}  // namespace QRVPlatform

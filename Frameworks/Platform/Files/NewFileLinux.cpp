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
#include "Platform/Files/FileRights.h"
#include "Platform/Files/FolderOwner.h"
#include "Platform/Files/NewFile.h"

namespace QRVPlatform {

namespace {

constexpr mode_t privateMode = S_IRUSR | S_IWUSR;

constexpr std::int64_t aSecond = 1'000'000'000;
constexpr std::int64_t aMicrosecond = 1000;

std::int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * aSecond + time.tv_nsec;
}

}  // namespace

NewFile::~NewFile() {
    if (!path_.empty()) unlink(path_.c_str());
}

std::error_code NewFile::create(const std::string& path, const FileModel* model) {
    file_ = FileDescriptor(
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, privateMode));
    if (!file_.isOpen()) return FileFailures::lastError();
    path_ = path;
    if (model != nullptr) return FileRights::copyFrom(*model, file_, path);
    const std::error_code error = FileRights::makePrivate(file_, path);
    if (!error) FolderOwner::give(file_, path);
    return error;
}

std::error_code NewFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file_.number(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) return FileFailures::lastError();
        if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return {};
}

std::error_code NewFile::date(const FileModel* model) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::int64_t date = nanoseconds(now);
    if (model != nullptr) {
        const std::int64_t next = nanoseconds(model->status.st_mtim) + aMicrosecond;
        // A date further in the future comes from another clock, and is not followed.
        if (next - date <= aSecond) date = std::max(date, next);
    }
    const std::array<timespec, 2> times = {timespec{0, UTIME_OMIT},
                                           timespec{date / aSecond, date % aSecond}};
    if (futimens(file_.number(), times.data()) == 0) return {};
    const std::error_code error = FileFailures::lastError();
    return FileFailures::isRefusal(error) ? std::error_code() : error;
}

std::error_code NewFile::finish() {
    while (fdatasync(file_.number()) != 0)
        if (errno != EINTR) return FileFailures::lastError();
    return file_.close() ? std::error_code() : FileFailures::lastError();
}

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <thread>

#include "Platform/Files/FileStatus.h"

namespace QRVPlatform {

namespace {

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

std::int64_t nanosecondsOf(const timespec& time) {
    return time.tv_sec * nanosecondsPerSecond + time.tv_nsec;
}

NSDate dateOf(const timespec& time) {
    constexpr auto referenceDate =
        static_cast<std::int64_t>(NSDate::timeIntervalBetween1970AndReferenceDate);
    return NSDate(static_cast<double>(time.tv_sec - referenceDate) +
                  static_cast<double>(time.tv_nsec) / static_cast<double>(nanosecondsPerSecond));
}

std::optional<struct stat> statusOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return status;
}

FileAttributes attributesOf(const struct stat& status) {
    constexpr mode_t permissionBits = 07777;
    return {.size = static_cast<std::uint64_t>(status.st_size),
            .modificationDate = dateOf(status.st_mtim),
            .mode = status.st_mode & permissionBits,
            .isRegularFile = S_ISREG(status.st_mode)};
}

/// The system takes file dates from a coarse clock. While that shows the same time, a later change
/// would get the same date.
bool isOfThisTick(const timespec& time) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return nanosecondsOf(time) == nanosecondsOf(now);
}

}  // namespace

FileIdentity FileStatus::identityOf(const struct stat& status) {
    return {.device = status.st_dev,
            .inode = status.st_ino,
            .size = static_cast<std::uint64_t>(status.st_size),
            .modificationTime = nanosecondsOf(status.st_mtim),
            .changeTime = nanosecondsOf(status.st_ctim)};
}

std::error_code FileStatus::errorUnlessRegular(const struct stat& status) {
    if (S_ISREG(status.st_mode)) return {};
    return make_error_code(S_ISDIR(status.st_mode) ? std::errc::is_a_directory
                                                   : std::errc::invalid_argument);
}

bool FileStatus::movesOpenFilesAway(const struct statfs& system) {
    switch (static_cast<std::uint32_t>(system.f_type)) {
        case AFS_FS_MAGIC:
        case AFS_SUPER_MAGIC:
        case CIFS_SUPER_MAGIC:
        case FUSE_SUPER_MAGIC:
        case NFS_SUPER_MAGIC:
        case SMB2_SUPER_MAGIC:
        case SMB_SUPER_MAGIC:
            return true;
        default:
            return false;
    }
}

bool fileExistsAtPath(const std::string& path) {
    return statusOf(path).has_value();
}

std::optional<FileAttributes> attributesOfItemAtPath(const std::string& path) {
    const auto status = statusOf(path);
    return status ? std::optional(attributesOf(*status)) : std::nullopt;
}

std::optional<FileAttributes> settledAttributesOfItemAtPath(const std::string& path) {
    constexpr std::chrono::seconds patience(1);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    auto status = statusOf(path);
    while (status && isOfThisTick(status->st_mtim) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        status = statusOf(path);
    }
    return status ? std::optional(attributesOf(*status)) : std::nullopt;
}

FileIdentity identityOfFileAtPath(const std::string& path) {
    const auto status = statusOf(path);
    return status ? FileStatus::identityOf(*status) : FileIdentity{};
}

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "Platform/Files/FileStatus.h"
#include "Platform/Files/HeldFile.h"

namespace QRVPlatform {

HeldFile::HeldFile(FileDescriptor file) {
    struct stat status {};
    if (!file.isOpen() || fstat(file.number(), &status) != 0) return;
    isKnown_ = true;
    identity_ = FileStatus::identityOf(status);
    file_ = std::make_shared<const FileDescriptor>(std::move(file));
}

// O_PATH: needs no right to read the file, and closing it is no event.
HeldFile HeldFile::at(const std::string& path) {
    FileDescriptor file(open(path.c_str(), O_PATH | O_CLOEXEC));
    if (file.isOpen()) return HeldFile(std::move(file));
    HeldFile absence;
    absence.isKnown_ = errno == ENOENT || errno == ENOTDIR;
    return absence;
}

bool HeldFile::isAt(const std::string& path) const {
    return isKnown_ && identityOfFileAtPath(path) == identity_;
}

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "Platform/Files/FileStatus.h"
#include "Platform/Files/HeldFile.h"

namespace QRVPlatform {

HeldFile HeldFile::afterRename() const {
    HeldFile now = *this;
    struct stat status {};
    now.isKnown_ = file_ && fstat(file_->number(), &status) == 0;
    if (now.isKnown_) now.identity_ = FileStatus::identityOf(status);
    return now;
}

// O_PATH: needs no right to read the file, and closing it is no event.
HeldFile HeldFile::at(const std::string& path) {
    HeldFile held;
    FileDescriptor file(open(path.c_str(), O_PATH | O_CLOEXEC));
    if (!file.isOpen()) {
        held.isKnown_ = errno == ENOENT || errno == ENOTDIR;
        return held;
    }
    held.file_ = std::make_shared<const FileDescriptor>(std::move(file));
    return held.afterRename();
}

bool HeldFile::isAt(const std::string& path) const {
    return isKnown_ && identityOfFileAtPath(path) == identity_;
}

}  // namespace QRVPlatform

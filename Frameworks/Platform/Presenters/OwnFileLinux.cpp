// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/stat.h>

#include "Platform/Files/FileStatus.h"
#include "Platform/Presenters/OwnFile.h"

namespace QRVPlatform {

bool isSameFile(const FileIdentity& first, const FileIdentity& second) {
    FileIdentity changedLikeSecond = first;
    changedLikeSecond.changeTime = second.changeTime;
    return changedLikeSecond == second;
}

// O_PATH: needs no right to read the file, and closing it is no event.
OwnFile::OwnFile(const std::string& path)
    : file_(open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC)) {
    struct stat status {};
    if (file_.isOpen() && fstat(file_.number(), &status) == 0)
        identity_ = FileStatus::identityOf(status);
    else
        file_.close();
}

bool OwnFile::is(const FileIdentity& found) const {
    return file_.isOpen() && isSameFile(identity_, found);
}

}  // namespace QRVPlatform

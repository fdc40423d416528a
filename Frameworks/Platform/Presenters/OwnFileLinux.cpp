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

// O_PATH: needs no right to read the file, and closing it is no event. Without a descriptor the
// identity has to do: a file that gets the same inode number has hardly the same time and size.
OwnFile::OwnFile(const std::string& path)
    : file_(open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC)) {
    struct stat status {};
    const int result =
        file_.isOpen() ? fstat(file_.number(), &status) : lstat(path.c_str(), &status);
    if (result == 0)
        identity_ = FileStatus::identityOf(status);
    else
        file_.close();
}

bool OwnFile::is(const FileIdentity& found) const {
    return !identity_.isMissing() && isSameFile(identity_, found);
}

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
// Reading a file as a whole (`contentsOfFile` of Files.h).

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Platform/Descriptors/FileDescriptor.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FileStatus.h"

namespace QRVPlatform {

namespace {

/// `count` is less than `size` only at the end of the file.
std::error_code readFully(const FileDescriptor& file, char* buffer, std::size_t size,
                          std::size_t& count) {
    count = 0;
    while (count < size) {
        const ssize_t result = read(file.number(), buffer + count, size - count);
        if (result == 0) break;
        if (result < 0 && errno != EINTR) return FileFailures::lastError();
        if (result > 0) count += static_cast<std::size_t>(result);
    }
    return {};
}

/// The file may grow and shrink meanwhile, so its size is only a hint.
std::error_code readToEnd(const FileDescriptor& file, std::size_t sizeHint, std::size_t maximumSize,
                          std::string& bytes) {
    std::size_t room = std::min(sizeHint, maximumSize) + 1;
    for (;;) {
        const std::size_t start = bytes.size();
        bytes.resize(start + room);
        std::size_t count = 0;
        const std::error_code error = readFully(file, bytes.data() + start, room, count);
        bytes.resize(start + count);
        if (error) return error;
        if (bytes.size() > maximumSize) return make_error_code(std::errc::file_too_large);
        if (count < room) return {};
        room = std::min(bytes.size(), maximumSize - bytes.size()) + 1;
    }
}

std::error_code readInto(FileContents& contents, const std::string& path, std::size_t maximumSize) {
    // Neither waits for the writer of a pipe nor makes a terminal the process's own.
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file.isOpen() || fstat(file.number(), &status) != 0) return FileFailures::lastError();
    if (const auto error = FileStatus::errorUnlessRegular(status)) return error;
    contents.identity = FileStatus::identityOf(status);
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > maximumSize) return make_error_code(std::errc::file_too_large);
    return readToEnd(file, size, maximumSize, contents.bytes);
}

}  // namespace

FileContents contentsOfFile(const std::string& path, std::size_t maximumSize) {
    FileContents contents;
    contents.error = readInto(contents, path, maximumSize);
    if (contents.error) contents.bytes.clear();
    return contents;
}

}  // namespace QRVPlatform

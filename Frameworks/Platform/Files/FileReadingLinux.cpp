// SPDX-License-Identifier: MIT
// Reading a file as a whole (`contentsOfFile` of Files.h, and `TransientContents`).

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Platform/Descriptors/FileDescriptor.h"
#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FileStatus.h"
#include "Platform/Files/TransientContents.h"

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

/// A file that is open for reading, and what was known of it then.
struct OpenedFile {
    FileDescriptor file;
    std::size_t size = 0;
};

std::error_code openFile(OpenedFile& opened, FileContents& contents, const std::string& path,
                         std::size_t maximumSize) {
    // Neither waits for the writer of a pipe nor makes a terminal the process's own.
    opened.file = FileDescriptor(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!opened.file.isOpen() || fstat(opened.file.number(), &status) != 0)
        return FileFailures::lastError();
    if (const auto error = FileStatus::errorUnlessRegular(status)) return error;
    contents.identity = FileStatus::identityOf(status);
    opened.size = static_cast<std::size_t>(status.st_size);
    if (opened.size > maximumSize) return make_error_code(std::errc::file_too_large);
    return {};
}

}  // namespace

FileContents contentsOfFile(const std::string& path, std::size_t maximumSize) {
    FileContents contents;
    OpenedFile opened;
    contents.error = openFile(opened, contents, path, maximumSize);
    if (!contents.error)
        contents.error = readToEnd(opened.file, opened.size, maximumSize, contents.bytes);
    if (contents.error) contents.bytes.clear();
    return contents;
}

TransientContents TransientContents::ofFile(const std::string& path, std::size_t maximumSize) {
    TransientContents contents;
    FileContents& file = contents.file_;
    OpenedFile opened;
    file.error = openFile(opened, file, path, maximumSize);
    if (!file.error && opened.size >= smallestLarge)
        contents.memory_ = SeparateMemory(opened.size + 1);
    if (char* const memory = contents.memory_.start()) {
        file.error = readFully(opened.file, memory, opened.size + 1, contents.size_);
        if (!file.error && contents.size_ <= opened.size) return contents;
        // The file has grown meanwhile.
        if (!file.error) file.bytes.assign(memory, contents.size_);
        contents.memory_ = SeparateMemory();
    }
    if (!file.error) file.error = readToEnd(opened.file, opened.size, maximumSize, file.bytes);
    if (file.error) file.bytes.clear();
    return contents;
}

}  // namespace QRVPlatform

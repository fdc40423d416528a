// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "Platform/Files/FileStatus.h"
#include "Platform/Files/HeldBytes.h"
#include "Platform/Values/Hashing.h"

namespace QRVPlatform {

namespace {

using ValueObjects::mix;
using ValueObjects::wordAt;

/// Depends on a number that is random in each process, so that nobody can make other bytes with the
/// same checksum.
std::uint64_t checksumOf(std::string_view bytes) {
    const ValueObjects::HashSeed& seed = ValueObjects::hashSeed();
    constexpr std::size_t step = 4 * sizeof(std::uint64_t);
    std::uint64_t one = seed.start ^ bytes.size();
    std::uint64_t other = seed.factor;  // Two at a time: a multiplication takes a while.
    const char* word = bytes.data();
    std::size_t left = bytes.size();
    const auto wordFrom = [&word](std::size_t index) {
        return wordAt<std::uint64_t>(word + index * sizeof(std::uint64_t));
    };
    for (; left >= step; word += step, left -= step) {
        one = mix(wordFrom(0) ^ seed.factor, wordFrom(1) ^ one);
        other = mix(wordFrom(2) ^ seed.start, wordFrom(3) ^ other);
    }
    for (; left != 0; ++word, --left)
        one = mix(static_cast<unsigned char>(*word) ^ seed.factor, one ^ seed.start);
    return mix(one ^ seed.factor, other ^ seed.start);
}

}  // namespace

HeldBytes::Bytes::Bytes(std::size_t size, std::size_t growth)
    : memory_(std::make_unique_for_overwrite<char[]>(size + growth)),
      roomSize_(size + growth),
      size_(size) {}

HeldBytes::Mark HeldBytes::markOf(std::string_view bytes) {
    return {bytes.size(), checksumOf(bytes)};
}

std::optional<HeldBytes> HeldBytes::at(const std::string& path, const Mark& mark) {
    FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file.isOpen() || fstat(file.number(), &status) != 0) return std::nullopt;
    if (FileStatus::errorUnlessRegular(status)) return std::nullopt;
    if (static_cast<std::size_t>(status.st_size) != mark.size) return std::nullopt;
    struct statfs system {};
    if (fstatfs(file.number(), &system) != 0 || FileStatus::movesOpenFilesAway(system))
        return std::nullopt;
    return HeldBytes(std::move(file), mark);
}

std::optional<HeldBytes::Bytes> HeldBytes::read(std::size_t growth) const {
    struct stat status {};
    if (fstat(file_.number(), &status) != 0) return std::nullopt;
    if (static_cast<std::size_t>(status.st_size) != mark_.size) return std::nullopt;
    Bytes bytes(mark_.size, growth);
    for (std::size_t position = 0; position < mark_.size;) {
        const ssize_t count = pread(file_.number(), bytes.room().data() + position,
                                    mark_.size - position, static_cast<off_t>(position));
        if (count == 0 || (count < 0 && errno != EINTR)) return std::nullopt;
        if (count > 0) position += static_cast<std::size_t>(count);
    }
    if (checksumOf(bytes.view()) != mark_.checksum) return std::nullopt;
    return bytes;
}

}  // namespace QRVPlatform

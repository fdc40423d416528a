// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Files/Files.h"

namespace QRVPlatform {

/// Memory of its own, parts of which can be given back to the system. The file is copied and not
/// mapped, because a program that truncates a mapped file would end this process.
class SeparateMemory {
  public:
    SeparateMemory() = default;
    /// There is none when the system has none.
    explicit SeparateMemory(std::size_t size) noexcept;
    SeparateMemory(SeparateMemory&& other) noexcept
        : start_(std::exchange(other.start_, nullptr)),
          size_(std::exchange(other.size_, 0)),
          givenBack_(std::exchange(other.givenBack_, 0)) {}
    SeparateMemory& operator=(SeparateMemory&& other) noexcept {
        std::swap(start_, other.start_);
        std::swap(size_, other.size_);
        std::swap(givenBack_, other.givenBack_);
        return *this;
    }
    ~SeparateMemory();

    [[nodiscard]] char* start() const noexcept { return start_; }
    /// Gives back all whole pages before `place`, which read as zeros from then on.
    void giveBackBefore(const char* place) noexcept;

  private:
    char* start_ = nullptr;
    std::size_t size_ = 0;
    std::size_t givenBack_ = 0;
};

/// The bytes of a regular file, to be read once from beginning to end. What has been read of a
/// large file can be given back, so that its text and its tree are never both in memory as a whole.
class TransientContents {
  public:
    /// In bytes. The memory of a smaller file is not worth a system call.
    static constexpr std::size_t smallestLarge = std::size_t{64} * 1024;

    /// As `contentsOfFile` reads it.
    static TransientContents ofFile(const std::string& path, std::size_t maximumSize);

    /// What `contentsOfFile` gives for the file, without its bytes.
    [[nodiscard]] const FileContents& file() const noexcept { return file_; }
    [[nodiscard]] std::string_view bytes() const noexcept {
        if (memory_.start() == nullptr) return file_.bytes;
        return {memory_.start(), size_};
    }
    /// The bytes before `place`, which is in `bytes()`, are not read again.
    void giveBackBefore(const char* place) noexcept {
        if (memory_.start() != nullptr) memory_.giveBackBefore(place);
    }

  private:
    FileContents file_;  // with the bytes of a small file
    SeparateMemory memory_;
    std::size_t size_ = 0;
};

}  // namespace QRVPlatform

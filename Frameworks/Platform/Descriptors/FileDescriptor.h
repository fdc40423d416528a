// SPDX-License-Identifier: MIT
#pragma once

#include <utility>

namespace QRVPlatform {

/// Owns one open file descriptor, or none (-1).
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) noexcept : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            close();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }
    ~FileDescriptor() { close(); }

    [[nodiscard]] bool isOpen() const noexcept { return number_ >= 0; }
    [[nodiscard]] int number() const noexcept { return number_; }
    /// Closes the file in any case. False with `errno` set when the system reports that something
    /// written before was lost.
    bool close() noexcept;

  private:
    int number_ = -1;
};

}  // namespace QRVPlatform

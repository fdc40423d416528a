// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Descriptors/FileDescriptor.h"

namespace QRVPlatform {

/// The bytes of a file, which stay on the disk and cost no memory. The file is kept open, so that
/// they are still there when another file has replaced it. Parent and child of a fork may both
/// read. Any thread may read while another one does.
class HeldBytes {
  public:
    /// A copy in memory, with room behind it.
    class Bytes {
      public:
        [[nodiscard]] std::string_view view() const { return {memory_.get(), size_}; }
        /// The bytes, and the free memory behind them, which is not cleared.
        [[nodiscard]] std::span<char> room() const { return {memory_.get(), roomSize_}; }
        /// At most the size of the room.
        void setSize(std::size_t size) { size_ = size; }

      private:
        friend class HeldBytes;
        Bytes(std::size_t size, std::size_t growth);

        std::unique_ptr<char[]> memory_;
        std::size_t roomSize_;
        std::size_t size_;
    };

    /// Identifies bytes, within this process.
    struct Mark {
        std::size_t size;
        std::uint64_t checksum;
    };
    static Mark markOf(std::string_view bytes);

    /// Of the file at `path`, which should hold the bytes of the mark. Empty when it cannot be
    /// opened, and on a file system that may not replace a file in one step while it is open.
    static std::optional<HeldBytes> at(const std::string& path, const Mark& mark);

    /// The bytes, with room for `growth` more; empty when the file does not hold them, or cannot be
    /// read. The file is not mapped, because a program that truncates it would end this process.
    [[nodiscard]] std::optional<Bytes> read(std::size_t growth = 0) const;

  private:
    HeldBytes(FileDescriptor file, const Mark& mark) : file_(std::move(file)), mark_(mark) {}

    FileDescriptor file_;
    Mark mark_;
};

}  // namespace QRVPlatform

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

/// The bytes of a file, which are left on the disk: they cost no memory. The file is kept open, so
/// that they are still there when another file has replaced it. A fork shares the open file, and
/// neither process notices the other's reading. Any thread may read while another one does.
class HeldBytes {
  public:
    /// In memory that was not cleared first.
    class Bytes {
      public:
        [[nodiscard]] std::string_view view() const { return {memory_.get(), size_}; }
        /// The bytes, and what is free behind them.
        [[nodiscard]] std::span<char> room() const { return {memory_.get(), roomSize_}; }
        /// At most that of the room.
        void setSize(std::size_t size) { size_ = size; }

      private:
        friend class HeldBytes;
        Bytes(std::size_t size, std::size_t growth);

        std::unique_ptr<char[]> memory_;
        std::size_t roomSize_;
        std::size_t size_;
    };

    /// Tells bytes from all others.
    struct Mark {
        std::size_t size;
        std::uint64_t checksum;
    };
    static Mark markOf(std::string_view bytes);

    /// The file that `path` names should hold the bytes of the mark. Empty when it cannot be
    /// opened, and on a file system that may not replace a file in one step while it is open.
    static std::optional<HeldBytes> at(const std::string& path, const Mark& mark);

    /// The bytes themselves; empty when the file does not hold them, or cannot be read. The file is
    /// not mapped, because whoever makes it shorter would end this process. There is room for
    /// `growth` more bytes behind them.
    [[nodiscard]] std::optional<Bytes> read(std::size_t growth = 0) const;

  private:
    HeldBytes(FileDescriptor file, const Mark& mark) : file_(std::move(file)), mark_(mark) {}

    FileDescriptor file_;
    Mark mark_;
};

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Descriptors/FileDescriptor.h"

namespace QRVPlatform {

/// The bytes of a file, which are left on the disk: they cost no memory. The file is kept open, so
/// that they are still there when another file has replaced it. A fork shares the open file, and
/// neither process notices the other's reading. Any thread may read while another one does.
class HeldBytes {
  public:
    /// Memory that is not cleared first.
    struct Bytes {
        std::unique_ptr<char[]> memory;
        std::size_t size = 0;

        [[nodiscard]] std::string_view view() const { return {memory.get(), size}; }
    };

    /// The file that `path` names should hold `bytes`. Empty when it cannot be opened.
    static std::optional<HeldBytes> at(const std::string& path, std::string_view bytes);

    /// The bytes themselves; empty when the file does not hold them, or cannot be read. The file is
    /// not mapped, because whoever makes it shorter would end this process.
    [[nodiscard]] std::optional<Bytes> read() const;

  private:
    HeldBytes(FileDescriptor file, std::string_view bytes);

    FileDescriptor file_;
    std::size_t size_;
    std::uint64_t checksum_;
};

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "Platform/Export.h"
#include "Platform/Values/ObjectReference.h"

/// Bytes; immutable and shared.
class QRV_EXPORT NSData {
  public:
    /// No bytes.
    NSData() = default;
    explicit NSData(std::span<const std::byte> bytes);
    explicit NSData(std::string_view bytes);
    /// The bytes; they live as long as this handle.
    [[nodiscard]] std::span<const std::byte> bytes() const& noexcept;
    std::span<const std::byte> bytes() && = delete;
    [[nodiscard]] std::string_view view() const& noexcept;
    std::string_view view() && = delete;
    [[nodiscard]] std::size_t size() const noexcept;
    QRV_EXPORT friend bool operator==(const NSData& left, const NSData& right) noexcept;

  private:
    friend struct QRVPlatform::ValueObjects::Access;
    explicit NSData(QRVPlatform::ValueObjects::ObjectReference object) noexcept
        : object_(std::move(object)) {}
    QRVPlatform::ValueObjects::ObjectReference object_;
};

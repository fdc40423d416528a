// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Export.h"

/// A key path as an argument: the keys of the successive levels of a tree, joined by ".", or null
/// (`nullptr`, `std::nullopt`), which is not the same as "" (one empty key).
///
/// A key path is split at every "."; empty keys are kept, nothing is escaped or trimmed, and case
/// matters. Keys are no indexes: an array is always a leaf. A QRVKeyPath refers to the text that it
/// was made from, and is valid as long as that text.
class QRVKeyPath {
  public:
    constexpr QRVKeyPath(std::nullptr_t) noexcept {}
    constexpr QRVKeyPath(std::nullopt_t) noexcept {}
    constexpr QRVKeyPath(const char* text)
        : text_(text == nullptr ? std::string_view() : std::string_view(text)) {}
    constexpr QRVKeyPath(std::string_view text) noexcept
        : text_(text.data() == nullptr ? std::string_view("") : text) {}
    QRVKeyPath(const std::string& text) noexcept : text_(text) {}
    QRVKeyPath(const std::optional<std::string>& text) noexcept
        : text_(text ? std::string_view(*text) : std::string_view()) {}

    [[nodiscard]] constexpr bool isNull() const noexcept { return text_.data() == nullptr; }
    /// "" when null.
    [[nodiscard]] constexpr std::string_view text() const noexcept { return text_; }

  private:
    std::string_view text_;  // of no characters at no address when null
};

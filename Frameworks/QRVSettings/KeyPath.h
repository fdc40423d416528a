// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// A key path as an argument: the keys of the successive levels of a tree, joined by ".", or null
/// (`nullptr`, `std::nullopt`), which is not the same as "" (one empty key).
///
/// It is split at every "."; empty keys are kept, nothing is escaped or trimmed, case matters, and
/// there is no index: an array is always a leaf. Refers to the text it was made from, and so lives
/// as long as that.
class KeyPath {
  public:
    constexpr KeyPath(std::nullptr_t) noexcept {}
    constexpr KeyPath(std::nullopt_t) noexcept {}
    constexpr KeyPath(const char* text) : KeyPath(text, text == nullptr) {}
    constexpr KeyPath(std::string_view text) noexcept : text_(text), isNull_(false) {}
    KeyPath(const std::string& text) noexcept : KeyPath(std::string_view(text)) {}
    KeyPath(const std::optional<std::string>& text) noexcept
        : text_(text ? std::string_view(*text) : std::string_view()), isNull_(!text) {}

    [[nodiscard]] constexpr bool isNull() const noexcept { return isNull_; }
    /// "" when null.
    [[nodiscard]] constexpr std::string_view text() const noexcept { return text_; }

  private:
    constexpr KeyPath(const char* text, bool isNull)
        : text_(isNull ? std::string_view() : std::string_view(text)), isNull_(isNull) {}

    std::string_view text_;
    bool isNull_ = true;
};

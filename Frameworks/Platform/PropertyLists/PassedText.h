// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace QRVPlatform::PropertyLists {

/// Lines and columns count from 1.
struct TextPlace {
    std::size_t offset = 0;
    std::size_t line = 1;
    std::size_t column = 1;  ///< in characters
};

/// A text that is read once from beginning to end, while the part that has been read is given back
/// to its owner. Errors still name the line and column in the whole text.
class PassedText {
  public:
    /// Called with the place before which nothing is read again.
    using GiveBack = std::function<void(const char*)>;

    /// In bytes: enough to be worth a system call.
    static constexpr std::size_t usualStep = std::size_t{32} * 1024;

    /// Gives back in steps of at least `step` bytes; nothing without a function.
    PassedText(std::string_view text, GiveBack giveBack, std::size_t step)
        : text_(text),
          giveBack_(std::move(giveBack)),
          step_(step),
          due_(giveBack_ ? step : text.size() + 1) {}

    /// Whether enough has been read since the last time to be given back.
    [[nodiscard]] bool isDue(std::size_t offset) const noexcept { return offset >= due_; }
    /// Gives everything before `offset` back. `open` are the only offsets before it that errors may
    /// name, in ascending order; those that have been given back before were open then.
    void pass(std::size_t offset, const std::vector<std::size_t>& open);
    /// Of an offset that errors may name.
    [[nodiscard]] TextPlace placeOf(std::size_t offset) const;

  private:
    std::string_view text_;
    GiveBack giveBack_;
    std::size_t step_;
    std::size_t due_;
    TextPlace passed_;
    std::vector<TextPlace> open_;
};

}  // namespace QRVPlatform::PropertyLists

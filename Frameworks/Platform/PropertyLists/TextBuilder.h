// SPDX-License-Identifier: MIT
#pragma once

// Inner header of this folder.

#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace PropertyLists {

/// A long text out of many short pieces. They are gathered first, because appending to a string
/// costs more than a short piece itself.
class TextBuilder {
  public:
    static constexpr std::size_t largestRoom = 1024;

    [[nodiscard]] std::size_t size() const noexcept { return text_.size() + gathered_; }

    void append(std::string_view piece) {
        if (piece.size() > pieces_.size() - gathered_) return appendToText(piece);
        std::memcpy(pieces_.data() + gathered_, piece.data(), piece.size());
        gathered_ += piece.size();
    }
    /// A place for at most `largestRoom` characters, of which `fill(place)` writes some and answers
    /// the end.
    template <typename Fill>
    void appendInPlace(Fill&& fill) {
        if (pieces_.size() - gathered_ < largestRoom) flush();
        gathered_ = static_cast<std::size_t>(fill(pieces_.data() + gathered_) - pieces_.data());
    }
    [[nodiscard]] std::string take() {
        flush();
        return std::move(text_);
    }

  private:
    void flush() {
        text_.append(pieces_.data(), gathered_);
        gathered_ = 0;
    }
    void appendToText(std::string_view piece) {
        flush();
        text_ += piece;
    }

    std::string text_;
    std::size_t gathered_ = 0;
    std::array<char, 4 * largestRoom> pieces_{};
};

}  // namespace PropertyLists

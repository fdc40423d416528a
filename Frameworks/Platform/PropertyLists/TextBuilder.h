// SPDX-License-Identifier: MIT
#pragma once

// Inner header of this folder.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace QRVPlatform::PropertyLists {

/// A long text out of many short pieces. They are gathered first, because appending to a string
/// costs more than a short piece itself.
class TextBuilder {
  public:
    static constexpr std::size_t largestRoom = 1024;

    [[nodiscard]] std::size_t size() const noexcept { return text_.size() + gathered_; }

    void append(std::string_view piece) {
        if (piece.size() > pieces_.size() - gathered_) return appendLong(piece);
        std::memcpy(pieces_.data() + gathered_, piece.data(), piece.size());
        gathered_ += piece.size();
    }
    /// The same, with a length that the compiler knows.
    template <std::size_t Size>
    void append(const char (&literal)[Size]) {
        if (pieces_.size() - gathered_ < Size) flush();
        std::memcpy(pieces_.data() + gathered_, literal, Size - 1);
        gathered_ += Size - 1;
    }
    void appendTabs(std::size_t count) {
        constexpr std::size_t fewTabs = sizeof tabs - 1;
        if (pieces_.size() - gathered_ < fewTabs) flush();
        // All of them are copied and some of them count, which is faster than copying some.
        std::memcpy(pieces_.data() + gathered_, tabs, fewTabs);
        gathered_ += std::min(count, fewTabs);
        if (count > fewTabs) appendTabs(count - fewTabs);
    }
    /// A place for at most `largestRoom` characters, of which `fill(place)` writes some and answers
    /// the end.
    template <typename Fill>
    void appendInPlace(Fill&& fill) {
        if (pieces_.size() - gathered_ < largestRoom) flush();
        gathered_ = static_cast<std::size_t>(fill(pieces_.data() + gathered_) - pieces_.data());
    }
    /// Appends what `characters` begin with, as far as `isWanted` and `largestRoom` go; answers how
    /// many they were.
    template <typename IsWanted>
    std::size_t appendWhile(std::string_view characters, const IsWanted& isWanted) {
        if (pieces_.size() - gathered_ < largestRoom) flush();
        const std::size_t most = std::min(characters.size(), largestRoom);
        char* const place = pieces_.data() + gathered_;
        std::size_t count = 0;
        for (; count < most && isWanted(characters[count]); ++count)
            place[count] = characters[count];
        gathered_ += count;
        return count;
    }
    [[nodiscard]] std::string take() {
        flush();
        return std::move(text_);
    }

  private:
    static constexpr char tabs[] = "\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t";

    void flush() { appendToText({pieces_.data(), std::exchange(gathered_, 0)}); }
    void appendLong(std::string_view piece) {
        flush();
        appendToText(piece);
    }
    // Large steps: room that is not used costs no memory, moving the text to more room does.
    void appendToText(std::string_view piece) {
        constexpr std::size_t step = 4;
        const std::size_t needed = text_.size() + piece.size();
        if (needed > text_.capacity()) text_.reserve(needed * step);
        text_ += piece;
    }

    std::string text_;
    std::size_t gathered_ = 0;
    std::array<char, 4 * largestRoom> pieces_{};
};

}  // namespace QRVPlatform::PropertyLists

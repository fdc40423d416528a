// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/PropertyLists/Limits.h"

namespace QRVPlatform::PropertyLists {

/// Builds a long text from many short pieces. They are buffered, because appending a short piece to
/// a string takes longer than copying it.
class TextBuilder {
  public:
    static constexpr std::size_t largestRoom = 1024;

    [[nodiscard]] std::size_t size() const noexcept { return text_.size() + buffered_; }

    void append(std::string_view piece) {
        if (piece.size() > buffer_.size() - buffered_) return appendLong(piece);
        std::memcpy(buffer_.data() + buffered_, piece.data(), piece.size());
        buffered_ += piece.size();
    }
    /// The same, with a length that the compiler knows.
    template <std::size_t Size>
    void append(const char (&literal)[Size]) {
        if (buffer_.size() - buffered_ < Size) flush();
        std::memcpy(buffer_.data() + buffered_, literal, Size - 1);
        buffered_ += Size - 1;
    }
    void appendTabs(std::size_t count) {
        constexpr std::size_t fewTabs = sizeof tabs - 1;
        if (buffer_.size() - buffered_ < fewTabs) flush();
        // Always copies all tabs and counts some of them: a copy of fixed length is faster.
        std::memcpy(buffer_.data() + buffered_, tabs, fewTabs);
        buffered_ += std::min(count, fewTabs);
        if (count > fewTabs) appendTabs(count - fewTabs);
    }
    /// Calls `fill(place)`, which may write up to `largestRoom` characters there and returns their
    /// end.
    template <typename Fill>
    void appendInPlace(Fill&& fill) {
        if (buffer_.size() - buffered_ < largestRoom) flush();
        buffered_ = static_cast<std::size_t>(fill(buffer_.data() + buffered_) - buffer_.data());
    }
    /// Appends the first characters for which `isWanted` holds, at most `largestRoom`; returns
    /// their number.
    template <typename IsWanted>
    std::size_t appendWhile(std::string_view characters, const IsWanted& isWanted) {
        if (buffer_.size() - buffered_ < largestRoom) flush();
        const std::size_t most = std::min(characters.size(), largestRoom);
        char* const place = buffer_.data() + buffered_;
        std::size_t count = 0;
        for (; count < most && isWanted(characters[count]); ++count)
            place[count] = characters[count];
        buffered_ += count;
        return count;
    }
    [[nodiscard]] std::string take() {
        flush();
        return std::move(text_);
    }

  private:
    static constexpr char tabs[] = "\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t\t";

    void flush() { appendToText({buffer_.data(), std::exchange(buffered_, 0)}); }
    void appendLong(std::string_view piece) {
        flush();
        appendToText(piece);
    }
    // Large steps: reserved room that is never touched costs no memory, moving the text does.
    void appendToText(std::string_view piece) {
        constexpr std::size_t step = 4;
        const std::size_t needed = text_.size() + piece.size();
        if (needed > text_.capacity())
            text_.reserve(std::max(needed, std::min(needed * step, maximumSize)));
        text_ += piece;
    }

    std::string text_;
    std::size_t buffered_ = 0;
    std::array<char, 4 * largestRoom> buffer_{};
};

}  // namespace QRVPlatform::PropertyLists

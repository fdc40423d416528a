// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/PropertyLists/Limits.h"
#include "Platform/PropertyLists/XMLWriter.h"

namespace QRVPlatform::PropertyLists {

/// The limits of values and of contents count a whole file. No text of this size exceeds them: a
/// value takes 8 bytes of it or more, and contents no fewer bytes than they have.
inline constexpr std::size_t sizeWithinLimits = maximumValues * 8;
static_assert(sizeWithinLimits <= maximumContents);

/// The lines of a text that `writeXML` has written. "<" begins nothing but a tag there, and a tag
/// that begins a line has as many tabs before it as there are containers around it.
class WrittenLines {
  public:
    struct Line {
        enum class Kind {
            Key,
            EndOfDictionary,
            Tag,    ///< another one
            Inside  ///< of a string, a key or data that began on an earlier line
        };
        std::size_t begin = 0;
        Kind kind = Kind::Inside;
        std::size_t tabs = 0;

        [[nodiscard]] bool isTag() const { return kind != Kind::Inside; }
        /// Between two entries, before the first or after the last.
        [[nodiscard]] bool isBoundary() const {
            return kind == Kind::Key || kind == Kind::EndOfDictionary;
        }
        /// Of a boundary: the number of containers around the entries.
        [[nodiscard]] std::size_t level() const { return tabs + (kind == Kind::Key ? 0 : 1); }
    };

    /// `text` must outlive this.
    explicit WrittenLines(std::string_view text) : text_(text) {}

    [[nodiscard]] std::string_view text() const { return text_; }

    /// The line that begins at `begin`.
    [[nodiscard]] Line at(std::size_t begin) const;
    /// The line with the byte at `position`.
    [[nodiscard]] Line around(std::size_t position) const;
    /// The first line that begins at `position` or later; empty at the end of the text.
    [[nodiscard]] std::optional<Line> from(std::size_t position) const;
    [[nodiscard]] std::optional<Line> next(const Line& line) const { return from(line.begin + 1); }
    [[nodiscard]] std::optional<Line> previous(const Line& line) const;
    [[nodiscard]] bool isStartOfDictionary(const Line& line) const;

    /// The key of a line of the kind `Key`.
    [[nodiscard]] std::string keyOf(const Line& line) const;

  private:
    std::string_view text_;
};

}  // namespace QRVPlatform::PropertyLists

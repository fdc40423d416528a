// SPDX-License-Identifier: MIT
// Writing a file by what differs from a known text (`reviseText`).
//
// Both trees are walked side by side, and what is the same object in both is skipped. The keys that
// differ are taken in the order of the file, so that each level is searched once from its beginning
// to its end. In the text of a dictionary no other line is like that of its key, tabs included.
// Where both values are dictionaries that are not empty, the walk goes on inside. Else the lines of
// the entry are left out, and those of the new one are written in their place.

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/TextBuilder.h"
#include "Platform/PropertyLists/WrittenLines.h"
#include "Platform/PropertyLists/XMLRevision.h"
#include "Platform/PropertyLists/XMLText.h"
#include "Platform/PropertyLists/XMLWriter.h"
#include "Platform/Values/DictionaryPairs.h"

namespace QRVPlatform::PropertyLists {
namespace {

/// A part of the known text, and what is written in its place.
struct Edit {
    std::size_t begin;
    std::size_t end;
    std::string text;
};

struct Difference {
    std::string_view key;
    const PropertyListValue* before;  ///< null when there is no such entry
    const PropertyListValue* after;   ///< likewise
};

/// Thrown when the whole is to be written.
struct TooDifferent {};

class Edits {
  public:
    explicit Edits(std::string_view known) : text_(known) {}

    std::vector<Edit> between(const NSDictionary& tree, const NSDictionary& revised) {
        position_ = text_.find("\n<dict>\n") + 1;
        compare(tree, revised, 1);
        return std::move(edits_);
    }

  private:
    static constexpr std::size_t mostEdits = 64;

    static bool haveEntries(const PropertyListValue& value) {
        return value.isDictionary() && value.dictionary().count() != 0;
    }

    // `position_` is in the dictionary or before it, and the text of no later one is like it.
    void compare(const PropertyListValue& before, const PropertyListValue& after,
                 std::size_t level) {
        DictionaryPairs pairs(before, after);
        std::vector<Difference> differences;
        while (pairs.next()) {
            const Difference difference{pairs.key(), pairs.valueBefore(), pairs.valueAfter()};
            if (difference.before != nullptr && difference.after != nullptr &&
                difference.before->isIdenticalTo(*difference.after))
                continue;
            differences.push_back(difference);
            if (differences.size() > mostEdits) throw TooDifferent();
        }
        std::ranges::sort(differences, {}, &Difference::key);
        for (const Difference& difference : differences) {
            if (difference.before == nullptr)
                insert(difference, before.dictionary(), level);
            else
                change(difference, level);
        }
    }

    void insert(const Difference& difference, const NSDictionary& before, std::size_t level) {
        const std::optional<std::string_view> next = keyAfter(difference.key, before);
        position_ = next ? lineOf(*next, level) : find(level - 1, "</dict>\n");
        edit(difference, level);
    }

    void change(const Difference& difference, std::size_t level) {
        position_ = lineOf(difference.key, level);
        if (difference.after != nullptr && haveEntries(*difference.before) &&
            haveEntries(*difference.after) && level + 1 < deepestIndentation) {
            compare(*difference.before, *difference.after, level + 1);
        } else {
            edit(difference, level);
        }
    }

    // At `position_`.
    void edit(const Difference& difference, std::size_t level) {
        if (edits_.size() == mostEdits) throw TooDifferent();
        const std::string old = entry(difference.key, difference.before, level);
        if (!text_.substr(position_).starts_with(old)) throw TooDifferent();
        const std::size_t begin = std::exchange(position_, position_ + old.size());
        edits_.push_back({begin, position_, entry(difference.key, difference.after, level)});
    }

    static std::string entry(std::string_view key, const PropertyListValue* value,
                             std::size_t level) {
        return value == nullptr ? std::string() : writeXMLEntries({{key, *value}}, level);
    }

    static std::optional<std::string_view> keyAfter(std::string_view key,
                                                    const NSDictionary& dictionary) {
        std::optional<std::string_view> next;
        for (const auto& [other, value] : dictionary)
            if (other > key && (!next || other < *next)) next = other;
        return next;
    }

    /// The first line at `position_` or later that begins like this.
    [[nodiscard]] std::size_t find(std::size_t tabs, std::string_view beginning) const {
        if (position_ == 0) throw TooDifferent();
        std::string line = "\n" + std::string(tabs, '\t');
        line += beginning;
        // Each line has one before it, because the text begins with a header.
        const std::string_view rest = text_.substr(position_ - 1);
        const void* const found = memmem(rest.data(), rest.size(), line.data(), line.size());
        if (found == nullptr) throw TooDifferent();
        return position_ + static_cast<std::size_t>(static_cast<const char*>(found) - rest.data());
    }

    [[nodiscard]] std::size_t lineOf(std::string_view key, std::size_t level) const {
        TextBuilder line;
        line.append("<key>");
        if (!appendXMLText(line, key)) throw TooDifferent();
        line.append("</key>\n");
        return find(level, line.take());
    }

    std::string_view text_;
    std::size_t position_ = 0;  // of a line
    std::vector<Edit> edits_;
};

/// The text between two edits.
struct Kept {
    std::size_t from;
    std::size_t to;
    std::size_t size;
};

/// What is kept moves first, and each part only to where no other part that is still to move lies:
/// those that move to the left from left to right, the others from right to left.
void apply(const std::vector<Edit>& edits, std::span<char> room, std::size_t size) {
    std::vector<Kept> parts{{0, 0, 0}};
    for (const Edit& edit : edits) {
        Kept& before = parts.back();
        before.size = edit.begin - before.from;
        parts.push_back({edit.end, before.to + before.size + edit.text.size(), 0});
    }
    parts.back().size = size - parts.back().from;
    const auto move = [room](const Kept& part) {
        std::memmove(&room[part.to], &room[part.from], part.size);
    };
    for (const Kept& part : parts)
        if (part.to < part.from && part.size != 0) move(part);
    for (auto part = parts.rbegin(); part != parts.rend(); ++part)
        if (part->to > part->from && part->size != 0) move(*part);
    for (std::size_t index = 0; index < edits.size(); ++index)
        std::ranges::copy(
            edits[index].text,
            room.begin() + static_cast<std::ptrdiff_t>(parts[index].to + parts[index].size));
}

std::size_t sizeAfter(const std::vector<Edit>& edits, std::size_t size) {
    for (const Edit& edit : edits) size += edit.text.size() - (edit.end - edit.begin);
    return size;
}

}  // namespace

std::optional<std::size_t> reviseText(std::span<char> room, std::size_t size,
                                      const NSDictionary& tree, const NSDictionary& revised) {
    if (tree.count() == 0 || revised.count() == 0) return std::nullopt;
    try {
        const std::vector<Edit> edits = Edits({room.data(), size}).between(tree, revised);
        const std::size_t newSize = sizeAfter(edits, size);
        if (newSize > std::min(room.size(), sizeWithinLimits)) return std::nullopt;
        apply(edits, room, size);
        return newSize;
    } catch (const TooDifferent&) {
        return std::nullopt;
    } catch (const WriteFailure&) {
        return std::nullopt;
    }
}

}  // namespace QRVPlatform::PropertyLists

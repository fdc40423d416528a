// SPDX-License-Identifier: MIT
// Writing a file by what differs from a known text (`textOfRevision`).
//
// Both trees are walked side by side, and what is the same object in both is skipped. For each key
// that differs, the place of its entry is found in the known text: the keys of a dictionary are
// sorted and are the only ones with their number of tabs, so that a binary search finds a key, or
// where it belongs. Where both values are dictionaries that are not empty, the walk goes on inside.
// Else the lines of the entry are left out, and those of the new one are written in their place.

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/WrittenLines.h"
#include "Platform/PropertyLists/XMLRevision.h"
#include "Platform/Values/DictionaryPairs.h"

namespace QRVPlatform::PropertyLists {
namespace {

using Line = WrittenLines::Line;

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

/// Where the entries of a dictionary stand.
struct Range {
    std::size_t begin;
    std::size_t end;
    std::size_t level;
};

/// Thrown when the whole is to be written.
struct TooDifferent {};

class Edits {
  public:
    explicit Edits(std::string_view known) : lines_(known) {}

    std::vector<Edit> between(const NSDictionary& tree, const NSDictionary& revised) {
        constexpr std::string_view end = "</dict>\n</plist>\n";
        constexpr std::string_view start = "\n<dict>\n";
        const std::size_t found = lines_.text().find(start);
        if (found == std::string_view::npos || !lines_.text().ends_with(end)) throw TooDifferent();
        compare(tree, revised, {found + start.size(), lines_.text().size() - end.size(), 1});
        std::ranges::stable_sort(edits_, {}, &Edit::begin);
        return std::move(edits_);
    }

  private:
    static constexpr std::size_t mostEdits = 64;

    static bool haveEntries(const PropertyListValue& value) {
        return value.isDictionary() && value.dictionary().count() != 0;
    }

    void compare(const PropertyListValue& before, const PropertyListValue& after,
                 const Range& range) {
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
        for (const Difference& difference : differences) apply(difference, range);
    }

    void apply(const Difference& difference, const Range& range) {
        const std::size_t begin = lowerBound(difference.key, range);
        std::size_t end = begin;
        if (difference.before != nullptr) {
            const Line line = lines_.at(begin);
            if (begin == range.end || lines_.keyOf(line) != difference.key) throw TooDifferent();
            end = nextKey(begin + 1, range.end, range.level);
            if (difference.after != nullptr && haveEntries(*difference.before) &&
                haveEntries(*difference.after) && range.level + 1 < deepestIndentation) {
                compare(*difference.before, *difference.after, contentsOf(line, end));
                return;
            }
        }
        Edit edit{begin, end, {}};
        if (difference.after != nullptr) {
            edit.text =
                writeXMLEntries(NSDictionary{{difference.key, *difference.after}}, range.level);
        }
        edits_.push_back(std::move(edit));
        if (edits_.size() > mostEdits) throw TooDifferent();
    }

    /// The line of the first key at `position` or later; `end` when there is none before it.
    [[nodiscard]] std::size_t nextKey(std::size_t position, std::size_t end,
                                      std::size_t level) const {
        // Each line has one before it, because the text begins with a header.
        const std::string beginning = "\n" + std::string(level, '\t') + "<key>";
        if (position >= end) return end;
        const std::string_view searched =
            lines_.text().substr(position - 1, end - position + beginning.size() - 1);
        const void* const found =
            memmem(searched.data(), searched.size(), beginning.data(), beginning.size());
        if (found == nullptr) return end;
        return position +
               static_cast<std::size_t>(static_cast<const char*>(found) - searched.data());
    }

    /// The line of the first key that is not less; the end of the range when there is none.
    [[nodiscard]] std::size_t lowerBound(std::string_view key, const Range& range) const {
        std::size_t least = range.begin;  // The keys before this are less.
        std::size_t most = range.end;     // Those from here on are not.
        while (least < most) {
            const std::size_t middle = least + (most - least) / 2;
            const std::size_t found = nextKey(middle, most, range.level);
            if (found < most && lines_.keyOf(lines_.at(found)) < key)
                least = found + 1;
            else
                most = middle;
        }
        return nextKey(least, range.end, range.level);
    }

    /// Of the dictionary that is the value of an entry.
    [[nodiscard]] Range contentsOf(const Line& key, std::size_t end) const {
        std::optional<Line> start = lines_.next(key);
        while (start && !start->isTag()) start = lines_.next(*start);
        if (!start || !lines_.isStartOfDictionary(*start)) throw TooDifferent();
        const Line last = *lines_.previous(lines_.at(end));
        if (last.kind != Line::Kind::EndOfDictionary || last.tabs != key.tabs) throw TooDifferent();
        return {lines_.next(*start)->begin, last.begin, key.tabs + 1};
    }

    WrittenLines lines_;
    std::vector<Edit> edits_;
};

std::string edited(std::string_view text, const std::vector<Edit>& edits) {
    std::string result;
    std::size_t size = text.size();
    for (const Edit& edit : edits) size += edit.text.size();
    result.reserve(size);
    std::size_t position = 0;
    for (const Edit& edit : edits) {
        result += text.substr(position, edit.begin - position);
        result += edit.text;
        position = edit.end;
    }
    result += text.substr(position);
    return result;
}

}  // namespace

std::optional<std::string> textOfRevision(std::string_view known, const NSDictionary& tree,
                                          const NSDictionary& revised) {
    if (tree.count() == 0 || revised.count() == 0) return std::nullopt;
    try {
        std::string text = edited(known, Edits(known).between(tree, revised));
        if (text.size() > sizeWithinLimits) return std::nullopt;
        return text;
    } catch (const TooDifferent&) {
        return std::nullopt;
    } catch (const WriteFailure&) {
        return std::nullopt;
    }
}

}  // namespace QRVPlatform::PropertyLists

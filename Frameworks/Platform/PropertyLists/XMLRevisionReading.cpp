// SPDX-License-Identifier: MIT
// Reading a file by what differs from a known text (`treeOfRevision`).
//
// What both texts begin and end with is skipped. In the known text, the difference is widened to
// whole entries of the innermost dictionary that holds all of it and can be reached by keys alone.
// No line between the two boundaries has fewer tabs than those entries, so both boundaries belong
// to this one dictionary. The keys that lead to it stand on the nearest lines above with fewer
// tabs.
//
// Then only the new lines between the boundaries are read, as entries. They must be what the writer
// writes for these entries, with keys between those of the entries before and after them. So the
// whole text is what the writer writes for the tree that has the new entries in place of the old
// ones; and what the writer writes for a tree is read as that tree.

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/PropertyLists/Readers.h"
#include "Platform/PropertyLists/WrittenLines.h"
#include "Platform/PropertyLists/XMLRevision.h"
#include "Platform/Values/ImmutableContainers.h"

namespace QRVPlatform::PropertyLists {
namespace {

using Line = WrittenLines::Line;

constexpr std::size_t block = 256;

std::size_t commonBeginning(std::string_view one, std::string_view other) {
    const std::size_t most = std::min(one.size(), other.size());
    std::size_t count = 0;
    while (most - count >= block && std::memcmp(&one[count], &other[count], block) == 0)
        count += block;
    while (count < most && one[count] == other[count]) ++count;
    return count;
}

std::size_t commonEnd(std::string_view one, std::string_view other) {
    const std::size_t most = std::min(one.size(), other.size());
    const char* const oneEnd = one.data() + one.size();
    const char* const otherEnd = other.data() + other.size();
    std::size_t count = 0;
    while (most - count >= block &&
           std::memcmp(oneEnd - count - block, otherEnd - count - block, block) == 0)
        count += block;
    while (count < most && oneEnd[-1 - static_cast<std::ptrdiff_t>(count)] ==
                               otherEnd[-1 - static_cast<std::ptrdiff_t>(count)])
        ++count;
    return count;
}

/// A part of a known text: whole entries of one dictionary, perhaps none.
struct Entries {
    std::vector<std::string> keys;  ///< that lead to the dictionary from the root
    std::size_t level = 0;
    Line begin;
    Line end;  ///< that of the next entry, or the end of the dictionary
};

/// Finds the innermost entries that hold a part of a known text.
class EntriesAround {
  public:
    EntriesAround(std::string_view text, std::size_t begin, std::size_t end)
        : lines_(text), begin_(begin), end_(end) {}

    std::optional<Entries> find() {
        if (!findNearestBoundaries()) return std::nullopt;
        while (level_ != 0)
            if (findBeginning() && findEnd() && findKeys()) return std::move(entries_);
        return std::nullopt;
    }

  private:
    bool findNearestBoundaries() {
        std::optional<Line> first = lines_.around(begin_);
        while (first && !first->isBoundary()) first = lines_.previous(*first);
        std::optional<Line> last = lines_.from(end_);
        while (last && !last->isBoundary()) last = lines_.next(*last);
        if (!first || !last) return false;
        first_ = *first;
        last_ = *last;
        level_ = std::min({first_.level(), last_.level(), deepestIndentation - 1});
        for (Line line = first_; line.begin < last_.begin; line = *lines_.next(line))
            if (line.isTag()) level_ = std::min(level_, line.tabs);
        return true;
    }

    /// The container around `line` is no dictionary, or none that keys lead to.
    bool widenBeyond(const std::optional<Line>& line) {
        level_ = line ? std::min(level_ - 1, line->tabs) : 0;
        return false;
    }

    bool findBeginning() {
        std::optional<Line> line = first_;
        while (line && !(line->isBoundary() && line->level() == level_)) {
            if (line->isTag() && line->tabs < level_) return widenBeyond(line);
            line = lines_.previous(*line);
        }
        if (!line) return widenBeyond(line);
        entries_.begin = *line;
        return true;
    }

    bool findEnd() {
        std::optional<Line> line = last_;
        while (line && !(line->isBoundary() && line->level() == level_)) {
            if (line->isTag() && line->tabs < level_) return widenBeyond(line);
            line = lines_.next(*line);
        }
        if (!line) return widenBeyond(line);
        entries_.end = *line;
        return true;
    }

    [[nodiscard]] std::optional<Line> tagAbove(Line line, std::size_t mostTabs) const {
        std::optional<Line> above = lines_.previous(line);
        while (above && !(above->isTag() && above->tabs <= mostTabs))
            above = lines_.previous(*above);
        return above;
    }

    bool findKeys() {
        entries_.level = level_;
        entries_.keys.clear();
        Line line = entries_.begin;
        for (std::size_t tabs = level_ - 1; tabs != 0; --tabs) {
            const std::optional<Line> start = tagAbove(line, tabs);
            if (!start || start->tabs != tabs || !lines_.isStartOfDictionary(*start)) {
                level_ = tabs;
                return false;
            }
            const std::optional<Line> key = tagAbove(*start, deepestIndentation);
            if (!key || key->kind != Line::Kind::Key || key->tabs != tabs) {
                level_ = tabs;
                return false;
            }
            entries_.keys.push_back(lines_.keyOf(*key));
            line = *key;
        }
        std::reverse(entries_.keys.begin(), entries_.keys.end());
        return true;
    }

    WrittenLines lines_;
    std::size_t begin_;
    std::size_t end_;
    Line first_;
    Line last_;
    std::size_t level_ = 0;
    Entries entries_;
};

/// The entries of a dictionary at `level`; empty when they are not written like this.
std::optional<NSDictionary> entriesOf(std::string_view text, std::size_t level) {
    const auto read = NSPropertyListSerialization::propertyListWithData(
        "<plist><dict>" + std::string(text) + "</dict></plist>");
    const NSDictionary entries = read.value.dictionary();
    if (entries.isNull()) return std::nullopt;
    try {
        if (writeXMLEntries(entries, level) != text) return std::nullopt;
    } catch (const WriteFailure&) {
        return std::nullopt;
    }
    return entries;
}

class Revision {
  public:
    Revision(std::string_view known, Entries old, const NSDictionary& fresh)
        : lines_(known), old_(std::move(old)) {
        for (const auto& [key, value] : fresh) fresh_.push_back({key, value});
    }

    std::optional<NSDictionary> appliedTo(const NSDictionary& tree) {
        std::vector<NSDictionary> way{tree};
        for (const std::string& key : old_.keys) {
            way.push_back(way.back().objectForKey(key).dictionary());
            if (way.back().isNull()) return std::nullopt;
        }
        if (!findPlaces(way.back())) return std::nullopt;
        NSDictionary result = immutableDictionary(way.back(), places_, fresh_);
        if (result.count() == 0) return std::nullopt;  // It is written in another form.
        for (std::size_t level = old_.keys.size(); level != 0; --level) {
            const NSMutableDictionary outer = way[level - 1].mutableCopy();
            outer.setObjectForKey(result, old_.keys[level - 1]);
            result = outer.copy();
        }
        return result;
    }

  private:
    [[nodiscard]] std::optional<std::string> keyAt(const Line& line) const {
        if (line.kind != Line::Kind::Key) return std::nullopt;
        return lines_.keyOf(line);
    }

    /// False when the new keys do not lie between the others.
    bool findPlaces(const NSDictionary& dictionary) {
        first_ = keyAt(old_.begin);
        end_ = keyAt(old_.end);
        if (first_ && dictionary.objectForKey(*first_).isNull()) return false;
        if (end_ && dictionary.objectForKey(*end_).isNull()) return false;
        places_.reserve(dictionary.count());
        for (const auto& [key, value] : dictionary) {
            places_.push_back(placeOf(key));
            if (places_.back() == EntryPlace::Before && !isBeforeFresh(key)) return false;
            if (places_.back() == EntryPlace::After && !isAfterFresh(key)) return false;
        }
        return true;
    }

    [[nodiscard]] EntryPlace placeOf(std::string_view key) const {
        if (!first_ || key < *first_) return EntryPlace::Before;
        return !end_ || key < *end_ ? EntryPlace::Dropped : EntryPlace::After;
    }
    [[nodiscard]] bool isBeforeFresh(std::string_view key) const {
        return fresh_.empty() || key < fresh_.front().key.stringView();
    }
    [[nodiscard]] bool isAfterFresh(std::string_view key) const {
        return fresh_.empty() || key > fresh_.back().key.stringView();
    }

    WrittenLines lines_;
    Entries old_;
    std::vector<KeyedValue> fresh_;
    std::optional<std::string> first_;  // the first key that goes; none at the end
    std::optional<std::string> end_;    // the next key that stays; none at the end
    std::vector<EntryPlace> places_;
};

}  // namespace

std::optional<NSDictionary> treeOfRevision(std::string_view known, const NSDictionary& tree,
                                           std::string_view text) {
    if (text.size() > sizeWithinLimits) return std::nullopt;
    const std::size_t beginning = commonBeginning(known, text);
    if (beginning == known.size() && beginning == text.size()) return tree;
    const std::size_t end = commonEnd(known.substr(beginning), text.substr(beginning));
    std::optional<Entries> old = EntriesAround(known, beginning, known.size() - end).find();
    if (!old) return std::nullopt;
    const std::size_t endOfText = text.size() - (known.size() - old->end.begin);
    const std::string_view fresh = text.substr(old->begin.begin, endOfText - old->begin.begin);
    if (fresh.size() > text.size() / 2) return std::nullopt;  // The whole is read about as fast.
    const std::optional<NSDictionary> entries = entriesOf(fresh, old->level);
    if (!entries) return std::nullopt;
    return Revision(known, std::move(*old), *entries).appliedTo(tree);
}

}  // namespace QRVPlatform::PropertyLists

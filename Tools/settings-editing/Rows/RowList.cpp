// SPDX-License-Identifier: MIT
#include "Rows/RowList.h"

#include <algorithm>
#include <span>
#include <utility>

namespace Tool {
namespace {

bool isSettingOfPerson(const SettingRow& row) {
    return row.known != nullptr && row.known->keyPath == row.keyPath &&
           row.known->scope != QRVSettingScope::Record;
}

/// The levels above a key path, the topmost first.
std::vector<std::string> levelsAbove(std::string_view keyPath) {
    std::vector<std::string> levels;
    for (std::size_t end = keyPath.find('.'); end != keyPath.npos; end = keyPath.find('.', end + 1))
        levels.emplace_back(keyPath.substr(0, end));
    return levels;
}

bool isSameLine(const RowLine& line, const RowLine& other) {
    return line.isLevel() == other.isLevel() && line.keyPath == other.keyPath;
}

}  // namespace

void RowList::Expansion::set(const std::string& level, bool isExpanded) {
    if (isExpanded == isUsual)
        others.erase(level);
    else
        others.insert(level);
}

RowList::RowList(const SettingsTable& table) : table_(table) {}

void RowList::setMarks(Marks marks) {
    marks_ = std::move(marks);
}

void RowList::setForm(Form form) {
    form_ = form;
}

void RowList::setShowsRecords(bool showsRecords) {
    if (showsRecords != showsRecords_) forgetWhatStays();
    showsRecords_ = showsRecords;
}

void RowList::setFilter(const RowFilter& filter) {
    filter_ = filter;
    if (filter.isEmpty()) filtered_ = {.isUsual = true};
    forgetWhatStays();
}

// The levels above an open one are open as well, or one line with it.
void RowList::setExpanded(const std::string& level, bool isExpanded) {
    expansion().set(level, isExpanded);
    if (isExpanded) reveal(level);
}

void RowList::setAllExpanded(bool areExpanded) {
    expansion() = {.isUsual = areExpanded};
}

void RowList::reveal(std::string_view keyPath) {
    for (const std::string& level : levelsAbove(keyPath)) expansion().set(level, true);
}

void RowList::forgetWhatStays() {
    stayingRows_.clear();
    stayingLevels_.clear();
}

bool RowList::mayBeListed(const SettingRow& row) const {
    return !row.isRecord || showsRecords_ || filter_.asksForRecords() || isSettingOfPerson(row);
}

std::size_t RowList::countOfAll() const {
    return static_cast<std::size_t>(std::ranges::count_if(
        table_.rows(), [this](const SettingRow& row) { return mayBeListed(row); }));
}

bool RowList::letsThrough(std::size_t row) const {
    const SettingRow& setting = table_.rows()[row];
    const bool isHidden =
        !mayBeListed(setting) || (setting.isRecord && !showsRecords_ && !filter_.asksForRecords() &&
                                  filter_.asksForModified());
    if (isHidden) return false;
    const bool needsMarks = marks_ && filter_.looksAtMarks();
    return filter_.matches(setting, filter_.looksAtText() ? table_.searchableTextOf(row) : "",
                           needsMarks ? marks_(setting.keyPath) : RowMarks{});
}

/// Makes the lines of a tree from rows, which are sorted.
class RowList::Arrangement {
  public:
    Arrangement(const RowList& list, std::vector<RowLine>& lines)
        : rows_(list.table_.rows()),
          expansion_(list.filter_.isEmpty() ? list.unfiltered_ : list.filtered_),
          stayingLevels_(list.stayingLevels_),
          lines_(lines) {}

    /// Of rows whose key paths are the same up to `start`.
    void add(std::span<const std::size_t> listed, std::size_t start, std::size_t depth) {
        while (!listed.empty()) {
            const std::string& keyPath = rows_[listed.front()].keyPath;
            const std::size_t end = keyPath.find('.', start);
            std::size_t count = 1;
            if (end == keyPath.npos) {
                lines_.push_back({.row = listed.front(),
                                  .keyPath = keyPath,
                                  .name = keyPath.substr(start),
                                  .depth = depth});
            } else {
                count = countBelow(listed, std::string_view(keyPath).substr(0, end + 1));
                addLevel(listed.first(count), start, end, depth);
            }
            listed = listed.subspan(count);
        }
    }

  private:
    [[nodiscard]] std::size_t countBelow(std::span<const std::size_t> listed,
                                         std::string_view prefix) const {
        const auto end = std::ranges::find_if_not(
            listed, [&](std::size_t row) { return rows_[row].keyPath.starts_with(prefix); });
        return static_cast<std::size_t>(end - listed.begin());
    }

    /// The level's key path ends at `end`.
    void addLevel(std::span<const std::size_t> listed, std::size_t start, std::size_t end,
                  std::size_t depth) {
        const std::string& first = rows_[listed.front()].keyPath;
        const std::string& last = rows_[listed.back()].keyPath;
        while (!stayingLevels_.contains(std::string_view(first).substr(0, end))) {
            const std::size_t next = first.find('.', end + 1);
            if (next == first.npos ||
                !last.starts_with(std::string_view(first).substr(0, next + 1)))
                break;
            end = next;
        }
        RowLine line{.keyPath = first.substr(0, end),
                     .name = first.substr(start, end - start),
                     .depth = depth,
                     .count = listed.size()};
        line.isExpanded = expansion_.at(line.keyPath);
        lines_.push_back(line);
        if (line.isExpanded) add(listed, end + 1, depth + 1);
    }

    const std::vector<SettingRow>& rows_;
    const Expansion& expansion_;
    const std::set<std::string, std::less<>>& stayingLevels_;
    std::vector<RowLine>& lines_;
};

void RowList::makeLines() {
    lines_.clear();
    if (form_ == Form::Tree) {
        Arrangement(*this, lines_).add(listed_, 0, 0);
        return;
    }
    for (const std::size_t row : listed_) {
        const std::string& keyPath = table_.rows()[row].keyPath;
        lines_.push_back({.row = row, .keyPath = keyPath, .name = keyPath});
    }
}

void RowList::listRows() {
    const std::vector<SettingRow>& rows = table_.rows();
    generation_ = table_.generation();
    matchCount_ = 0;
    listed_.clear();
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const bool isMatch = letsThrough(row);
        if (isMatch) ++matchCount_;
        if (isMatch || stayingRows_.contains(rows[row].keyPath)) listed_.push_back(row);
    }
    listedKeyPaths_.resize(listed_.size());
    for (std::size_t index = 0; index < listed_.size(); ++index)
        listedKeyPaths_[index] = rows[listed_[index]].keyPath;
}

void RowList::arrange() {
    if (profile_ != table_.profile()) forgetWhatStays();
    profile_ = table_.profile();
    listRows();
    makeLines();
}

// A level that is one line with those above it can become a line below them.
void RowList::letLinesStay() {
    for (const RowLine& line : lines_) {
        if (!line.isLevel()) continue;
        stayingLevels_.insert(line.keyPath);
        if (line.name.find('.') != line.name.npos) reveal(line.keyPath);
    }
    for (const std::string& keyPath : listedKeyPaths_) {
        const auto row = table_.indexOf(keyPath);
        if (row && !letsThrough(*row)) stayingRows_.insert(keyPath);
    }
}

bool RowList::keepsLines(const SettingsTable::Change& change) const {
    if (!filter_.isEmpty() || generation_ != table_.generation()) return false;
    return std::ranges::all_of(change.changed, [this](const std::string& keyPath) {
        const auto row = table_.indexOf(keyPath);
        return !row || letsThrough(*row) == std::ranges::binary_search(listed_, *row);
    });
}

bool RowList::follow(const SettingsTable::Change& change) {
    if (keepsLines(change)) return false;
    if (profile_ != table_.profile()) {
        arrange();
        return true;
    }
    letLinesStay();
    const std::vector<RowLine> before = std::move(lines_);
    listRows();
    makeLines();
    return !std::ranges::equal(before, lines_, isSameLine);
}

std::optional<std::size_t> RowList::lineOf(std::string_view keyPath) const {
    const auto line = std::ranges::lower_bound(lines_, keyPath, standsBefore, &RowLine::keyPath);
    if (line == lines_.end() || line->keyPath != keyPath) return std::nullopt;
    return static_cast<std::size_t>(line - lines_.begin());
}

std::vector<std::string> RowList::keyPathsBelow(std::size_t line) const {
    const std::string& keyPath = lines_[line].keyPath;
    if (!lines_[line].isLevel()) return {keyPath};
    const std::string prefix = keyPath + ".";
    const auto first = std::ranges::lower_bound(listedKeyPaths_, prefix, standsBefore);
    const auto end = std::find_if_not(first, listedKeyPaths_.end(),
                                      [&](const auto& below) { return below.starts_with(prefix); });
    return {first, end};
}

}  // namespace Tool

// SPDX-License-Identifier: MIT
#pragma once

// The lines that a list of settings shows: rows that a filter lets through, and in a tree the
// levels above them.

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Rows/RowFilter.h"
#include "Rows/SettingsTable.h"

namespace Tool {

struct RowLine {
    static constexpr std::size_t none = static_cast<std::size_t>(-1);
    std::size_t row = none;   ///< in `SettingsTable::rows`; none for a level
    std::string keyPath;      ///< of the row, or of the level
    std::string name;         ///< what the line shows: in a tree without the levels above it
    std::size_t depth = 0;    ///< in a tree: how many lines of levels are above it
    bool isExpanded = false;  ///< of a level
    /// Of a level: how many of the listed rows are below it, also while it is closed.
    std::size_t count = 0;
    [[nodiscard]] bool isLevel() const { return row == none; }
};

/// A tree whose levels open and close, or a flat list. A level that has a single level below it,
/// and nothing else, is one line with it ("Menubar.Mode"). Lines are sorted as the rows are; a row
/// stands before the level of the same key path.
///
/// A list has the rows that the filter lets through. Records are hidden unless `setShowsRecords` or
/// the filter asks for them. A known setting in which the store has left something of its own is
/// hidden only where the filter asks for what is modified.
class RowList {
  public:
    enum class Form { Tree, Flat };
    using Marks = std::function<RowMarks(const std::string& keyPath)>;

    /// `table` must outlive the list.
    explicit RowList(const SettingsTable& table);

    /// Of a row; none at the start.
    void setMarks(Marks marks);
    void setForm(Form form);
    [[nodiscard]] Form form() const { return form_; }
    void setShowsRecords(bool showsRecords);
    /// While a filter is set, all levels are open unless they are closed by hand. Without one, they
    /// are as they were before, at first closed.
    void setFilter(const RowFilter& filter);
    [[nodiscard]] const RowFilter& filter() const { return filter_; }
    /// A level stays open or closed while it is not listed.
    void setExpanded(const std::string& level, bool isExpanded);
    void setAllExpanded(bool areExpanded);
    /// Opens the levels above a key path.
    void reveal(std::string_view keyPath);

    /// Makes the lines. To be called after any of the functions above, or when the table has
    /// another profile.
    void arrange();
    /// After a change of the table or the marks. Lines stay that were there before, also those of
    /// rows that the filter does not let through any more; rows that it lets through now are added.
    /// So no line jumps or disappears under somebody's hand, until the filter, the records that are
    /// shown, or the profile changes. Only what the table has lost is removed. Returns whether
    /// lines were added or removed.
    bool follow(const SettingsTable::Change& change);
    /// Whether `follow` will certainly neither add nor remove lines; it costs little to know.
    [[nodiscard]] bool keepsLines(const SettingsTable::Change& change) const;

    [[nodiscard]] const std::vector<RowLine>& lines() const { return lines_; }
    /// Of a row or level that is shown; of the row where both are.
    [[nodiscard]] std::optional<std::size_t> lineOf(std::string_view keyPath) const;
    /// How many rows the filter lets through, also in closed levels. Rows that only stay do not
    /// count.
    [[nodiscard]] std::size_t matchCount() const { return matchCount_; }
    /// How many rows there would be without the words that rows must match.
    [[nodiscard]] std::size_t countOfAll() const;
    /// The key paths of the listed rows at and below a line.
    [[nodiscard]] std::vector<std::string> keyPathsBelow(std::size_t line) const;

  private:
    class Arrangement;
    /// Which levels are open.
    struct Expansion {
        bool isUsual;
        std::set<std::string, std::less<>> others{};  ///< levels that are not as usual
        [[nodiscard]] bool at(std::string_view level) const {
            return others.contains(level) != isUsual;
        }
        void set(const std::string& level, bool isExpanded);
    };

    [[nodiscard]] Expansion& expansion() { return filter_.isEmpty() ? unfiltered_ : filtered_; }
    [[nodiscard]] bool mayBeListed(const SettingRow& row) const;
    [[nodiscard]] bool letsThrough(std::size_t row) const;
    void forgetWhatStays();
    void letLinesStay();
    void listRows();
    void makeLines();

    const SettingsTable& table_;
    /// @name Of the table when the lines were made
    /// @{
    std::string profile_;
    std::size_t generation_ = 0;
    /// @}
    Marks marks_;
    Form form_ = Form::Tree;
    bool showsRecords_ = false;
    RowFilter filter_;
    Expansion unfiltered_{.isUsual = false};
    Expansion filtered_{.isUsual = true};
    std::set<std::string, std::less<>> stayingRows_;
    std::set<std::string, std::less<>> stayingLevels_;
    std::vector<std::size_t> listed_;
    std::vector<std::string> listedKeyPaths_;  ///< which the table may have lost by now
    std::size_t matchCount_ = 0;
    std::vector<RowLine> lines_;
};

}  // namespace Tool

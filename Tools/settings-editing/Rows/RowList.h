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
    std::size_t count = 0;    ///< of a level: how many rows are below it, shown or not
    [[nodiscard]] bool isLevel() const { return row == none; }
};

/// A tree whose levels open and close, or a flat list. A level that has a single level below it,
/// and nothing else, is one line with it ("Menubar.Mode").
class RowList {
  public:
    enum class Form { Tree, Flat };
    using Marks = std::function<RowMarks(const std::string& keyPath)>;

    explicit RowList(const SettingsTable& table);

    /// Of a row; none at the start.
    void setMarks(Marks marks);
    void setForm(Form form);
    [[nodiscard]] Form form() const { return form_; }
    /// Records are shown where this is set or the filter asks for them.
    void setShowsRecords(bool showsRecords);
    /// While a filter is set, all levels are open unless they are closed by hand.
    void setFilter(const RowFilter& filter);
    [[nodiscard]] const RowFilter& filter() const { return filter_; }
    void setExpanded(const std::string& level, bool isExpanded);
    void setAllExpanded(bool areExpanded);
    /// Opens the levels above a key path.
    void reveal(std::string_view keyPath);

    /// Makes the lines anew. To be called after any of the functions above, or another scope.
    void arrange();
    /// After a change of the table or the marks. Rows that are shown stay, also where the filter
    /// does not let them through any more; those that it lets through now are added. So no line
    /// jumps or disappears under somebody's hand. Returns whether lines were added or removed.
    bool follow(const SettingsTable::Change& change);

    [[nodiscard]] const std::vector<RowLine>& lines() const { return lines_; }
    /// Of a row or level that is shown.
    [[nodiscard]] std::optional<std::size_t> lineOf(std::string_view keyPath) const;
    /// Rows that the filter lets through, records only where they are shown; lines of closed levels
    /// count too.
    [[nodiscard]] std::size_t matchCount() const;
    /// The key paths of rows at and below a line.
    [[nodiscard]] std::vector<std::string> keyPathsBelow(std::size_t line) const;

  private:
    const SettingsTable& table_;
    Marks marks_;
    Form form_ = Form::Tree;
    bool showsRecords_ = false;
    RowFilter filter_;
    std::vector<RowLine> lines_;
};

}  // namespace Tool

// SPDX-License-Identifier: MIT
#pragma once

/// Lines about settings, each with a check box: what the dialogs show of edits, differences and
/// imports.

#include <QAbstractTableModel>
#include <QStringList>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "Edits/PendingEdits.h"
#include "Platform/Values/NSColor.h"

namespace QRVWindow {

struct ChangeCell {
    QString text;
    std::optional<NSColor> color{};  ///< shown as a swatch before the text
    /// Key paths and values: from left to right in any layout.
    bool isLeftToRight = false;
};

struct ChangeLine {
    Tool::SettingPlace place;
    std::vector<ChangeCell> cells;  ///< one for each column; the first one has the check box
    bool isMarked = false;          ///< a conflict: bold, besides what its cells say
};

class ChangeModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    /// Its data is the text of a cell without marks for the direction.
    static constexpr int plainTextRole = Qt::UserRole + 1;

    enum class AtFirst { Checked, Unchecked };
    explicit ChangeModel(QStringList headers, QObject* parent = nullptr,
                         AtFirst atFirst = AtFirst::Checked);

    /// Check marks belong to places, whether they have a line or not.
    void setLines(std::vector<ChangeLine> lines);
    [[nodiscard]] const std::vector<ChangeLine>& lines() const { return lines_; }
    [[nodiscard]] const ChangeLine& lineAt(int row) const {
        return lines_[static_cast<std::size_t>(row)];
    }
    [[nodiscard]] int rowOf(const Tool::SettingPlace& place) const;  ///< -1 for none

    [[nodiscard]] bool isChecked(const Tool::SettingPlace& place) const;
    void setChecked(const std::vector<Tool::SettingPlace>& places, bool isChecked);
    /// Places without a line are as at first.
    void forgetMarksOfOthers();
    /// Those that have a line, in the order of the lines.
    [[nodiscard]] std::vector<Tool::SettingPlace> checkedPlaces() const;
    /// Gives a column an editor, which the view's delegate makes, on lines that are marked.
    void setEditableColumn(int column) { editableColumn_ = column; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

  Q_SIGNALS:
    void checkedChanged();

  private:
    [[nodiscard]] bool hasSamePlaces(const std::vector<ChangeLine>& lines) const;
    [[nodiscard]] QVariant ofCell(const ChangeCell& cell, int role) const;

    QStringList headers_;
    std::vector<ChangeLine> lines_;
    std::map<Tool::SettingPlace, int> rows_;  ///< where the lines stand
    std::set<Tool::SettingPlace> toggled_;    ///< whose check mark is another one than at first
    AtFirst atFirst_;
    int editableColumn_ = -1;
};

}  // namespace QRVWindow

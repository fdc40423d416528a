// SPDX-License-Identifier: MIT
#pragma once

// The lines of a list of settings as a model: rows, and in a tree the levels above them.

#include <QAbstractTableModel>
#include <QStringList>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Rows/RowList.h"
#include "Session/Session.h"
#include "Table/RowText.h"

namespace QRVWindow {

/// Levels open and close here, not in the view: all lines are beside each other. Indexes, and with
/// them current row, selection and open editors, stay with their key paths through every change
/// but that of the scope, as long as the line is there.
class RowModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    /// The last one is there while the session has another profile.
    enum Column { Setting, Sign, Value, Layer, Default, Seen, Other };
    enum Role {
        KeyPathRole = Qt::UserRole,  ///< of a row or level
        IsLevelRole,
    };
    struct Counts {
        int matches = 0;   ///< rows that the filter lets through
        int all = 0;       ///< rows that there would be without one
        int modified = 0;  ///< without the store's records, as `live`
        int records = 0;
        int live = 0;
        auto operator<=>(const Counts&) const = default;
    };

    explicit RowModel(Session& session, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

    void setFilter(const QString& text);
    [[nodiscard]] QString filter() const;
    /// A line for people about each word of the filter that is wrong.
    [[nodiscard]] QStringList filterFaults() const;
    void setForm(Tool::RowList::Form form);
    [[nodiscard]] Tool::RowList::Form form() const { return list_.form(); }
    void setShowsRecords(bool showsRecords);
    [[nodiscard]] bool showsRecords() const { return showsRecords_; }
    /// Does nothing at a line that is no level.
    void setExpanded(int line, bool isExpanded);
    /// Opens the level and all levels below it.
    void expandBelow(int line);
    void setAllExpanded(bool areExpanded);
    /// Opens the levels above a key path. Returns its line; empty when the filter hides it, or
    /// there is no such setting.
    std::optional<int> reveal(const std::string& keyPath);
    /// What the doctor says, by key path.
    void setFindings(std::map<std::string, QString> findings);

    [[nodiscard]] const Counts& counts() const { return counts_; }
    /// `line` is below `rowCount()`.
    [[nodiscard]] const Tool::RowLine& lineAt(int line) const;
    /// Null at a level.
    [[nodiscard]] const Tool::SettingRow* rowAt(int line) const;
    [[nodiscard]] std::optional<int> lineOf(const std::string& keyPath) const;
    /// The rows at and below a line.
    [[nodiscard]] std::vector<std::string> keyPathsBelow(int line) const;
    [[nodiscard]] const RowText& text() const { return text_; }
    [[nodiscard]] Session& session() const { return session_; }

  Q_SIGNALS:
    /// Before and after lines come, go or move.
    void aboutToRearrange();
    void rearranged();
    void countsChanged();

  private:
    /// Lines that have come since the model last announced how many there are: between begin and
    /// end of an insertion they are not there yet.
    struct Gap {
        int first = 0;
        int count = 0;
    };

    void followTable(const Tool::SettingsTable::Change& change);
    void followMarks(const QStringList& keyPaths);
    void followOther();
    void followFileState();
    void follow(const Tool::SettingsTable::Change& change);
    void resetRows();
    void rearrange(const std::function<void()>& change);
    void announce(const std::vector<std::string>& keyPaths);
    void announceLines(int first, int last);
    [[nodiscard]] std::vector<std::size_t> identities() const;
    void announceRearranged(const std::vector<std::size_t>& before);
    void insert(int first, int count);
    void updateCounts();
    void noteLive(const std::string& keyPath);

    [[nodiscard]] QVariant levelData(const Tool::RowLine& line, int column, int role) const;
    [[nodiscard]] QVariant rowData(const Tool::RowLine& line, const Tool::SettingRow& row,
                                   int column, int role) const;
    [[nodiscard]] QString cellText(const Tool::RowLine& line, const Tool::SettingRow& row,
                                   int column) const;
    [[nodiscard]] QString toolTip(const Tool::SettingRow& row, int column) const;

    Session& session_;
    Tool::RowList list_;
    RowText text_;
    int lineCount_ = 0;
    Gap gap_;
    std::set<std::string> live_;
    bool showsRecords_ = false;
    bool hasOther_ = false;
    bool isDamaged_ = false;
    bool isWritable_ = false;
    Counts counts_;
};

}  // namespace QRVWindow

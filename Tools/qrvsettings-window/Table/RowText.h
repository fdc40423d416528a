// SPDX-License-Identifier: MIT
#pragma once

// What the cells of a setting's row say.

#include <QCoreApplication>
#include <QString>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Look/Signs.h"
#include "Rows/SettingsTable.h"
#include "Session/Session.h"

namespace QRVWindow {

/// Values are on one line, with control characters made visible. All else is in the language of
/// the user.
class RowText {
    Q_DECLARE_TR_FUNCTIONS(RowText)

  public:
    /// `session` must outlive this object.
    explicit RowText(const Session& session);

    /// Takes over which edits are in conflict. To be called after a change of edits or values.
    void update();
    /// What the doctor says, by key path.
    void setFindings(std::map<std::string, QString> findings);

    /// The most urgent first.
    [[nodiscard]] std::vector<RowState> states(const Tool::SettingRow& row) const;
    [[nodiscard]] QString signs(const Tool::SettingRow& row) const;
    /// The value, or what it is and will be, shortened.
    [[nodiscard]] QString value(const Tool::SettingRow& row) const;
    [[nodiscard]] QString layer(const Tool::SettingRow& row) const;
    [[nodiscard]] QString byDefault(const Tool::SettingRow& row) const;
    /// When and by whom it was changed a moment ago, or what becomes of an edit.
    [[nodiscard]] QString seen(const Tool::SettingRow& row) const;
    /// In the other profile; empty when there is none.
    [[nodiscard]] QString other(const Tool::SettingRow& row) const;
    [[nodiscard]] bool differsInOther(const Tool::SettingRow& row) const;

    /// All that the row says, as one name for a screen reader.
    [[nodiscard]] QString spoken(const Tool::SettingRow& row) const;
    /// The sentence about the setting, and what the doctor says.
    [[nodiscard]] QString description(const Tool::SettingRow& row) const;
    /// The values in full, for a tooltip; up to `maximumLength` characters each.
    [[nodiscard]] QString valueInFull(const Tool::SettingRow& row) const;
    [[nodiscard]] QString defaultInFull(const Tool::SettingRow& row) const;
    [[nodiscard]] QString otherInFull(const Tool::SettingRow& row) const;
    static constexpr qsizetype maximumLength = 4000;

  private:
    /// The value that is shown beside a row's own; null when there is none.
    [[nodiscard]] PropertyListValue valueInOther(const Tool::SettingRow& row) const;
    [[nodiscard]] QString valueUpTo(const Tool::SettingRow& row, qsizetype maximum) const;
    [[nodiscard]] QString changedBy(const LiveChange& change) const;

    const Session& session_;
    std::set<std::string> conflicts_;
    std::map<std::string, QString> findings_;
};

}  // namespace QRVWindow

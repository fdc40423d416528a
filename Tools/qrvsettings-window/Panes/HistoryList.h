// SPDX-License-Identifier: MIT
#pragma once

/// The last changes of a setting, a line each, with a button that takes it back.

#include <QWidget>
#include <vector>

#include "Edits/PendingEdits.h"
#include "Panes/HistoryLookup.h"

class QPushButton;
class QTimer;

namespace QRVWindow {

class FactText;

class HistoryList : public QWidget {
    Q_OBJECT

  public:
    /// For so long the lines of the last setting stay, so that nothing flickers; their buttons do
    /// nothing.
    static constexpr int patienceMilliseconds = 150;

    explicit HistoryList(QWidget* parent = nullptr);

    /// Shows what the history says of the setting at this stored key path, soon.
    void setStoredKeyPath(const std::string& storedKeyPath);
    /// Asks again, because something may have been entered.
    void lookAgain();

    [[nodiscard]] QStringList lines() const;

  Q_SIGNALS:
    /// Somebody wants the setting to have the value from before a change; null for none stored.
    void takeBackWanted(const Tool::SettingPlace& place, const PropertyListValue& value);
    /// The answer for the setting is shown.
    void shown();

  private:
    struct Line {
        QWidget* row;
        FactText* text;
        QPushButton* takeBack;
        QRVHistoryChange change;
    };
    void take(const HistoryAnswer& answer);
    void showLines(const HistoryAnswer& answer);
    void showNote(const QString& note);
    Line& lineAt(std::size_t index);

    HistoryLookup lookup_;
    QTimer* patience_;
    FactText* note_;
    std::vector<Line> lines_;  ///< those behind `used_` are hidden
    std::size_t used_ = 0;
    std::string keyPath_;
    bool isCurrent_ = false;  ///< the lines are those of `keyPath_`
};

}  // namespace QRVWindow

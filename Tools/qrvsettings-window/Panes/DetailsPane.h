// SPDX-License-Identifier: MIT
#pragma once

/// All there is to say of the current setting, level, or selection: what it is, what each layer
/// says, the last changes, and the command that would set it. Follows the session while it is
/// shown; a text that stays the same keeps what is selected of it.

#include <QScrollArea>
#include <array>
#include <string>
#include <vector>

#include "Panes/SettingFacts.h"
#include "Session/Session.h"

class QGridLayout;
class QLabel;
class QPushButton;

namespace QRVWindow {

class FactText;
class HistoryList;
class SwatchLabel;

class DetailsPane : public QScrollArea {
    Q_OBJECT

  public:
    /// `session` must outlive the pane.
    explicit DetailsPane(Session& session, QWidget* parent = nullptr);

    /// A setting or a level; empty for none.
    void setKeyPath(const std::string& keyPath);
    /// Several settings; one is as in `setKeyPath`.
    void setKeyPaths(const std::vector<std::string>& keyPaths);

    /// The text that is shown about something; empty when it is not.
    [[nodiscard]] QString textAbout(SettingFact::About about) const;
    [[nodiscard]] QString command() const;
    [[nodiscard]] QStringList historyLines() const;

  Q_SIGNALS:
    /// Somebody wants the setting to have the value from before a change; null for none stored.
    void takeBackWanted(const Tool::SettingPlace& place, const PropertyListValue& value);
    /// Actions on a level or several settings.
    void resetWanted(const QStringList& keyPaths);
    void copyCommandsWanted(const QStringList& keyPaths);
    /// The last changes of the current setting are shown.
    void historyShown();

  protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    struct Row {
        QLabel* name = nullptr;
        SwatchLabel* swatch = nullptr;
        FactText* text = nullptr;
    };
    void makeHeader(QGridLayout* grid);
    void makeCommand(QGridLayout* grid);
    void makeActions(QGridLayout* grid);
    void makeHistory(QGridLayout* grid);
    void followSession();
    void followTable(const Tool::SettingsTable::Change& change);
    void followMarks();
    void refresh();
    void lookAgain();
    void showFacts(const SettingFacts& facts);
    void fitNames();
    void showHead();
    void showCommand();
    void showHistory();
    Row& rowAbout(SettingFact::About about);
    [[nodiscard]] bool isSetting() const { return keyPaths_.size() == 1 && level_.empty(); }

    Session& session_;
    std::vector<std::string> keyPaths_;  ///< of rows
    std::string level_;                  ///< above all of them; empty for a setting or a selection
    bool isStale_ = true;                ///< hidden, and to be brought up to date when shown
    quint64 lastLive_ = 0;               ///< number and program of the last change that was seen
    QString lastProgram_;

    QGridLayout* grid_ = nullptr;
    QLabel* nothing_ = nullptr;
    FactText* head_ = nullptr;
    QPushButton* copyHead_ = nullptr;
    std::array<Row, SettingFact::aboutCount> rows_{};
    QLabel* commandName_ = nullptr;
    FactText* command_ = nullptr;
    QPushButton* copyCommand_ = nullptr;
    QWidget* actions_ = nullptr;
    QLabel* historyName_ = nullptr;
    HistoryList* history_ = nullptr;
};

}  // namespace QRVWindow

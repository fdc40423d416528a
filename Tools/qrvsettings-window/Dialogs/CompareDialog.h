// SPDX-License-Identifier: MIT
#pragma once

/// The settings of the scope beside others: the defaults, another scope, a file, the settings as
/// they were when the window started, or before a save of the history. Chosen values of the other
/// side become pending edits.

#include <memory>
#include <vector>

#include "Dialogs/ChangeModel.h"
#include "Dialogs/LiveDialog.h"
#include "Dialogs/SavesModel.h"
#include "Edits/Comparison.h"

class QComboBox;
class QLineEdit;
class QPushButton;

namespace QRVWindow {

class ChangeView;

class CompareDialog : public LiveDialog {
    Q_OBJECT

  public:
    enum class Side { Defaults, Application, Profile, AtStart, File, Moment };
    enum Column { Setting, Difference, Here, There };

    /// `session` must outlive the dialog.
    explicit CompareDialog(Session& session, QWidget* parent = nullptr);

    /// Compares with a file; says what is wrong with it when it cannot be read.
    void compareWithFile(const QString& path);
    void compareWith(Side side, const QString& profile = QString());

  protected:
    void showSession() override;

  private:
    struct Comparison {
        std::vector<Tool::ComparedSetting> settings;
        QString fault;  ///< why there is no comparison
    };
    void arrange();
    QWidget* makeMomentPart();
    void makeButtons(QLayout& layout);
    void fillSides();
    void chooseFile();
    void followChoice();
    void showMoments(const std::vector<QRVHistorySave>& saves, const QString& failure);
    void showState();
    [[nodiscard]] Side side() const;
    [[nodiscard]] Comparison comparison() const;
    [[nodiscard]] Comparison comparisonWithTree(const NSDictionary& other) const;
    [[nodiscard]] Comparison comparisonWithMoment() const;
    [[nodiscard]] ChangeLine lineOf(const Tool::ComparedSetting& setting) const;
    [[nodiscard]] std::vector<Tool::ComparedSetting> checkedSettings() const;
    [[nodiscard]] QString stateText() const;
    void take();
    void copyCommands();

    std::vector<Tool::ComparedSetting> settings_;  ///< of the lines, in their order
    std::size_t differenceCount_ = 0;              ///< with those that the filter leaves out
    QString fault_;
    QString filePath_;
    NSDictionary fileTree_ = nullptr;
    QString fileFault_;
    QString historyFault_;
    ChangeModel model_;
    SavesModel saves_;
    SavesReader* reader_ = nullptr;
    QComboBox* sides_ = nullptr;
    QPushButton* browse_ = nullptr;
    QWidget* momentPart_ = nullptr;
    QLineEdit* time_ = nullptr;
    QTreeView* savesView_ = nullptr;
    QLineEdit* filter_ = nullptr;
    ChangeView* view_ = nullptr;
    QLabel* state_ = nullptr;
    QPushButton* take_ = nullptr;
    QPushButton* copy_ = nullptr;
};

}  // namespace QRVWindow

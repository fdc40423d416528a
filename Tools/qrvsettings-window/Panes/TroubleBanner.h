// SPDX-License-Identifier: MIT
#pragma once

/// The lines at the top of the window about what is wrong with the settings file, with what to do.
/// Hidden while nothing is.

#include <QWidget>
#include <vector>

#include "Panes/Findings.h"
#include "Panes/Troubles.h"
#include "Session/Session.h"

class QPushButton;
class QScrollArea;
class QVBoxLayout;

namespace QRVWindow {

class TroubleBanner : public QWidget {
    Q_OBJECT

  public:
    /// So many lines are shown at first, the worst ones.
    static constexpr std::size_t linesAtFirst = 3;
    /// And so many at all; `qrvsettings doctor` prints the others too.
    static constexpr std::size_t maximumLines = 100;

    /// Both must outlive the banner. It has `findings` examined whenever the file changes.
    TroubleBanner(Session& session, Findings& findings, QWidget* parent = nullptr);

    /// What is wrong, as it is shown, whether or not all lines are.
    [[nodiscard]] const std::vector<Trouble>& troubles() const { return troubles_; }
    /// The lines as text: "Warning: ...".
    [[nodiscard]] QStringList texts() const;

  Q_SIGNALS:
    /// Somebody wants to see a setting.
    void placeWanted(const Tool::SettingPlace& place);
    /// A save is to replace the damaged file; its bytes are kept beside it. Nobody was asked yet.
    void startAnewWanted();
    /// The settings of another file are to replace the damaged one. Nobody was asked yet.
    void importWanted();
    void folderWanted(const QString& folder);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void follow();
    void showLines();
    void addLine(const Trouble& trouble);
    void fitHeight();
    void announce();

    Session& session_;
    Findings& findings_;
    std::vector<Trouble> troubles_;
    bool areAllShown_ = false;
    QScrollArea* area_ = nullptr;
    QWidget* page_ = nullptr;
    QVBoxLayout* column_ = nullptr;
    QPushButton* more_ = nullptr;
};

}  // namespace QRVWindow

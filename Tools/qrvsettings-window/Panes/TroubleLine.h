// SPDX-License-Identifier: MIT
#pragma once

// One line of the banner: sign, level, message, and what can be done.

#include <QWidget>

#include "Panes/Troubles.h"

class QBoxLayout;
class QPushButton;

namespace QRVWindow {

class TroubleLine : public QWidget {
    Q_OBJECT

  public:
    explicit TroubleLine(const Trouble& trouble, QWidget* parent = nullptr);

  Q_SIGNALS:
    void placeWanted(const Tool::SettingPlace& place);
    void startAnewWanted();
    void importWanted();
    void folderWanted();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void addButtons(QBoxLayout* row);
    void addAdvice(QBoxLayout* row);
    QPushButton* addButton(QBoxLayout* row, const QString& text);

    Trouble trouble_;
};

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#pragma once

// One line of the banner: sign, level, message, and what can be done.

#include <QWidget>

#include "Panes/Troubles.h"

class QPushButton;

namespace QRVWindow {

class WrappingRow;

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
    void addButtons();
    void addAdvice();
    QPushButton* addButton(const QString& text);

    Trouble trouble_;
    WrappingRow* buttons_;
};

}  // namespace QRVWindow

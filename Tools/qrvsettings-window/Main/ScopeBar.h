// SPDX-License-Identifier: MIT
#pragma once

/// The line at the top: whose settings the rows are, what stands beside them, and whether they are
/// a tree.

#include <QWidget>

#include "Rows/RowList.h"
#include "Session/Session.h"

class QComboBox;
class QLayout;
class QRadioButton;

namespace QRVWindow {

class ScopeBar : public QWidget {
    Q_OBJECT

  public:
    /// `session` must outlive the bar.
    explicit ScopeBar(Session& session, QWidget* parent = nullptr);

    void setForm(Tool::RowList::Form form);

  Q_SIGNALS:
    void newProfileWanted();
    /// Somebody wants to compare with what has no column.
    void comparisonWanted();
    /// Only by a person.
    void formChanged(Tool::RowList::Form form);

  private:
    QComboBox* makeBox(QLayout& line, const QString& label, const QString& name);
    void makeForm(QLayout& line);
    void showProfiles();
    void chooseScope(int index);
    void chooseOther(int index);

    Session& session_;
    QComboBox* scope_ = nullptr;
    QComboBox* other_ = nullptr;
    QRadioButton* tree_ = nullptr;
    QRadioButton* flat_ = nullptr;
};

}  // namespace QRVWindow

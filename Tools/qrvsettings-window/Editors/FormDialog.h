// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>
#include <QLabel>

namespace QRVWindow {

/// A dialog that grows when texts in it become longer, so that none is cut off: a layout alone does
/// not make room for wrapped lines.
class FormDialog : public QDialog {
    Q_OBJECT

  public:
    using QDialog::QDialog;

  protected:
    bool event(QEvent* event) override;
    /// Once the layout is made.
    void takeStartSize();

  private:
    void growToFit();
};

/// Plain text of as many lines as it needs, which a person can select.
QLabel* makeWrappedLabel(const QString& text, QWidget* parent);

/// The font of JSON, data and commands, as large as other text.
QFont fixedFont();

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#pragma once

// Values that are typed on one line.

#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

#include "Editors/ValueField.h"
#include "Platform/Values/NSColor.h"

class QBoxLayout;

namespace QRVWindow {

class LineField : public ValueField {
    Q_OBJECT

  public:
    LineField(const FieldSubject& subject, QWidget* parent);

    [[nodiscard]] bool isAsGiven() const override { return text() == textAtFirst_; }
    [[nodiscard]] PropertyListValue typedValue() const override;
    [[nodiscard]] QString text() const final { return line_->text(); }
    void setText(const QString& text) final;
    [[nodiscard]] QWidget* input() const override { return line_; }
    void selectAll() override { line_->selectAll(); }

  protected:
    [[nodiscard]] QLineEdit* line() const { return line_; }
    [[nodiscard]] QBoxLayout* row() const { return row_; }

    void resizeEvent(QResizeEvent* event) override;

  private:
    /// What stands behind the line: the range and unit, or the size of data.
    [[nodiscard]] QString remark() const;
    /// Where it leaves room for the value.
    void showRemark();
    QBoxLayout* row_;
    QLineEdit* line_;
    QLabel* remark_;
    QString textAtFirst_;
    bool isTypedAsJSON_;
};

/// The keys up and down, and a drag of the handle, step by one; page up and page down by ten.
class IntegerField : public LineField {
    Q_OBJECT

  public:
    IntegerField(const FieldSubject& subject, QWidget* parent);
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    bool step(int steps);
};

/// A button that shows the colour and opens a colour dialog, beside the text of the colour.
class ColorField : public LineField {
    Q_OBJECT

  public:
    ColorField(const FieldSubject& subject, QWidget* parent);

  private:
    void showColor();
    void openDialog();
    void take(const NSColor& chosen);
    QAbstractButton* swatch_;
    QLabel* hexadecimal_;
};

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#pragma once

// Values that are typed on several lines: containers as JSON, long text, data.

#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>

#include "Editors/ValueField.h"

namespace QRVWindow {

/// Enter makes a line; Tab goes to the next control.
class LinesField final : public ValueField {
    Q_OBJECT

  public:
    LinesField(const FieldSubject& subject, QWidget* parent);

    [[nodiscard]] bool isAsGiven() const override { return text() == textAtFirst_; }
    [[nodiscard]] PropertyListValue typedValue() const override;
    /// With U+000A between lines, and every other character as it was typed.
    [[nodiscard]] QString text() const override;
    void setText(const QString& text) override;
    [[nodiscard]] QWidget* input() const override { return lines_; }
    [[nodiscard]] bool keepsEnter() const override { return true; }

  private:
    QPlainTextEdit* lines_;
    QString textAtFirst_;
    bool isTypedAsJSON_;
};

/// Bytes as base64 or in hexadecimal digits, with their number.
class DataField final : public ValueField {
    Q_OBJECT

  public:
    DataField(const FieldSubject& subject, QWidget* parent);

    [[nodiscard]] bool isAsGiven() const override;
    [[nodiscard]] PropertyListValue typedValue() const override;
    /// As base64 where it can be read.
    [[nodiscard]] QString text() const override;
    /// Of base64.
    void setText(const QString& text) override;
    [[nodiscard]] QWidget* input() const override { return lines_; }
    [[nodiscard]] bool keepsEnter() const override { return true; }

  private:
    enum Form { Base64, Hexadecimal };
    void showIn(Form form);
    void showSize();
    QPlainTextEdit* lines_;
    QComboBox* forms_;
    QLabel* size_;
    Form form_ = Base64;
};

}  // namespace QRVWindow

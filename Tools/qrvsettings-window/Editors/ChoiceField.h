// SPDX-License-Identifier: MIT
#pragma once

// Values that are chosen from a list.

#include <QComboBox>
#include <vector>

#include "Editors/ValueField.h"

namespace QRVWindow {

/// The known choices, each with its sentence, or true and false. A value that is none of them is
/// among them all the same, and "Other..." asks for a field to type one.
class ChoiceField final : public ValueField {
    Q_OBJECT

  public:
    ChoiceField(const FieldSubject& subject, QWidget* parent);

    /// Whether a subject has choices.
    static bool isFor(const FieldSubject& subject);

    [[nodiscard]] bool isAsGiven() const override { return box_->currentIndex() == indexAtFirst_; }
    [[nodiscard]] PropertyListValue typedValue() const override;
    [[nodiscard]] QString text() const override;
    /// Chooses the value of that text; nothing where there is none.
    void setText(const QString& text) override;
    [[nodiscard]] QWidget* input() const override { return box_; }
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void addChoice(const PropertyListValue& value, const QString& sentence);
    void addChoices();
    QComboBox* box_;
    std::vector<PropertyListValue> values_;
    int indexAtFirst_ = -1;
};

}  // namespace QRVWindow

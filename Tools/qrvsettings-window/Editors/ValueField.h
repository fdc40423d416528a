// SPDX-License-Identifier: MIT
#pragma once

// The part of an editor in which a value of one kind is typed or chosen.

#include <QString>
#include <QWidget>

#include "Editors/ValueEditor.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVWindow {

/// What a field is made for.
struct FieldSubject {
    PropertyListValue::Kind kind;  ///< `Color` for the text of a colour, `Null` for any
    PropertyListValue given;       ///< what it starts with; null: with `startText`
    QString startText;
    const Tool::KnownSetting* known = nullptr;
    ValueEditor::Place place = ValueEditor::Place::Cell;
    bool hasSeveralLines = false;  ///< text that is, or is to be, of several lines
    bool offersChoices = true;     ///< the known ones, where there are any
};

class ValueField : public QWidget {
    Q_OBJECT

  public:
    ValueField(const FieldSubject& subject, QWidget* parent) : QWidget(parent), subject_(subject) {}

    [[nodiscard]] const FieldSubject& subject() const { return subject_; }
    /// Whether nobody has changed it: then the value is `subject().given` itself.
    [[nodiscard]] virtual bool isAsGiven() const = 0;
    /// What is typed or chosen. Throws Tool::Failure.
    [[nodiscard]] virtual PropertyListValue typedValue() const = 0;
    [[nodiscard]] virtual QString text() const = 0;
    /// As a person types it.
    virtual void setText(const QString& text) = 0;
    /// What has the focus and is described to screen readers.
    [[nodiscard]] virtual QWidget* input() const = 0;
    /// Whether Enter belongs to the text, so that only Ctrl+Enter commits.
    [[nodiscard]] virtual bool keepsEnter() const { return false; }
    /// Selects what a person wants to type over.
    virtual void selectAll() {}

  Q_SIGNALS:
    void edited();
    /// A person wants to type a value that is none of the choices.
    void otherWanted();

  private:
    FieldSubject subject_;
};

/// The field for a subject: a list of choices where there are any.
ValueField* makeField(const FieldSubject& subject, QWidget* parent);

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#include "Editors/ValueField.h"

#include "Editors/ChoiceField.h"
#include "Editors/LineField.h"
#include "Editors/LinesField.h"

namespace QRVWindow {

ValueField* makeField(const FieldSubject& subject, QWidget* parent) {
    using Kind = PropertyListValue::Kind;
    if (ChoiceField::isFor(subject)) return new ChoiceField(subject, parent);
    const bool isForm = subject.place == ValueEditor::Place::Form;
    switch (subject.kind) {
        case Kind::Integer:
            return new IntegerField(subject, parent);
        case Kind::Color:
            return new ColorField(subject, parent);
        case Kind::Data:
            if (isForm) return new DataField(subject, parent);
            break;
        case Kind::Array:
        case Kind::Dictionary:
            if (isForm) return new LinesField(subject, parent);
            break;
        case Kind::String:
            if (isForm && subject.hasSeveralLines) return new LinesField(subject, parent);
            break;
        default:
            break;
    }
    return new LineField(subject, parent);
}

}  // namespace QRVWindow

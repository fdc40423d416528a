// SPDX-License-Identifier: MIT
#include "Editors/ChoiceField.h"

#include <QAbstractItemView>
#include <QBoxLayout>
#include <QEvent>
#include <algorithm>

#include "Editors/FieldText.h"
#include "Reporting/Failure.h"
#include "Text/ValueText.h"

namespace QRVWindow {
namespace {

using Kind = PropertyListValue::Kind;

QString textOf(const PropertyListValue& value) {
    return fieldText(value, FieldLines::One);
}

}  // namespace

bool ChoiceField::isFor(const FieldSubject& subject) {
    if (!subject.offersChoices) return false;
    return subject.kind == Kind::Boolean ||
           (subject.known != nullptr && !subject.known->choices.empty());
}

ChoiceField::ChoiceField(const FieldSubject& subject, QWidget* parent)
    : ValueField(subject, parent), box_(new QComboBox(this)) {
    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(box_);
    constexpr int shortestShown = 4;
    box_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box_->setMinimumContentsLength(shortestShown);
    if (subject.place == ValueEditor::Place::Cell) box_->setFrame(false);
    addChoices();
    box_->setCurrentIndex(indexAtFirst_);
    box_->installEventFilter(this);
    setFocusProxy(box_);
    connect(box_, &QComboBox::currentIndexChanged, this, [this](int index) {
        box_->setToolTip(box_->itemText(index));
        if (index == static_cast<int>(values_.size())) {
            Q_EMIT otherWanted();
        } else {
            Q_EMIT edited();
        }
    });
}

void ChoiceField::addChoice(const PropertyListValue& value, const QString& sentence) {
    const QString text = textOf(value);
    box_->addItem(sentence.isEmpty() ? text : tr("%1 – %2").arg(text, sentence));
    box_->setItemData(static_cast<int>(values_.size()), sentence, Qt::ToolTipRole);
    values_.push_back(value);
}

void ChoiceField::addChoices() {
    const bool hasKnown = subject().known != nullptr && !subject().known->choices.empty();
    if (hasKnown)
        for (const Tool::KnownChoice& choice : subject().known->choices)
            addChoice(choice.value, QString::fromStdString(choice.sentence));
    else
        for (const bool value : {true, false}) addChoice(value, {});
    const PropertyListValue& given = subject().given;
    if (given.isNull()) {
        setText(subject().startText);
        indexAtFirst_ = box_->currentIndex();
    } else {
        const auto found = std::find_if(values_.begin(), values_.end(), [&](const auto& value) {
            return value.isSameKindAs(given) && value == given;
        });
        indexAtFirst_ = static_cast<int>(found - values_.begin());
        if (found == values_.end()) addChoice(given, tr("none of the choices"));
    }
    if (hasKnown) box_->addItem(tr("Other…"));
    const int scrollBar = box_->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    box_->view()->setMinimumWidth(box_->view()->sizeHintForColumn(0) + scrollBar);
}

/// The wheel scrolls what is around the field, and changes no value on its way.
bool ChoiceField::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Wheel) return ValueField::eventFilter(watched, event);
    event->ignore();
    return true;
}

PropertyListValue ChoiceField::typedValue() const {
    const auto index = static_cast<std::size_t>(box_->currentIndex());
    if (index >= values_.size())
        throw Tool::Failure(Tool::Fault::WrongValue, "a choice is missing");
    return values_[index];
}

QString ChoiceField::text() const {
    const auto index = static_cast<std::size_t>(box_->currentIndex());
    return index < values_.size() ? textOf(values_[index]) : QString();
}

void ChoiceField::setText(const QString& text) {
    const auto found = std::find_if(values_.begin(), values_.end(),
                                    [&](const auto& value) { return textOf(value) == text; });
    box_->setCurrentIndex(found == values_.end() ? -1 : static_cast<int>(found - values_.begin()));
}

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#include "Editors/LineField.h"

#include <QBoxLayout>
#include <QColorDialog>
#include <QKeyEvent>
#include <algorithm>
#include <limits>

#include "Editors/FieldParts.h"
#include "Editors/FieldText.h"
#include "Look/Swatch.h"
#include "Reporting/Failure.h"
#include "Settings/SettingDescription.h"
#include "Text/ColorText.h"
#include "Text/ScalarText.h"

namespace QRVWindow {
namespace {

using Kind = PropertyListValue::Kind;
using Place = ValueEditor::Place;

QString formOf(Kind kind) {
    switch (kind) {
        case Kind::Date:
            return QStringLiteral("2001-01-31T23:59:59Z");
        case Kind::Color:
            return QStringLiteral("0.5 0.5 0.5 1");
        case Kind::Array:
            return QStringLiteral("[1, 2]");
        case Kind::Dictionary:
            return QStringLiteral("{\"Key\": 1}");
        default:
            return {};
    }
}

/// More than a screen can show.
bool isOutside(const std::optional<NSColor>& color) {
    if (!color) return false;
    const auto parts = {color->redComponent, color->greenComponent, color->blueComponent,
                        color->alphaComponent};
    return std::any_of(parts.begin(), parts.end(),
                       [](double part) { return part < 0 || part > 1; });
}

}  // namespace

LineField::LineField(const FieldSubject& subject, QWidget* parent)
    : ValueField(subject, parent),
      row_(new QHBoxLayout(this)),
      line_(new QLineEdit(this)),
      remark_(new QLabel(this)),
      isTypedAsJSON_(QRVWindow::isTypedAsJSON(subject.given, FieldLines::One)) {
    row_->setContentsMargins(0, 0, 0, 0);
    row_->addWidget(line_, 1);
    row_->addWidget(remark_);
    line_->setLayoutDirection(Qt::LeftToRight);
    line_->setMaxLength(std::numeric_limits<int>::max());
    line_->setText(subject.given.isNull() ? subject.startText
                                          : fieldText(subject.given, FieldLines::One));
    textAtFirst_ = line_->text();
    line_->setCursorPosition(0);
    line_->setPlaceholderText(formOf(subject.kind));
    if (subject.place == Place::Cell) line_->setFrame(false);
    showRemark();
    setFocusProxy(line_);
    connect(line_, &QLineEdit::textChanged, this, [this] {
        showRemark();
        Q_EMIT edited();
    });
}

PropertyListValue LineField::typedValue() const {
    return valueOfFieldText(text(), subject().kind, isTypedAsJSON_);
}

void LineField::setText(const QString& text) {
    line_->setText(text);
}

void LineField::resizeEvent(QResizeEvent* event) {
    ValueField::resizeEvent(event);
    showRemark();
}

void LineField::showRemark() {
    constexpr int shareOfCell = 3;
    remark_->setText(remark());
    const bool hasRoom =
        subject().place == Place::Form || remark_->sizeHint().width() * shareOfCell <= width();
    remark_->setVisible(!remark_->text().isEmpty() && hasRoom);
    line_->setToolTip(hasRoom ? QString() : remark_->text());
}

QString LineField::remark() const {
    if (isTypedAsJSON_) return tr("as JSON");
    if (subject().kind == Kind::Data) {
        const auto bytes = Tool::dataFromText(text().toStdString());
        return bytes ? tr("%1 B").arg(bytes->size()) : QString();
    }
    if (subject().place == Place::Form && subject().kind == Kind::Date &&
        text().contains(QLatin1Char('.')))
        return tr("the file keeps whole seconds");
    if (subject().place == Place::Form && subject().kind == Kind::Color)
        return isOutside(colorOfText(text())) ? tr("outside of 0 to 1") : QString();
    if (subject().known == nullptr) return {};
    QString unit = QString::fromStdString(subject().known->unit);
    if (subject().place == Place::Cell) return unit;
    const QString range = QString::fromStdString(Tool::rangeInWords(*subject().known));
    return range.isEmpty() ? unit : range;
}

IntegerField::IntegerField(const FieldSubject& subject, QWidget* parent)
    : LineField(subject, parent) {
    auto* const handle = new DragHandle(this);
    row()->insertWidget(1, handle);
    line()->installEventFilter(this);
    connect(handle, &DragHandle::stepped, this, &IntegerField::step);
}

bool IntegerField::eventFilter(QObject* watched, QEvent* event) {
    constexpr int pageOfSteps = 10;
    if (event->type() != QEvent::KeyPress) return LineField::eventFilter(watched, event);
    switch (static_cast<QKeyEvent*>(event)->key()) {
        case Qt::Key_Up:
            return step(1);
        case Qt::Key_Down:
            return step(-1);
        case Qt::Key_PageUp:
            return step(pageOfSteps);
        case Qt::Key_PageDown:
            return step(-pageOfSteps);
        default:
            return LineField::eventFilter(watched, event);
    }
}

/// Always true: in a table these keys would leave the row.
bool IntegerField::step(int steps) {
    try {
        const PropertyListValue value =
            isAsGiven() && !subject().given.isNull() ? subject().given : typedValue();
        const Tool::KnownSetting* const known = subject().known;
        const PropertyListValue stepped =
            known == nullptr ? steppedInteger(value, steps, nullptr, nullptr)
                             : steppedInteger(value, steps, known->minimum, known->maximum);
        setText(fieldText(stepped, FieldLines::One));
    } catch (const Tool::Failure&) {
        // The fault of what is typed is shown already.
    }
    return true;
}

ColorField::ColorField(const FieldSubject& subject, QWidget* parent)
    : LineField(subject, parent), swatch_(new SwatchButton(this)), hexadecimal_(new QLabel(this)) {
    row()->insertWidget(0, swatch_);
    setTabOrder(swatch_, line());
    row()->addWidget(hexadecimal_);
    hexadecimal_->setLayoutDirection(Qt::LeftToRight);
    hexadecimal_->setHidden(subject.place == Place::Cell);
    connect(line(), &QLineEdit::textChanged, this, &ColorField::showColor);
    connect(swatch_, &QAbstractButton::clicked, this, &ColorField::openDialog);
    showColor();
}

void ColorField::showColor() {
    const std::optional<NSColor> color = colorOfText(text());
    static_cast<SwatchButton*>(swatch_)->setColor(color);
    const QString digits =
        color ? QString::fromStdString(Tool::hexadecimalColorText(*color)) : tr("no colour");
    hexadecimal_->setText(digits);
    swatch_->setToolTip(tr("%1 – choose another colour").arg(digits));
    swatch_->setAccessibleName(tr("Choose a colour; now %1").arg(digits));
}

void ColorField::openDialog() {
    auto* const dialog = new QColorDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setOption(QColorDialog::ShowAlphaChannel);
    dialog->setOption(QColorDialog::DontUseNativeDialog);
    dialog->setWindowTitle(tr("Choose a colour"));
    dialog->setCurrentColor(qColorOf(colorOfText(text()).value_or(NSColor())));
    connect(dialog, &QColorDialog::colorSelected, this, [this](const QColor& chosen) {
        const double largest = 255;
        take(NSColor::colorWithSRGBRed(chosen.red() / largest, chosen.green() / largest,
                                       chosen.blue() / largest, chosen.alpha() / largest));
    });
    dialog->open();
}

void ColorField::take(const NSColor& chosen) {
    const std::optional<NSColor> before = colorOfText(text());
    if (before && qColorOf(*before) == qColorOf(chosen)) return;
    setText(colorTextAfterChoice(text(), chosen));
}

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#include "Editors/LinesField.h"

#include <QBoxLayout>
#include <cstddef>
#include <optional>

#include "Editors/FieldText.h"
#include "Look/Text.h"
#include "Platform/Values/NSData.h"
#include "Reporting/Failure.h"
#include "Text/ScalarText.h"

namespace QRVWindow {
namespace {

using Kind = PropertyListValue::Kind;

QPlainTextEdit* makeLines(QWidget* parent, bool isForPeople) {
    constexpr int leastLines = 5;
    auto* const lines = new QPlainTextEdit(parent);
    lines->setTabChangesFocus(true);
    if (!isForPeople) {
        lines->setFont(codeFont());
        lines->setLayoutDirection(Qt::LeftToRight);
    }
    lines->setMinimumHeight(lines->fontMetrics().lineSpacing() * leastLines);
    return lines;
}

/// `toPlainText` would make blanks of no-break spaces.
QString textOf(const QPlainTextEdit& lines) {
    return lines.document()->toRawText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

[[noreturn]] void refuse(const char* why) {
    throw Tool::Failure(Tool::Fault::WrongValue, why);
}

/// Two digits a byte, with blanks anywhere between bytes.
std::string bytesOfHexadecimal(const QString& text) {
    QByteArray digits = text.simplified().toUtf8();
    digits.replace(' ', "");
    const QByteArray bytes = QByteArray::fromHex(digits);
    if (bytes.toHex() != digits.toLower()) refuse("not hexadecimal digits, two for each byte");
    return bytes.toStdString();
}

QString hexadecimalOf(const std::string& bytes) {
    return QString::fromLatin1(QByteArray::fromStdString(bytes).toHex(' '));
}

std::string bytesOf(const PropertyListValue& value) {
    const NSData data = value.data();
    return std::string(data.view());
}

}  // namespace

LinesField::LinesField(const FieldSubject& subject, QWidget* parent)
    : ValueField(subject, parent),
      lines_(makeLines(this, subject.kind == Kind::String)),
      isTypedAsJSON_(QRVWindow::isTypedAsJSON(subject.given, FieldLines::Several)) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(lines_);
    lines_->setPlainText(subject.given.isNull() ? subject.startText
                                                : fieldText(subject.given, FieldLines::Several));
    textAtFirst_ = text();
    setFocusProxy(lines_);
    connect(lines_, &QPlainTextEdit::textChanged, this, &ValueField::edited);
}

PropertyListValue LinesField::typedValue() const {
    return valueOfFieldText(text(), subject().kind, isTypedAsJSON_);
}

QString LinesField::text() const {
    return textOf(*lines_);
}

/// With its own undo, unlike `setPlainText`.
void LinesField::setText(const QString& text) {
    lines_->selectAll();
    lines_->insertPlainText(text);
}

DataField::DataField(const FieldSubject& subject, QWidget* parent)
    : ValueField(subject, parent),
      lines_(makeLines(this, false)),
      forms_(new QComboBox(this)),
      size_(new QLabel(this)) {
    forms_->addItems({tr("Base64"), tr("Hexadecimal")});
    forms_->setAccessibleName(tr("Form of the data"));
    auto* const row = new QHBoxLayout;
    row->addWidget(forms_);
    row->addWidget(size_, 1);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(lines_);
    column->addLayout(row);
    setFocusProxy(lines_);
    lines_->setPlainText(subject.given.isNull() ? subject.startText
                                                : fieldText(subject.given, FieldLines::Several));
    showSize();
    connect(forms_, &QComboBox::currentIndexChanged, this,
            [this](int index) { showIn(static_cast<Form>(index)); });
    connect(lines_, &QPlainTextEdit::textChanged, this, [this] {
        showSize();
        Q_EMIT edited();
    });
}

bool DataField::isAsGiven() const {
    try {
        return typedValue() == subject().given;
    } catch (const Tool::Failure&) {
        return subject().given.isNull() && textOf(*lines_) == subject().startText;
    }
}

PropertyListValue DataField::typedValue() const {
    const QString shown = textOf(*lines_);
    if (form_ == Hexadecimal) return NSData(bytesOfHexadecimal(shown));
    return valueOfFieldText(shown, Kind::Data, false);
}

QString DataField::text() const {
    try {
        return QString::fromStdString(Tool::dataText(bytesOf(typedValue())));
    } catch (const Tool::Failure&) {
        return textOf(*lines_);
    }
}

void DataField::setText(const QString& text) {
    const auto bytes = Tool::dataFromText(text.toStdString());
    lines_->selectAll();
    lines_->insertPlainText(form_ == Hexadecimal && bytes ? hexadecimalOf(*bytes) : text);
}

/// What is no data yet stays as it is typed.
void DataField::showIn(Form form) {
    std::optional<std::string> bytes;
    try {
        bytes = bytesOf(typedValue());
    } catch (const Tool::Failure&) {
        bytes.reset();
    }
    form_ = form;
    if (!bytes) return;
    lines_->setPlainText(form == Hexadecimal ? hexadecimalOf(*bytes)
                                             : QString::fromStdString(Tool::dataText(*bytes)));
}

void DataField::showSize() {
    try {
        size_->setText(tr("%1 B").arg(bytesOf(typedValue()).size()));
    } catch (const Tool::Failure&) {
        size_->clear();
    }
}

}  // namespace QRVWindow

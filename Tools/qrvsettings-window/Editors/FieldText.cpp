// SPDX-License-Identifier: MIT
#include "Editors/FieldText.h"

#include <QStringList>
#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

#include "Edits/EditedText.h"
#include "Look/Swatch.h"
#include "Reporting/Failure.h"
#include "Reporting/PrintableText.h"
#include "Text/ColorText.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/ValueText.h"

namespace QRVWindow {
namespace {

using Kind = PropertyListValue::Kind;

constexpr std::size_t componentCount = 4;

/// What a text document makes a line end of, or takes for its own marks.
bool isOfTextDocument(QChar character) {
    return character == QChar::ParagraphSeparator || character == QChar::LineSeparator ||
           character == QChar(0xfdd0) || character == QChar(0xfdd1) ||
           character == QChar::ObjectReplacementCharacter;
}

std::string kept(FieldLines lines) {
    return lines == FieldLines::One ? "" : "\n\t";
}

std::array<int, componentCount> bytesOf(const NSColor& color) {
    const QColor shown = qColorOf(color);
    return {shown.red(), shown.green(), shown.blue(), shown.alpha()};
}

PropertyListValue successor(const PropertyListValue& value) {
    if (value.isBeyondSigned() || value.integerValue() == std::numeric_limits<std::int64_t>::max())
        return value.unsignedValue() == std::numeric_limits<std::uint64_t>::max()
                   ? value
                   : PropertyListValue(value.unsignedValue() + 1);
    return value.integerValue() + 1;
}

PropertyListValue predecessor(const PropertyListValue& value) {
    if (value.isBeyondSigned()) {
        const std::uint64_t less = value.unsignedValue() - 1;
        if (less > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return less;
        return static_cast<std::int64_t>(less);
    }
    if (value.integerValue() == std::numeric_limits<std::int64_t>::min()) return value;
    return value.integerValue() - 1;
}

}  // namespace

bool isTypedAsJSON(const PropertyListValue& value, FieldLines lines) {
    if (!value.isString()) return false;
    const std::string_view text = value.stringView();
    const QString shown = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    return Tool::printable(text, kept(lines)) != text ||
           std::any_of(shown.begin(), shown.end(), isOfTextDocument);
}

QString fieldText(const PropertyListValue& value, FieldLines lines) {
    if (isTypedAsJSON(value, lines)) return QString::fromStdString(Tool::jsonText(value));
    const bool isContainer = value.isArray() || value.isDictionary();
    return QString::fromStdString(
        isContainer && lines == FieldLines::One ? Tool::jsonText(value) : Tool::editedText(value));
}

PropertyListValue valueOfFieldText(const QString& text, Kind kind, bool isTypedAsJSON) {
    if (!isTypedAsJSON) return Tool::valueFromEditedText(text.toStdString(), kind, nullptr);
    PropertyListValue value = Tool::valueFromEditedText(text.toStdString(), Kind::Null, nullptr);
    if (!value.isString() || !text.trimmed().startsWith(QLatin1Char('"')))
        throw Tool::Failure(Tool::Fault::WrongValue,
                            "not a text between quotation marks, as JSON writes it");
    return value;
}

std::optional<NSColor> colorOfText(const QString& text) {
    std::vector<std::string> words;
    for (const QString& word : text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts))
        words.push_back(word.toStdString());
    try {
        return Tool::colorFromTexts(words);
    } catch (const Tool::Failure&) {
        return std::nullopt;
    }
}

QString colorTextAfterChoice(const QString& text, const NSColor& chosen) {
    QStringList words = QString::fromStdString(Tool::colorText(chosen)).split(QLatin1Char(' '));
    const std::optional<NSColor> before = colorOfText(text);
    if (!before) return words.join(QLatin1Char(' '));
    QStringList wordsBefore = text.simplified().split(QLatin1Char(' '));
    if (wordsBefore.size() == 1)
        wordsBefore = QString::fromStdString(Tool::colorText(*before)).split(QLatin1Char(' '));
    if (static_cast<std::size_t>(wordsBefore.size()) < componentCount)
        wordsBefore.append(QStringLiteral("1"));
    const auto bytesBefore = bytesOf(*before);
    const auto bytes = bytesOf(chosen);
    for (std::size_t index = 0; index < componentCount; ++index)
        if (bytes.at(index) == bytesBefore.at(index))
            words[static_cast<qsizetype>(index)] = wordsBefore[static_cast<qsizetype>(index)];
    return words.join(QLatin1Char(' '));
}

PropertyListValue steppedInteger(const PropertyListValue& value, int steps,
                                 const PropertyListValue& minimum,
                                 const PropertyListValue& maximum) {
    PropertyListValue stepped = value;
    for (int count = 0; count < steps; ++count) {
        if (!maximum.isNull() && stepped.doubleValue() >= maximum.doubleValue()) break;
        stepped = successor(stepped);
    }
    for (int count = 0; count > steps; --count) {
        if (!minimum.isNull() && stepped.doubleValue() <= minimum.doubleValue()) break;
        stepped = predecessor(stepped);
    }
    return stepped;
}

}  // namespace QRVWindow

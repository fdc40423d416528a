// SPDX-License-Identifier: MIT
#pragma once

// Values as the text of a field, and back.

#include <QString>
#include <optional>
#include <string>

#include "Platform/Values/NSColor.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVWindow {

/// A field of one line, or of several. A string with characters that the field cannot show and keep
/// is typed as JSON: `"a\tb"`.
enum class FieldLines { One, Several };

/// Whether a string is typed as JSON.
bool isTypedAsJSON(const PropertyListValue& value, FieldLines lines);
/// What a field shows at first; empty for null.
QString fieldText(const PropertyListValue& value, FieldLines lines);
/// Throws Tool::Failure.
PropertyListValue valueOfFieldText(const QString& text, PropertyListValue::Kind kind,
                                   bool isTypedAsJSON);

/// Empty for text that is no colour.
std::optional<NSColor> colorOfText(const QString& text);
/// The text with what a person has chosen instead: components that look the same on a screen keep
/// their digits.
QString colorTextAfterChoice(const QString& text, const NSColor& chosen);

/// The integer some steps up or down; it stays between the limits, which are numbers or null, and
/// in the range of integers.
PropertyListValue steppedInteger(const PropertyListValue& value, int steps,
                                 const PropertyListValue& minimum,
                                 const PropertyListValue& maximum);

}  // namespace QRVWindow

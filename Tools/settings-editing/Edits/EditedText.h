// SPDX-License-Identifier: MIT
#pragma once

// A value as the text of an editor, and back.

#include <string>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// The text that an editor of the value begins with: containers as JSON, with a line for each entry
/// when they are long, everything else bare (`bareText`). Empty for null.
std::string editedText(const PropertyListValue& value);

/// The value that the text of an editor means.
///
/// An untouched text, `editedText(original)`, gives `original` itself, whatever `kind` is: nobody
/// changes a value by looking at it. An editor in which a person has chosen another kind passes
/// null as `original`.
///
/// Any other text is read as this kind:
///
///   - `Boolean`: true or false.
///   - `Integer`: decimal digits, exact from -2^63 to 2^64-1.
///   - `Real`: a decimal number, nan, inf or -inf.
///   - `String`: all of it as it stands. `Color` is a string too: three or four numbers, which keep
///     the digits they are written with, or `#rrggbb[aa]`.
///   - `Date`: YYYY-MM-DDTHH:MM:SSZ, with or without a fraction. `Data`: base64.
///   - `Array`, `Dictionary`: JSON, as `valueFromJSON` reads it.
///   - `Null`: the text decides, as for `qrvsettings set`.
///
/// Blanks around anything but a string are skipped. Throws Failure (WrongValue), whose line says
/// what is wrong and at which line and column or character; that of JSON is a JSONFault.
PropertyListValue valueFromEditedText(const std::string& text, PropertyListValue::Kind kind,
                                      const PropertyListValue& original);

}  // namespace Tool

// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// The types that a text can be read as.
const std::vector<std::string>& valueTypes();

/// The value that a text means. Throws Failure (WrongValue).
///
/// `type` is one of `valueTypes`. When it is empty, the
/// text decides: `true` and `false` are booleans, a decimal integer is an integer, a decimal number
/// with a point or an exponent is a real, what begins with `{`, `[` or `"` is JSON, and anything
/// else a string. A number that is out of range is refused.
PropertyListValue valueFromText(const std::string& text, const std::string& type);

/// The value as a person would write it: a container as JSON, everything else bare.
std::string bareText(const PropertyListValue& value);

/// The value, or what JSON writes as null where there is none. An empty text counts as none.
PropertyListValue orNullMarker(const PropertyListValue& value);
PropertyListValue orNullMarker(const std::string& text);

/// The kind with its article: "an integer".
std::string kindName(const PropertyListValue& value);

/// The same without it: "integer".
std::string kindWord(const PropertyListValue& value);

}  // namespace Tool

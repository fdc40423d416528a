// SPDX-License-Identifier: MIT
#pragma once

/// Property-list values as JSON text that keeps their kinds.
///
/// A number with a point or an exponent is a real, one without is an integer. What JSON has no form
/// for is an object of one entry: `{"$date":"2020-01-01T00:00:00Z"}`, `{"$data":"AQI="}` (base64),
/// `{"$real":"nan"}` (also `inf`, `-inf`). A date outside the years 0000 to 9999 is
/// `{"$date":seconds}`, a real: seconds since 2001-01-01T00:00:00Z. A dictionary that has such a
/// form itself stands in `{"$dictionary":{...}}`.

#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// One line of UTF-8, keys sorted by their bytes. `value` is one that a property list holds;
/// in other strings, U+FFFD stands for what is not UTF-8.
std::string jsonText(const PropertyListValue& value);

/// The same on several lines, for people who edit it.
std::string indentedJSON(const PropertyListValue& value);

/// The same as one line in `{"$dictionary":{...}}`, also where the dictionary looks like nothing
/// else.
std::string markedDictionary(const NSDictionary& dictionary);

/// The value, of immutable containers. Throws JSONFault, which names the place, for text that is
/// not JSON in UTF-8, a byte order mark, null, a number out of range, a key that one object holds
/// twice, one of the forms above with contents that it does not know, and more than 512 levels.
PropertyListValue valueFromJSON(std::string_view text);

struct JSONDocument {
    PropertyListValue value;
    bool isMarkedDictionary;  ///< the text is `{"$dictionary":{...}}`
};
/// Throws as `valueFromJSON` does.
JSONDocument documentFromJSON(std::string_view text);

}  // namespace Tool

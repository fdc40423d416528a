// SPDX-License-Identifier: MIT
#include "Text/FileForm.h"

#include <cmath>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Reporting/Failure.h"

namespace Tool {
namespace {

double secondsOf(const PropertyListValue& date) {
    return date.date().timeIntervalSinceReferenceDate();
}

bool areKeptAs(const NSArray& given, const NSArray& kept) {
    if (given.count() != kept.count()) return false;
    for (std::size_t index = 0; index < given.count(); ++index)
        if (!isKeptAs(given.objectAtIndex(index), kept.objectAtIndex(index))) return false;
    return true;
}

bool areKeptAs(const NSDictionary& given, const NSDictionary& kept) {
    if (given.count() != kept.count()) return false;
    for (const auto& [key, value] : given)
        if (!isKeptAs(value, kept.objectForKey(key))) return false;
    return true;
}

/// NaN counts as the same as NaN.
bool isSameReal(double one, double other) {
    return one == other || (std::isnan(one) && std::isnan(other));
}

}  // namespace

void requireUTF8(const std::string& text) {
    const auto written = NSPropertyListSerialization::dataWithPropertyList(text);
    if (written.error)
        throw Failure(Fault::WrongValue, written.error->message + ": " + shortened(text));
}

void requireStorable(const PropertyListValue& value) {
    const auto written = NSPropertyListSerialization::dataWithPropertyList(value);
    if (written.error) throw Failure(Fault::WrongValue, written.error->description());
}

bool hasFractionsOfSeconds(const PropertyListValue& value) {
    if (value.isDate()) return secondsOf(value) != std::floor(secondsOf(value));
    if (value.isArray()) {
        for (const PropertyListValue& element : value.array())
            if (hasFractionsOfSeconds(element)) return true;
    }
    if (value.isDictionary()) {
        for (const auto& [key, entry] : value.dictionary())
            if (hasFractionsOfSeconds(entry)) return true;
    }
    return false;
}

bool isKeptAs(const PropertyListValue& given, const PropertyListValue& kept) {
    if (given.kind() != kept.kind()) return false;
    if (given.isDate()) return std::abs(secondsOf(given) - secondsOf(kept)) < 1;
    if (given.isReal()) return isSameReal(given.doubleValue(), kept.doubleValue());
    if (given.isArray()) return areKeptAs(given.array(), kept.array());
    if (given.isDictionary()) return areKeptAs(given.dictionary(), kept.dictionary());
    return given == kept;
}

}  // namespace Tool

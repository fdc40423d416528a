// SPDX-License-Identifier: MIT
#include "Text/FileForm.h"

#include <cmath>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "Reporting/Failure.h"

namespace Tool {
namespace {

double secondsOf(const PropertyListValue& date) {
    return date.date().timeIntervalSinceReferenceDate();
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

void requireStorable(const PropertyListValue& value, const std::string& keyPath) {
    const NSMutableDictionary tree;
    NSDictionaryQRV::setObjectAtKeyPath(tree, value, keyPath);
    requireStorable(tree);
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

PropertyListValue asInFile(const PropertyListValue& value) {
    if (!hasFractionsOfSeconds(value)) return value;
    const auto written = NSPropertyListSerialization::dataWithPropertyList(value);
    if (written.error) return value;
    return NSPropertyListSerialization::propertyListWithData(written.bytes).value;
}

}  // namespace Tool

// SPDX-License-Identifier: MIT
#include "Text/SettingsText.h"

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Reporting/Failure.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

PropertyListValue jsonOrFault(const std::string& bytes, const PropertyListError& fault) {
    try {
        return valueFromJSON(bytes);
    } catch (const Failure& failure) {
        throw Failure(failure.fault(),
                      "not a property list: " + fault.description() + "; " + failure.what());
    }
}

PropertyListValue valueFromBytes(const std::string& bytes) {
    const auto read = NSPropertyListSerialization::propertyListWithData(bytes);
    if (!read.error) return read.value;
    // What is neither binary nor XML looks like old-style text.
    if (read.format == PropertyListFormat::OldStyle) return jsonOrFault(bytes, *read.error);
    throw Failure(Fault::WrongValue, read.error->description());
}

}  // namespace

NSDictionary settingsFromText(const std::string& bytes) {
    // A settings file without contents is valid: nothing is set there.
    if (bytes.find_first_not_of(" \t\r\n") == bytes.npos) throw Failure(Fault::WrongValue, "empty");
    const PropertyListValue root = valueFromBytes(bytes);
    if (!root.isDictionary())
        throw Failure(Fault::WrongValue, "the root is " + kindName(root) + ", not a dictionary");
    requireStorable(root);
    return root.dictionary();
}

}  // namespace Tool

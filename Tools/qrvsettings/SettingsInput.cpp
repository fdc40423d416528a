// SPDX-License-Identifier: MIT
#include "SettingsInput.h"

#include "Failure.h"
#include "Input.h"
#include "JSON.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "ValueText.h"

namespace Tool {
namespace {

PropertyListValue jsonOrFault(const std::string& bytes, const PropertyListError& fault) {
    try {
        return valueFromJSON(bytes);
    } catch (const Failure& failure) {
        throw Failure(failure.code(),
                      "not a property list: " + fault.description() + "; " + failure.what());
    }
}

PropertyListValue valueFromBytes(const std::string& bytes) {
    const auto read = NSPropertyListSerialization::propertyListWithData(bytes);
    if (!read.error) return read.value;
    // What is neither binary nor XML looks like old-style text.
    if (read.format == PropertyListFormat::OldStyle) return jsonOrFault(bytes, *read.error);
    throw Failure(ExitCode::WrongValue, read.error->description());
}

NSDictionary settingsFromBytes(const std::string& bytes) {
    // Read as a settings file, it would be one in which nothing is set.
    if (bytes.find_first_not_of(" \t\r\n") == bytes.npos)
        throw Failure(ExitCode::WrongValue, "empty");
    const PropertyListValue root = valueFromBytes(bytes);
    if (!root.isDictionary())
        throw Failure(ExitCode::WrongValue, "the root is " + kindName(root) + ", not a dictionary");
    requireStorable(root);
    return root.dictionary();
}

}  // namespace

NSDictionary settingsOfInput(const std::string& file, const std::string& participle) {
    const std::string bytes = contentsOfInput(file);
    try {
        return settingsFromBytes(bytes);
    } catch (const Failure& failure) {
        throw Failure(failure.code(),
                      "cannot be " + participle + ": " + failure.what() + ", " + nameOfInput(file));
    }
}

}  // namespace Tool

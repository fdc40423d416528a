// SPDX-License-Identifier: MIT
#include "Text/SettingsText.h"

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Reporting/Failure.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"
#include "Text/KeyPathTree.h"
#include "Text/ValueText.h"

namespace Tool {
namespace {

struct Root {
    enum class Keys { AreKeys, AreKeyPaths, OfAPropertyList };
    PropertyListValue value;
    Keys keys;
};

Root rootFromJSON(const std::string& bytes) {
    const JSONDocument document = documentFromJSON(bytes);
    return {document.value,
            document.isMarkedDictionary ? Root::Keys::AreKeys : Root::Keys::AreKeyPaths};
}

/// Old-style text can begin with a brace too, but what begins so and is neither is meant as JSON.
bool looksLikeJSON(const std::string& bytes) {
    const std::size_t start =
        bytes.find_first_not_of(" \t\r\n\xEF\xBB\xBF\xFE\xFF" + std::string(1, '\0'));
    return start != bytes.npos && (bytes[start] == '{' || bytes[start] == '[');
}

Root rootFromBytes(const std::string& bytes) {
    const auto read = NSPropertyListSerialization::propertyListWithData(bytes);
    if (!read.error) return {read.value, Root::Keys::OfAPropertyList};
    // What is neither binary nor XML looks like old-style text.
    if (read.format != PropertyListFormat::OldStyle)
        throw Failure(Fault::WrongValue, read.error->description());
    if (looksLikeJSON(bytes)) return rootFromJSON(bytes);
    throw Failure(Fault::WrongValue, "neither JSON nor a property list");
}

void requireNoDottedKey(const NSDictionary& tree, const std::string& advice) {
    if (const auto key = keyWithDot(tree))
        throw Failure(Fault::WrongValue,
                      "a key holds a dot, so that no key path reaches it: " + *key + advice);
}

}  // namespace

NSDictionary settingsFromText(const std::string& bytes, DottedKeys dottedKeys,
                              const std::string& advice) {
    // A settings file without contents is valid: nothing is set there.
    if (bytes.find_first_not_of(" \t\r\n") == bytes.npos) throw Failure(Fault::WrongValue, "empty");
    const auto [root, keys] = rootFromBytes(bytes);
    if (!root.isDictionary())
        throw Failure(Fault::WrongValue, "the root is " + kindName(root) + ", not a dictionary");
    NSDictionary tree = root.dictionary();
    if (dottedKeys == DottedKeys::Refused) {
        if (keys == Root::Keys::OfAPropertyList) requireNoDottedKey(tree, advice);
        if (keys == Root::Keys::AreKeyPaths && keyWithDot(tree)) tree = treeOfKeyPaths(tree);
    }
    requireStorable(tree);
    return tree;
}

std::string jsonOfSettings(const NSDictionary& tree) {
    return keyWithDot(tree) ? markedDictionary(tree) : jsonText(tree);
}

std::string fileOfSettings(const NSDictionary& tree, SettingsForm form) {
    if (form == SettingsForm::JSON) return jsonOfSettings(tree) + "\n";
    const auto written = NSPropertyListSerialization::dataWithPropertyList(tree);
    if (written.error) throw Failure(Fault::WrongValue, written.error->description());
    return written.bytes;
}

}  // namespace Tool

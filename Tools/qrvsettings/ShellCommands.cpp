// SPDX-License-Identifier: MIT
#include "ShellCommands.h"

#include "Failure.h"
#include "JSON.h"
#include "KeyPaths.h"
#include "QRVSettings/NSDictionary+QRV.h"

namespace Tool {
namespace {

std::string start(const char* operation, const std::string& profile) {
    const std::string option = profile.empty() ? "" : "--profile=" + shellWord(profile) + " ";
    return std::string("qrvsettings ") + operation + " " + option + "-- ";
}

using NSDictionaryQRV::objectAtKeyPath;

/// A key that holds a "." is a part of trees, and of no key path.
bool isReached(const SettingChange& change, const NSDictionary& oldTree,
               const NSDictionary& newTree) {
    return (change.oldValue.isNull() || !objectAtKeyPath(oldTree, change.keyPath).isNull()) &&
           (change.newValue.isNull() || !objectAtKeyPath(newTree, change.keyPath).isNull());
}

}  // namespace

std::string shellWord(std::string_view text) {
    std::string word = "'";
    for (const char character : text)
        word += character == '\'' ? std::string(R"('\'')") : std::string(1, character);
    return word + "'";
}

// As JSON, so that no value needs to have its kind named.
std::string shellCommand(const std::string& keyPath, const NSDictionary& tree,
                         const std::string& profile) {
    if (keyPath.find('\0') != keyPath.npos) {
        remark("no argument of a command can hold this key path, " + keyPath);
        return {};
    }
    const PropertyListValue value = objectAtKeyPath(tree, keyPath);
    if (value.isNull()) return start("unset", profile) + shellWord(keyPath) + "\n";
    return start("set", profile) + shellWord(keyPath) + " " + shellWord(jsonText(value)) + "\n";
}

std::string shellCommands(const std::vector<SettingChange>& changes, const NSDictionary& oldTree,
                          const NSDictionary& newTree, const std::string& profile) {
    std::string lines;
    for (const SettingChange& change : changes) {
        // What has taken the place of a dictionary removes what was in it.
        const bool isGone = change.newValue.isNull() && leafAbove(newTree, change.keyPath);
        if (!isReached(change, oldTree, newTree))
            remark("no key path reaches this key, " + change.keyPath);
        else if (!isGone)
            lines += shellCommand(change.keyPath, newTree, profile);
    }
    return lines;
}

}  // namespace Tool

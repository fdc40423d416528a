// SPDX-License-Identifier: MIT
#include "Text/ShellCommands.h"

#include "QRVSettings/NSDictionary+QRV.h"
#include "Reporting/Notices.h"
#include "Text/Differences.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

std::string start(const char* operation, const std::string& profile) {
    const std::string option = profile.empty() ? "" : "--profile=" + shellWord(profile) + " ";
    return std::string("qrvsettings ") + operation + " " + option + "-- ";
}

using NSDictionaryQRV::objectAtKeyPath;

}  // namespace

std::string shellWord(std::string_view text) {
    std::string word = "'";
    for (const char character : text)
        word += character == '\'' ? std::string(R"('\'')") : std::string(1, character);
    return word + "'";
}

// As JSON, so that the value needs no --type.
std::string shellCommand(const std::string& keyPath, const NSDictionary& tree,
                         const std::string& profile) {
    if (keyPath.find('\0') != keyPath.npos) {
        notice("no argument of a command can hold this key path, " + keyPath);
        return {};
    }
    const PropertyListValue value = objectAtKeyPath(tree, keyPath);
    if (value.isNull()) return start("unset", profile) + shellWord(keyPath) + "\n";
    return start("set", profile) + shellWord(keyPath) + " " + shellWord(jsonText(value)) + "\n";
}

std::string shellCommands(const std::vector<Difference>& differences, const NSDictionary& newTree,
                          const std::string& profile) {
    std::string lines;
    for (const Difference& difference : differences) {
        // A value that replaces a dictionary removes what was in it.
        const bool isGone = difference.newValue.isNull() && leafAbove(newTree, difference.keyPath);
        if (!difference.isReached)
            notice("no key path reaches this key, " + difference.keyPath);
        else if (!isGone)
            lines += shellCommand(difference.keyPath, newTree, profile);
    }
    return lines;
}

}  // namespace Tool

// SPDX-License-Identifier: MIT
#include "SettingLines.h"

#include <map>
#include <set>

#include "JSON.h"
#include "KeyPaths.h"

namespace Tool {

std::string settingLine(std::string_view keyPath, const PropertyListValue& value) {
    return keyPathText(keyPath) + "\t" + jsonText(value) + "\n";
}

std::string settingLines(const NSDictionary& valuesByKeyPath) {
    std::map<std::string, std::string> lines;
    for (const auto& [keyPath, value] : valuesByKeyPath)
        lines.emplace(keyPath, settingLine(keyPath, value));
    std::string text;
    for (const auto& [keyPath, line] : lines) text += line;
    return text;
}

std::string changeLines(const NSDictionary& oldByKeyPath, const NSDictionary& newByKeyPath) {
    std::set<std::string> keyPaths;
    for (const auto& [keyPath, value] : oldByKeyPath) keyPaths.emplace(keyPath);
    for (const auto& [keyPath, value] : newByKeyPath) keyPaths.emplace(keyPath);
    std::string text;
    for (const std::string& keyPath : keyPaths) {
        const std::string oldText = jsonText(oldByKeyPath.objectForKey(keyPath));
        const std::string newText = jsonText(newByKeyPath.objectForKey(keyPath));
        if (oldText == newText) continue;
        text.append(keyPathText(keyPath)).append("\t").append(oldText);
        text.append(" -> ").append(newText).append("\n");
    }
    return text;
}

}  // namespace Tool

// SPDX-License-Identifier: MIT
#include "SettingLines.h"

#include <map>
#include <set>
#include <utility>

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

NSArray keyPathsOf(const NSDictionary& valuesByKeyPath) {
    std::set<std::string> keyPaths;
    for (const auto& [keyPath, value] : valuesByKeyPath) keyPaths.emplace(keyPath);
    NSMutableArray array;
    for (const std::string& keyPath : keyPaths) array.addObject(keyPath);
    return array;
}

std::string keyPathLines(const NSDictionary& valuesByKeyPath) {
    std::string text;
    for (const PropertyListValue& keyPath : keyPathsOf(valuesByKeyPath))
        text.append(keyPathText(keyPath.stringView())).append("\n");
    return text;
}

std::vector<SettingChange> changesBetween(const NSDictionary& oldByKeyPath,
                                          const NSDictionary& newByKeyPath) {
    std::set<std::string> keyPaths;
    for (const auto& [keyPath, value] : oldByKeyPath) keyPaths.emplace(keyPath);
    for (const auto& [keyPath, value] : newByKeyPath) keyPaths.emplace(keyPath);
    std::vector<SettingChange> changes;
    for (const std::string& keyPath : keyPaths) {
        SettingChange change{keyPath, oldByKeyPath.objectForKey(keyPath),
                             newByKeyPath.objectForKey(keyPath)};
        if (jsonText(change.oldValue) != jsonText(change.newValue))
            changes.push_back(std::move(change));
    }
    return changes;
}

std::string changeLines(const std::vector<SettingChange>& changes) {
    std::string text;
    for (const auto& [keyPath, oldValue, newValue] : changes) {
        text.append(keyPathText(keyPath)).append("\t").append(jsonText(oldValue));
        text.append(" -> ").append(jsonText(newValue)).append("\n");
    }
    return text;
}

std::string changeObjects(const std::vector<SettingChange>& changes) {
    std::string text;
    for (const auto& [keyPath, oldValue, newValue] : changes) {
        text.append(R"({"keyPath":)").append(jsonText(keyPath));
        text.append(R"(,"before":)").append(jsonText(oldValue));
        text.append(R"(,"after":)").append(jsonText(newValue)).append("}\n");
    }
    return text;
}

}  // namespace Tool

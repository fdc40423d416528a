// SPDX-License-Identifier: MIT
#include "Text/SettingLines.h"

#include <map>
#include <set>
#include <utility>

#include "Text/JSON.h"
#include "Text/KeyPaths.h"

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

}  // namespace Tool

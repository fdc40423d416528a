// SPDX-License-Identifier: MIT
#include "Text/Differences.h"

#include <set>
#include <utility>

#include "Text/JSON.h"
#include "Text/KeyPaths.h"

namespace Tool {

std::vector<Difference> differencesBetween(const NSDictionary& oldByKeyPath,
                                           const NSDictionary& newByKeyPath) {
    std::set<std::string> keyPaths;
    for (const auto& [keyPath, value] : oldByKeyPath) keyPaths.emplace(keyPath);
    for (const auto& [keyPath, value] : newByKeyPath) keyPaths.emplace(keyPath);
    std::vector<Difference> differences;
    for (const std::string& keyPath : keyPaths) {
        Difference difference{keyPath, oldByKeyPath.objectForKey(keyPath),
                              newByKeyPath.objectForKey(keyPath)};
        if (jsonText(difference.oldValue) != jsonText(difference.newValue))
            differences.push_back(std::move(difference));
    }
    return differences;
}

std::string differenceLines(const std::vector<Difference>& differences) {
    std::string text;
    for (const auto& [keyPath, oldValue, newValue] : differences) {
        text.append(keyPathText(keyPath)).append("\t").append(jsonText(oldValue));
        text.append(" -> ").append(jsonText(newValue)).append("\n");
    }
    return text;
}

std::string differenceObjects(const std::vector<Difference>& differences) {
    std::string text;
    for (const auto& [keyPath, oldValue, newValue] : differences) {
        text.append(R"({"keyPath":)").append(jsonText(keyPath));
        text.append(R"(,"before":)").append(jsonText(oldValue));
        text.append(R"(,"after":)").append(jsonText(newValue)).append("}\n");
    }
    return text;
}

}  // namespace Tool

// SPDX-License-Identifier: MIT
#include "Settings/Changes.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "QRVSettings/NSDictionary+QRV.h"
#include "Text/FileForm.h"

namespace Tool {
namespace {

using KeyPaths = std::set<std::string, std::less<>>;

/// Calls `visit` with the key path and with each key path above it.
template <typename Visit>
void visitUpwards(std::string_view keyPath, Visit&& visit) {
    visit(keyPath);
    for (std::size_t end = keyPath.rfind('.'); end != keyPath.npos;
         end = end == 0 ? keyPath.npos : keyPath.rfind('.', end - 1))
        visit(keyPath.substr(0, end));
}

bool hasItOrOneAbove(const KeyPaths& keyPaths, std::string_view keyPath) {
    bool isFound = false;
    visitUpwards(keyPath, [&](std::string_view one) {
        isFound = isFound || keyPaths.find(one) != keyPaths.end();
    });
    return isFound;
}

/// All of them, and what is above them.
KeyPaths withThoseAbove(const KeyPaths& keyPaths) {
    KeyPaths all;
    for (const std::string& keyPath : keyPaths)
        visitUpwards(keyPath, [&all](std::string_view one) { all.emplace(one); });
    return all;
}

KeyPaths keyPathsOf(const std::vector<Difference>& differences) {
    KeyPaths keyPaths;
    for (const Difference& difference : differences) keyPaths.insert(difference.keyPath);
    return keyPaths;
}

/// The preparation makes empty levels, and a write that stores nothing removes them again.
bool isLevelOfThePreparation(const Difference& difference, const NSDictionary& inFile) {
    return difference.newValue.isNull() && difference.oldValue.isDictionary() &&
           difference.oldValue.dictionary().count() == 0 &&
           NSDictionaryQRV::objectAtKeyPath(inFile, difference.keyPath).isNull();
}

}  // namespace

Changes changesOfWrites(const WrittenTrees& trees, const std::set<std::string>& keyPaths) {
    const KeyPaths written(keyPaths.begin(), keyPaths.end());
    const NSDictionary after = asInFile(trees.written).dictionary();
    Changes changes{differencesBetween(trees.prepared, after), 0};
    std::erase_if(changes.changed, [&trees](const Difference& one) {
        return isLevelOfThePreparation(one, trees.inFile);
    });
    const KeyPaths known = keyPathsOf(changes.changed);
    const KeyPaths writtenAndAbove = withThoseAbove(written);
    for (const Difference& one : differencesBetween(trees.inFile, after))
        if (known.find(one.keyPath) == known.end() &&
            (writtenAndAbove.contains(one.keyPath) || hasItOrOneAbove(written, one.keyPath)))
            changes.changed.push_back(one);
    std::stable_sort(
        changes.changed.begin(), changes.changed.end(),
        [](const auto& one, const auto& other) { return one.keyPath < other.keyPath; });

    const KeyPaths changed = keyPathsOf(changes.changed);
    const KeyPaths changedAndAbove = withThoseAbove(changed);
    for (const std::string& keyPath : keyPaths)
        if (!changedAndAbove.contains(keyPath) && !hasItOrOneAbove(changed, keyPath))
            ++changes.unchanged;
    return changes;
}

Changes changesOfReplacement(const NSDictionary& before, const NSDictionary& after) {
    const NSDictionary inFile = asInFile(after).dictionary();
    Changes changes{differencesBetween(before, inFile), differencesBetween(nullptr, inFile).size()};
    for (const Difference& one : changes.changed)
        if (!one.newValue.isNull()) --changes.unchanged;
    return changes;
}

}  // namespace Tool

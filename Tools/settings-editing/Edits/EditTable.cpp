// SPDX-License-Identifier: MIT
#include "Edits/EditTable.h"

#include "QRVSettings/QRVKnownSettings.h"
#include "QRVSettings/StoreKeyPaths.h"
#include "Text/KeyPaths.h"

namespace Tool {

std::string SettingPlace::storedKeyPath() const {
    if (profile.empty()) return keyPath;
    return std::string(QRVStoreKeyPaths::profiles) + "." + profile + "." + keyPath;
}

SettingPlace placeOfStored(std::string_view storedKeyPath) {
    const std::string_view plain = QRVPlainKeyPath(storedKeyPath);
    if (plain.size() == storedKeyPath.size()) return {std::string(plain), ""};
    // "Profiles.Settings.NAME." stands before it.
    std::string_view profile = storedKeyPath.substr(QRVStoreKeyPaths::profiles.size() + 1);
    profile.remove_suffix(plain.size() + 1);
    return {std::string(plain), std::string(profile)};
}

const PendingEdit* EditTable::at(const std::string& storedKeyPath) const {
    const auto place = places_.find(storedKeyPath);
    return place == places_.end() ? nullptr : &edits_.at(place->second);
}

const PendingEdit* EditTable::above(std::string_view storedKeyPath) const {
    for (std::size_t end = storedKeyPath.find('.'); end != storedKeyPath.npos;
         end = storedKeyPath.find('.', end + 1)) {
        const auto place = places_.find(storedKeyPath.substr(0, end));
        if (place != places_.end()) return &edits_.at(place->second);
    }
    return nullptr;
}

std::vector<PendingEdit> EditTable::below(const std::string& storedKeyPath) const {
    const std::string start = storedKeyPath + ".";
    std::vector<PendingEdit> found;
    for (auto place = places_.lower_bound(start);
         place != places_.end() && place->first.starts_with(start); ++place)
        found.push_back(edits_.at(place->second));
    return found;
}

void EditTable::set(const PendingEdit& edit) {
    const std::string path = edit.place.storedKeyPath();
    erase(path);
    places_.emplace(path, edit.place);
    edits_.emplace(edit.place, edit);
}

void EditTable::erase(const std::string& storedKeyPath) {
    const auto place = places_.find(storedKeyPath);
    if (place == places_.end()) return;
    edits_.erase(place->second);
    places_.erase(place);
}

NSDictionary EditTable::appliedTo(const NSDictionary& stored) const {
    const PropertyListValue tree = levelWith(stored, places_.begin(), places_.end(), 0);
    return tree.isNull() ? NSDictionary() : tree.dictionary();
}

PropertyListValue EditTable::levelWith(const PropertyListValue& level, Places::const_iterator edit,
                                       Places::const_iterator end, std::size_t start) const {
    // A value that is in the way.
    if (!level.isNull() && !level.isDictionary()) return level;
    const NSMutableDictionary copy =
        level.isNull() ? NSMutableDictionary() : level.dictionary().mutableCopy();
    while (edit != end) {
        const std::string path = edit->first;
        const std::size_t point = path.find('.', start);
        const std::string key = path.substr(start, point - start);
        if (point == path.npos) {
            copy.setObjectForKey(edits_.at(edit->second).value, key);
            ++edit;
            continue;
        }
        const std::string_view through = std::string_view(path).substr(0, point + 1);
        const auto first = edit;
        while (edit != end && edit->first.starts_with(through)) ++edit;
        copy.setObjectForKey(levelWith(copy.objectForKey(key), first, edit, point + 1), key);
    }
    const bool wasEmpty = level.isDictionary() && level.dictionary().count() == 0;
    if (copy.count() == 0 && !wasEmpty) return nullptr;
    return copy.copy();
}

PropertyListValue treeWithValue(const PropertyListValue& tree, std::string_view keyPath,
                                const PropertyListValue& value) {
    if (value.isNull() && valueAt(tree, keyPath).isNull()) return tree;
    const std::size_t end = keyPath.find('.');
    const std::string_view key = keyPath.substr(0, end);
    const NSMutableDictionary level =
        tree.isDictionary() ? tree.dictionary().mutableCopy() : NSMutableDictionary();
    level.setObjectForKey(end == keyPath.npos ? value
                                              : treeWithValue(level.objectForKey(key),
                                                              keyPath.substr(end + 1), value),
                          key);
    if (value.isNull() && level.count() == 0) return nullptr;
    return level.copy();
}

}  // namespace Tool

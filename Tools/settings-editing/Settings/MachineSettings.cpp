// SPDX-License-Identifier: MIT
#include "Settings/MachineSettings.h"

#include <string>
#include <string_view>
#include <vector>

#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/StoreKeyPaths.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

std::vector<std::string> keyPathsOfMachine(const NSDictionary& tree) {
    std::vector<std::string> keyPaths;
    for (const std::string_view keyPath :
         {QRVStoreKeyPaths::device, QRVStoreKeyPaths::model, QRVStoreKeyPaths::currentAppearance,
          QRVStoreKeyPaths::primaryInterface, QRVStoreKeyPaths::fans})
        keyPaths.emplace_back(keyPath);
    const std::string profiles(QRVStoreKeyPaths::profiles);
    for (const auto& [profile, settings] : valueAt(tree, profiles).dictionary())
        if (profile.find('.') == profile.npos)
            keyPaths.push_back(profiles + "." + std::string(profile) + "." +
                               std::string(QRVStoreKeyPaths::profileSensors));
    return keyPaths;
}

/// A copy of the level, and of the levels on the way.
NSDictionary without(const NSDictionary& level, std::string_view keyPath) {
    const std::size_t end = keyPath.find('.');
    const std::string_view key = keyPath.substr(0, end);
    const NSMutableDictionary copy = level.mutableCopy();
    const NSDictionary below = end == keyPath.npos ? NSDictionary(nullptr)
                                                   : without(level.objectForKey(key).dictionary(),
                                                             keyPath.substr(end + 1));
    copy.setObjectForKey(below.count() == 0 ? PropertyListValue() : below, key);
    return copy.copy();
}

}  // namespace

NSDictionary withoutMachineSettings(const NSDictionary& tree) {
    NSDictionary rest = tree;
    for (const std::string& keyPath : keyPathsOfMachine(tree))
        if (!valueAt(tree, keyPath).isNull()) rest = without(rest, keyPath);
    return rest;
}

NSDictionary withMachineSettingsOf(const NSDictionary& machine, const NSDictionary& tree) {
    const NSMutableDictionary joined = withoutMachineSettings(tree).mutableCopy();
    for (const std::string& keyPath : keyPathsOfMachine(machine)) {
        const PropertyListValue value = valueAt(machine, keyPath);
        if (!value.isNull() && !leafAbove(joined, keyPath))
            NSDictionaryQRV::setObjectAtKeyPath(joined, value, keyPath);
    }
    return joined.copy();
}

}  // namespace Tool

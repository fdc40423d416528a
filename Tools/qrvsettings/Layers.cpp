// SPDX-License-Identifier: MIT
#include "Layers.h"

#include <utility>

#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "SettingsFile.h"
#include "StartUp.h"

namespace Tool {

Layer::Layer(std::string_view name, Scope scope)
    : name_(name == "stored"    ? Name::Stored
            : name == "default" ? Name::Default
                                : Name::Effective),
      scope_(std::move(scope)) {}

// The start-up changes the stored values in memory: a foreign machine's are reset. Of the settings
// file alone it has nothing to say.
void Layer::open() const {
    if (name_ != Name::Default) requireReadableSettingsFile();
    if (name_ != Name::Stored) startUp();
}

PropertyListValue Layer::value(QRVKeyPath keyPath) const {
    if (name_ == Name::Stored) return scope_.stored(keyPath);
    if (name_ == Name::Default) return QRVSettingsDefaultForKeyPath(keyPath);
    return scope_.effective(keyPath);
}

NSDictionary Layer::flattened() const {
    NSMutableDictionary leaves;
    if (name_ != Name::Stored)
        NSDictionaryQRV::flatten(QRVSettings::sharedSettings().defaults(), leaves);
    if (name_ != Name::Default) NSDictionaryQRV::flatten(scope_.storedTree(), leaves);
    return leaves;
}

// One layer may hold a leaf where another holds a dictionary, and a key with a "." looks like two:
// only a read tells what a key path means.
NSDictionary Layer::leaves() const {
    NSMutableDictionary leaves;
    for (const auto& [keyPath, candidate] : flattened()) {
        const PropertyListValue answer = value(keyPath);
        if (!answer.isDictionary()) leaves.setObjectForKey(answer, keyPath);
    }
    return leaves;
}

}  // namespace Tool

// SPDX-License-Identifier: MIT
#include "QRVSettings/QRVSettings+ChangeRecord.h"

#include <array>

#include "Platform/Values/ImmutableContainers.h"

namespace QRVInside {

// The keys are never destroyed: the store's queue may make records while the process exits.
NSDictionary ChangeRecord::dictionary() const {
    static const auto& keyOfKeyPath = *new PropertyListValue("key");
    static const auto& keyOfTime = *new PropertyListValue("time");
    std::array<QRVPlatform::KeyedValue, 2> entries{{{keyOfKeyPath, keyPath}, {keyOfTime, time}}};
    return QRVPlatform::immutableDictionary(entries);
}

}  // namespace QRVInside

// SPDX-License-Identifier: MIT
#include "QRVSettings/QRVSettings+ChangeRecord.h"

#include <array>
#include <utility>

#include "Platform/Values/ImmutableContainers.h"

namespace QRVInside {

// The keys are never destroyed: the store's queue may make records while the process exits.
NSDictionary ChangeRecord::dictionary() && {
    static const auto& keyOfKeyPath = *new PropertyListValue("key");
    static const auto& keyOfTime = *new PropertyListValue("time");
    std::array<QRVPlatform::KeyedValue, 2> entries{
        {{keyOfKeyPath, std::move(keyPath)}, {keyOfTime, time}}};
    return QRVPlatform::immutableDictionary(entries);
}

NSDictionary ChangeRecord::dictionary() const& {
    return ChangeRecord(*this).dictionary();
}

}  // namespace QRVInside

// SPDX-License-Identifier: MIT
#include "QRVSettings/QRVSettings+LocalChanges.h"

#include <string>

#include "Platform/Dispatch/Dispatch.h"

namespace QRVInside {

void LocalChanges::add(const NSArray& log) const {
    records_.addObjectsFromArray(log);
    DispatchMainQueue::shared().asyncAfter(lifetime,
                                           [changes = *this, log] { changes.expire(log); });
}

void LocalChanges::expire(const NSArray& log) const {
    records_.setArray(recordsWithout(records_.copy(), log));
}

NSArray LocalChanges::withoutLocal(const NSArray& keyPaths) const {
    std::unordered_set<std::string> local;
    for (const PropertyListValue& record : records_) {
        const PropertyListValue key = record.dictionary().objectForKey("key");
        if (key.isString()) local.insert(key.stringValue());
    }
    const NSMutableArray others;
    for (const PropertyListValue& keyPath : keyPaths)
        if (!local.contains(keyPath.stringValue())) others.addObject(keyPath);
    return others.copy();
}

}  // namespace QRVInside

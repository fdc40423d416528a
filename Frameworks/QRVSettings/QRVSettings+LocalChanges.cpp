// SPDX-License-Identifier: MIT
#include "QRVSettings/QRVSettings+LocalChanges.h"

#include <string>

#include "Platform/Dispatch/Dispatch.h"

namespace QRVInside {

void LocalChanges::add(const NSArray& log) {
    records_.addObjectsFromArray(log);
    expiring_.push_back({Clock::now() + lifetime, log});
    DispatchMainQueue::shared().asyncAfter(lifetime, [this] { expireDueLogs(); });
}

// All that are due, because many saves in a row are due in one drain: a pass for each of them would
// take time with the square of their number.
void LocalChanges::expireDueLogs() {
    const NSMutableArray due;
    for (const auto now = Clock::now(); !expiring_.empty() && expiring_.front().time <= now;
         expiring_.pop_front())
        due.addObjectsFromArray(expiring_.front().log);
    expiring_.shrink_to_fit();  // a host may have drained late, and many at once
    if (due.count() != 0) expire(due);
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

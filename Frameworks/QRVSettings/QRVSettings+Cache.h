// SPDX-License-Identifier: MIT
#pragma once

// The cache, as the host's thread uses it: it alone replaces and changes the cache, and so it reads
// without a lock.

#include <utility>

#include "Platform/Values/DictionaryDescent.h"
#include "Platform/Values/HashedKey.h"
#include "QRVSettings/QRVSettings+State.h"

namespace QRVInside {

/// The entry in place; null when there is none, or no cache. Valid until the cache changes.
[[gnu::always_inline]] inline const PropertyListValue* cachedValue(
    const StoreInside::State& state, const QRVPlatform::HashedKey& key) {
    const NSMutableDictionary& cache = state.cache.ofItsWriter();
    return cache.isNull() ? nullptr : QRVPlatform::WritersDescent(cache).find(key);
}

/// What a read gives for an entry.
inline PropertyListValue valueOfEntry(const PropertyListValue& entry) {
    return entry.isNullMarker() ? PropertyListValue() : entry;
}

/// Null is cached as the null marker.
inline void cacheValue(const StoreInside::State& state, PropertyListValue value,
                       const QRVPlatform::HashedKey& key) {
    if (value.isNull()) value = NSNull{};
    QRVPlatform::setObjectForHashedKey(state.cache.ofItsWriter(), std::move(value), key);
}

/// Caches what a write has passed; null removes the entry. The key as a string, which is that of
/// the entry, if there is one.
inline PropertyListValue cacheWritten(const StoreInside::State& state, PropertyListValue value,
                                      const QRVPlatform::HashedKey& key) {
    const NSMutableDictionary& cache = state.cache.ofItsWriter();
    if (cache.isNull()) return key.text();
    return QRVPlatform::WritersEdit(cache).setAndShareKey(std::move(value), key);
}

}  // namespace QRVInside

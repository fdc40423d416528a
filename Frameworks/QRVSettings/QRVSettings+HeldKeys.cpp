// SPDX-License-Identifier: MIT
// Reads that go to an entry of the cache without looking for it.

#include <string>

#include "Platform/Values/ContainerObjects.h"
#include "QRVSettings/QRVHeldKeys.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+State.h"

using namespace QRVPlatform::ValueObjects;

namespace QRVInside {

namespace {

// Of the host's thread; null while there is no cache.
const DictionaryContents* contentsOfTheCache(const StoreInside::State& state) {
    const Object* const cache = Access::objectOf(state.cache.ofItsWriter());
    return cache == nullptr ? nullptr : &contentsForTheWriter(cache);
}

}  // namespace

const PropertyListValue* HeldEntry::value() const {
    requireHostThread();
    const StoreInside::State& state = StoreInside::state();
    if (state.locks != nullptr) return nullptr;
    if (scope_ == Scope::Profile && profile_ != state.numberOfActiveProfile) return nullptr;
    const DictionaryContents* const cache = contentsOfTheCache(state);
    if (cache == nullptr || index_ >= cache->count()) return nullptr;
    const DictionaryContents::Entry& entry = cache->entries()[index_];
    if (entry.key.get() != key_.get() || entry.value.isNullMarker()) return nullptr;
    return &entry.value;
}

void HeldEntry::find(QRVKeyPath keyPath) {
    const StoreInside::State& state = StoreInside::state();
    const DictionaryContents* const cache = contentsOfTheCache(state);
    if (cache == nullptr) return;
    const std::string text = scope_ == Scope::Profile ? QRVSettingsProfileKeyForKey(keyPath)
                                                      : std::string(keyPath.text());
    const std::size_t index = cache->indexOf(text, hashOf(text));
    if (index == DictionaryContents::notFound) return;
    index_ = static_cast<std::uint32_t>(index);
    StringObject* const key = cache->entries()[index].key.get();
    retain(key);
    key_ = ObjectReference(key);
    profile_ = state.numberOfActiveProfile;
}

}  // namespace QRVInside

// SPDX-License-Identifier: MIT
#include "Platform/Values/ImmutableContainers.h"

#include <algorithm>
#include <utility>

#include "Platform/Values/ContainerObjects.h"

namespace QRVPlatform {

using ValueObjects::Access;
using ValueObjects::ArrayContents;
using ValueObjects::CurrentContents;
using ValueObjects::DictionaryContents;
using ValueObjects::DictionaryObject;
using ValueObjects::Reference;
using ValueObjects::StringObject;
using ValueObjects::ValuePages;

NSArray immutableArray(std::span<PropertyListValue> elements, ValuePages* pages) {
    if (elements.empty()) return {};
    Reference<ArrayContents> contents = ArrayContents::make(elements.size(), pages);
    for (PropertyListValue& element : elements) contents->append(std::move(element));
    return Access::handleOwning<NSArray>(contents.leak());
}

NSDictionary immutableDictionary(std::span<KeyedValue> entries, ValuePages* pages) {
    if (entries.empty()) return {};
    Reference<DictionaryContents> contents = DictionaryContents::make(entries.size(), pages);
    for (KeyedValue& entry : entries) {
        contents->set(Reference<StringObject>(static_cast<StringObject*>(Access::leak(entry.key))),
                      std::move(entry.value));
    }
    return Access::handleOwning<NSDictionary>(contents.leak());
}

NSDictionary immutableDictionary(const NSDictionary& original, std::span<const EntryPlace> places,
                                 std::span<KeyedValue> entries) {
    const CurrentContents<DictionaryObject> old(original);
    const auto kept = static_cast<std::size_t>(std::ranges::count_if(
        places, [](EntryPlace place) { return place != EntryPlace::Dropped; }));
    if (kept + entries.size() == 0) return {};
    Reference<DictionaryContents> contents = DictionaryContents::make(kept + entries.size());
    const auto appendThose = [&](EntryPlace wanted) {
        for (std::size_t index = 0; index < places.size(); ++index) {
            const DictionaryContents::Entry& entry = old->entries()[index];
            if (places[index] == wanted) contents->append(entry.key, entry.value);
        }
    };
    appendThose(EntryPlace::Before);
    for (KeyedValue& entry : entries) {
        Reference<StringObject> key(static_cast<StringObject*>(Access::leak(entry.key)));
        contents->append(std::move(key), std::move(entry.value));
    }
    appendThose(EntryPlace::After);
    return Access::handleOwning<NSDictionary>(contents.leak());
}

}  // namespace QRVPlatform

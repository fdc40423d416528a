// SPDX-License-Identifier: MIT
#include "Platform/Values/ImmutableContainers.h"

#include <utility>

#include "Platform/Values/ContainerObjects.h"

namespace QRVPlatform {

using ValueObjects::Access;
using ValueObjects::ArrayContents;
using ValueObjects::DictionaryContents;
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

}  // namespace QRVPlatform

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

NSArray immutableArray(std::span<PropertyListValue> elements) {
    if (elements.empty()) return {};
    Reference<ArrayContents> contents = ArrayContents::make(elements.size());
    for (PropertyListValue& element : elements) contents->append(std::move(element));
    return Access::handleOwning<NSArray>(contents.leak());
}

NSDictionary immutableDictionary(std::span<KeyedValue> entries) {
    if (entries.empty()) return {};
    Reference<DictionaryContents> contents = DictionaryContents::make(entries.size());
    for (KeyedValue& entry : entries) {
        contents->set(Reference<StringObject>(static_cast<StringObject*>(Access::leak(entry.key))),
                      std::move(entry.value));
    }
    return Access::handleOwning<NSDictionary>(contents.leak());
}

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#include "Platform/Values/Building.h"

#include <utility>

#include "Platform/Values/ContainerObjects.h"

namespace QRVPlatform::ValueObjects {

// Containers count atomically all the same: the empty ones are known to all threads.
PropertyListValue Building::sameObject(const PropertyListValue& value) noexcept {
    if (value.kind_ >= Kind::Array) return value;
    PropertyListValue same;
    same.kind_ = value.kind_;
    same.isBeyondSigned_ = value.isBeyondSigned_;
    same.payload_ = value.payload_;
    if (value.kind_ >= Kind::String) {
        std::atomic<std::uint32_t>& references = value.payload_.object->references;
        references.store(references.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
    return same;
}

void Building::giveUp(PropertyListValue& value) noexcept {
    if (value.kind_ >= Kind::String && value.kind_ < Kind::Array) {
        std::atomic<std::uint32_t>& references = value.payload_.object->references;
        const std::uint32_t others = references.load(std::memory_order_relaxed) - 1;
        if (others != 0) {
            references.store(others, std::memory_order_relaxed);
            value.kind_ = Kind::Null;
        }
    }
    value = nullptr;
}

NSArray Building::array(std::span<PropertyListValue> elements) {
    if (elements.empty()) return {};
    Reference<ArrayContents> contents = ArrayContents::make(elements.size());
    for (PropertyListValue& element : elements) contents->append(std::move(element));
    return NSArray(Reference<ArrayObject>(contents.leak()));
}

NSDictionary Building::dictionary(std::span<KeyedValue> entries) {
    if (entries.empty()) return {};
    Reference<DictionaryContents> contents = DictionaryContents::make(entries.size());
    for (KeyedValue& entry : entries) {
        Reference<StringObject> key(static_cast<StringObject*>(entry.key.payload_.object));
        entry.key.kind_ = Kind::Null;
        const std::size_t index = contents->indexOf(key->view(), key->hash);
        if (index == DictionaryContents::notFound)
            contents->append(std::move(key), std::move(entry.value));
        else
            contents->exchange(index, std::move(entry.value));
    }
    return NSDictionary(Reference<DictionaryObject>(contents.leak()));
}

}  // namespace QRVPlatform::ValueObjects

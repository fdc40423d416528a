// SPDX-License-Identifier: MIT
#include "Platform/Values/Building.h"

#include <iterator>
#include <memory>

#include "Platform/Values/Objects.h"

namespace ValueObjects {

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
    auto contents = std::make_unique<ArraySnapshot>();
    contents->contents.assign(std::make_move_iterator(elements.begin()),
                              std::make_move_iterator(elements.end()));
    return NSArray(Reference<ArrayObject>(new ArrayObject(Kind::Array, false, contents.release())));
}

NSDictionary Building::dictionary(std::span<KeyedValue> entries) {
    if (entries.empty()) return {};
    auto contents = std::make_unique<DictionarySnapshot>();
    contents->contents.reserve(entries.size());
    for (KeyedValue& entry : entries) {
        Reference<StringObject> key(static_cast<StringObject*>(entry.key.payload_.object));
        entry.key.kind_ = Kind::Null;
        contents->contents.set(std::move(key), std::move(entry.value));
    }
    return NSDictionary(Reference<DictionaryObject>(
        new DictionaryObject(Kind::Dictionary, false, contents.release())));
}

}  // namespace ValueObjects

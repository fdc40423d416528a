// SPDX-License-Identifier: MIT
#include "Platform/Values/Building.h"

#include <iterator>
#include <memory>

#include "Platform/Values/Objects.h"

namespace ValueObjects {

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

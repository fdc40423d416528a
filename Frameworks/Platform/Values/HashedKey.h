// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Values/Hashing.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform {

/// A key with its hash, to be looked up in several dictionaries. Refers to the text. Without
/// initialisers, so that an array of keys costs nothing before it is filled.
struct HashedKey {
    const char* start;
    std::size_t length;
    std::uint32_t hash;

    static HashedKey of(std::string_view text) noexcept {
        return {text.data(), text.size(), ValueObjects::hashOf(text)};
    }
    [[nodiscard]] std::string_view text() const noexcept { return {start, length}; }
};

/// `NSMutableDictionary::setObjectForKey`.
void setObjectForHashedKey(const NSMutableDictionary& dictionary, PropertyListValue value,
                           const HashedKey& key);

}  // namespace QRVPlatform

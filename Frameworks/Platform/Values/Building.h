// SPDX-License-Identifier: MIT
#pragma once

// Immutable containers made in one step. Inner header of the library.

#include <span>

#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform::ValueObjects {

/// An entry whose key is a string value.
struct KeyedValue {
    PropertyListValue key;
    PropertyListValue value;
};

struct Building {
    /// @name Copying a handle, and making it null, while no other thread knows the object: neither
    /// has to be atomic.
    /// @{
    static PropertyListValue sameObject(const PropertyListValue& value) noexcept;
    static void giveUp(PropertyListValue& value) noexcept;
    /// @}

    /// Both take their contents out of the span, none of them null, and leave nulls there.
    static NSArray array(std::span<PropertyListValue> elements);
    /// The strings themselves become the keys. Of two entries with one key the later wins.
    static NSDictionary dictionary(std::span<KeyedValue> entries);
};

}  // namespace QRVPlatform::ValueObjects

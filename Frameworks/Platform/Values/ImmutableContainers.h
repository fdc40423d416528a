// SPDX-License-Identifier: MIT
#pragma once

#include <span>

#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform {

/// An entry whose key is a string value.
struct KeyedValue {
    PropertyListValue key;
    PropertyListValue value;
};

/// @name Immutable containers made in one step
/// Their contents are moved out of the span and leave nulls there. None of them may be null.
/// @{
NSArray immutableArray(std::span<PropertyListValue> elements);
/// The strings themselves become the keys. Of two entries with one key the later wins.
NSDictionary immutableDictionary(std::span<KeyedValue> entries);
/// @}

}  // namespace QRVPlatform

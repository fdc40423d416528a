// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <span>

#include "Platform/Values/PropertyListValue.h"
#include "Platform/Values/ValuePages.h"

namespace QRVPlatform {

/// An entry whose key is a string value.
struct KeyedValue {
    PropertyListValue key;
    PropertyListValue value;
};

/// @name Immutable containers made in one step
/// Their contents are moved out of the span and leave nulls there. None of them may be null. The
/// memory comes from `pages`, if there are any.
/// @{
NSArray immutableArray(std::span<PropertyListValue> elements,
                       ValueObjects::ValuePages* pages = nullptr);
/// The strings themselves become the keys. Of two entries with one key the later wins.
NSDictionary immutableDictionary(std::span<KeyedValue> entries,
                                 ValueObjects::ValuePages* pages = nullptr);

enum class EntryPlace : std::uint8_t { Before, Dropped, After };
/// `entries` between those of `original`, which is immutable. `places` says for each of its
/// entries, in their order, where it goes; its keys and values stay the same objects. No key may
/// occur twice.
NSDictionary immutableDictionary(const NSDictionary& original, std::span<const EntryPlace> places,
                                 std::span<KeyedValue> entries);
/// @}

}  // namespace QRVPlatform

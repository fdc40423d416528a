// SPDX-License-Identifier: MIT
#pragma once

// What the store writes for itself. People who list, compare or repeat their own changes do not
// want to see it, and another machine must not get it.

#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "Settings/ProfileScope.h"
#include "Text/Differences.h"

namespace Tool {

/// Whether the key path is that of a record of the store, or leads through one. Settings that are
/// to be imported again need the records below `Migration`: without them they are migrated again,
/// which overwrites the profile "default".
bool isRecord(std::string_view storedKeyPath);

/// Whether a difference is the store's own: none of the values is a setting (`QRVIsRecordOfStore`).
/// `storedKeyPath` is where the file keeps the value.
bool isOfStoreAlone(std::string_view storedKeyPath, const PropertyListValue& before,
                    const PropertyListValue& after);

/// Removes the differences that are the store's own. Their key paths are those of `scope`.
void removeRecords(std::vector<Difference>& differences, const ProfileScope& scope);

/// The settings, by key path of `scope`, without those that only the store has written.
NSDictionary withoutRecords(const NSDictionary& valuesByKeyPath, const ProfileScope& scope);

}  // namespace Tool

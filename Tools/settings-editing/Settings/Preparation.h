// SPDX-License-Identifier: MIT
#pragma once

// The store as the application finds it after its start: with defaults, records of this machine,
// and settings of the current version.

#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// Prepares the store as the application does at its start, with the defaults and locks of the
/// site. The caller has opened a batch: what
/// that writes must not be saved unless somebody asks for it. Returns a line for the user about
/// each thing that it resets or migrates. Throws Failure (WrongValue) when a stored value is in the
/// way.
std::vector<std::string> prepareStore();

/// Whether settings have yet to be migrated. Where nothing is set there is nothing to migrate.
bool needMigration(const NSDictionary& settings);
inline constexpr const char* migrationNote =
    "the settings are of an earlier version, and are migrated";

/// A machine without an id is another one at each start.
bool machineHasID();
inline constexpr const char* machineWithoutID =
    "this machine has no id (/etc/machine-id is missing or empty)";
inline constexpr const char* adviceForMachineID =
    "give it one, as root: systemd-machine-id-setup, or where that is missing: tr -d - "
    "</proc/sys/kernel/random/uuid >/etc/machine-id";

}  // namespace Tool

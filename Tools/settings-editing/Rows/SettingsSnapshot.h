// SPDX-License-Identifier: MIT
#pragma once

// What decides about every value at one moment.

#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// The trees never change; any thread may read them.
struct SettingsSnapshot {
    /// What the file holds; null when there is none, or none that can be read.
    NSDictionary stored = nullptr;
    /// The same with what the application changes at its start: records, resets, migrations.
    NSDictionary prepared = nullptr;
    NSDictionary builtIn = nullptr;   ///< the defaults of the library
    NSDictionary site = nullptr;      ///< those of the site; null when there are none
    NSDictionary defaults = nullptr;  ///< those of the site over the built-in ones
    /// What the start resets or migrates, a line each (`prepareStore`).
    std::vector<std::string> notes;
    /// Why the application cannot start with these settings; empty when it can. Then `prepared` is
    /// `stored`.
    std::string obstacle;
};

/// The snapshot of a file that holds these settings. Prepares the store in memory, whose stored
/// tree becomes `prepared`, and saves nothing. On the host's thread.
SettingsSnapshot snapshotOfSettings(const NSDictionary& stored);

}  // namespace Tool

// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/QRVSettings.h"
#include "Workload/Participant.h"

/// The settings as the tree in the file.
NSMutableDictionary treeOf(const std::vector<Workload::Setting>& settings);

/// This project's store. A process has one store, so its folder is XDG_CONFIG_HOME.
class OwnStore {
  public:
    using Handle = std::string;

    static void prepare(const std::filesystem::path& folder,
                        const std::vector<Workload::Setting>& settings);
    /// Discards the cache and the stored tree.
    explicit OwnStore(const std::filesystem::path& folder);

    [[nodiscard]] static Handle handle(std::string_view keyPath, Workload::Kind /*kind*/) {
        return Handle(keyPath);
    }
    [[nodiscard]] static PropertyListValue read(const Handle& keyPath) {
        return QRVSettingsObjectForKeyPath(keyPath);
    }
    [[nodiscard]] static bool readBoolean(const Handle& keyPath) {
        return QRVSettingsBoolForKeyPath(keyPath);
    }
    [[nodiscard]] static std::int64_t readInteger(const Handle& keyPath) {
        return QRVSettingsObjectForKeyPath(keyPath).integerValue();
    }
    static void writeInteger(const Handle& keyPath, std::int64_t number) {
        QRVSettingsSetObjectForKeyPath(number, keyPath);
    }
    /// Waits for the saves, and drains the main queue as a host's main loop does.
    static void save();
};

static_assert(Workload::Participant<OwnStore>);

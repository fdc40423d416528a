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

/// The settings as the tree that the file holds.
NSMutableDictionary treeOf(const std::vector<Workload::Setting>& settings);

/// This project's store. There is one of it, so its folder is that of XDG_CONFIG_HOME.
class OwnStore {
  public:
    using Handle = std::string;

    static void prepare(const std::filesystem::path& folder,
                        const std::vector<Workload::Setting>& settings);
    /// Forgets what was read before.
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
    /// Waits for the saves, and does what a host's loop does.
    static void save();
};

static_assert(Workload::Participant<OwnStore>);

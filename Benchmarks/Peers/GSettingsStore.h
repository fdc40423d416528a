// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Peers/GSettingsTypes.h"
#include "Workload/Participant.h"

/// GSettings with a schema for each dictionary. The keyfile backend, or dconf when the environment
/// has GSETTINGS_BACKEND=dconf. Writes are delayed until a save applies them, unless the store
/// is made direct. A save on a keyfile also syncs the folder.
class GSettingsStore {
  public:
    struct Handle {
        GSettings* settings;
        std::string key;
    };
    enum class Writes { Delayed, Direct };

    static void prepare(const std::filesystem::path& folder,
                        const std::vector<Workload::Setting>& settings);
    explicit GSettingsStore(const std::filesystem::path& folder, Writes writes = Writes::Delayed);
    /// A store without settings that knows the schemas of `schemas`.
    GSettingsStore(const std::filesystem::path& folder, const std::filesystem::path& schemas);
    GSettingsStore(const GSettingsStore&) = delete;
    GSettingsStore& operator=(const GSettingsStore&) = delete;
    ~GSettingsStore();

    [[nodiscard]] static bool isDconf();
    [[nodiscard]] Handle handle(std::string_view keyPath, Workload::Kind kind);
    /// The size of the value that was read, in bytes.
    [[nodiscard]] static std::size_t read(const Handle& handle);
    [[nodiscard]] static bool readBoolean(const Handle& handle);
    [[nodiscard]] static std::int64_t readInteger(const Handle& handle);
    void writeInteger(const Handle& handle, std::int64_t number);
    void save();

  private:
    GSettings* groupNamed(std::string_view name);

    std::filesystem::path folder_;
    Writes writes_;
    GSettingsBackend* backend_ = nullptr;
    GSettingsSchemaSource* schemas_ = nullptr;
    std::unordered_map<std::string, GSettings*> groups_;
    std::vector<GSettings*> changed_;
};

static_assert(Workload::Participant<GSettingsStore>);

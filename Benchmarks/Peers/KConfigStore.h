// SPDX-License-Identifier: MIT
#pragma once

#include <KConfig>
#include <KConfigGroup>
#include <QString>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Workload/Participant.h"

/// KConfig on one file, without the system-wide files. A dictionary is a group, and an array is a
/// list of strings.
class KConfigStore {
  public:
    struct Handle {
        KConfigGroup group;
        std::string key;
        Workload::Kind kind;
    };

    static void prepare(const std::filesystem::path& folder,
                        const std::vector<Workload::Setting>& settings);
    explicit KConfigStore(const std::filesystem::path& folder);

    [[nodiscard]] Handle handle(std::string_view keyPath, Workload::Kind kind);
    /// The number of bytes or of elements that were read.
    [[nodiscard]] static int read(const Handle& handle);
    [[nodiscard]] static bool readBoolean(const Handle& handle) {
        return handle.group.readEntry(handle.key.c_str(), false);
    }
    [[nodiscard]] static std::int64_t readInteger(const Handle& handle) {
        return handle.group.readEntry(handle.key.c_str(), qlonglong{0});
    }
    static void writeInteger(const Handle& handle, std::int64_t number) {
        KConfigGroup group = handle.group;
        group.writeEntry(handle.key.c_str(), static_cast<qlonglong>(number));
    }
    void save() { config_->sync(); }

  private:
    std::unique_ptr<KConfig> config_;
};

static_assert(Workload::Participant<KConfigStore>);

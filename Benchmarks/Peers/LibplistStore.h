// SPDX-License-Identifier: MIT
#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "Workload/Participant.h"

/// The tree of an XML property list, read by libplist from `FOLDER/files/XMLReading`. It is not a
/// store, and cannot save; a store could be built on it.
class LibplistStore {
  public:
    using Handle = plist_t;

    static void prepare(const std::filesystem::path& folder,
                        const std::vector<Workload::Setting>& settings);
    explicit LibplistStore(const std::filesystem::path& folder);

    [[nodiscard]] Handle handle(std::string_view keyPath, Workload::Kind kind) const;
    [[nodiscard]] static plist_type read(Handle node) { return plist_get_node_type(node); }
    [[nodiscard]] static bool readBoolean(Handle node);
    [[nodiscard]] static std::int64_t readInteger(Handle node);
    static void writeInteger(Handle node, std::int64_t number);
    static void save() {}

  private:
    plist_t root_ = nullptr;
};

static_assert(Workload::Participant<LibplistStore>);

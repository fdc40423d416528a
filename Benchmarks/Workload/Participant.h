// SPDX-License-Identifier: MIT
#pragma once

/// The operations of a participating store.

#include <concepts>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "Workload/GeneratedSettings.h"
#include "Workload/SettingKind.h"

namespace Workload {

/// A store whose files are below one folder.
///
/// - `prepare(folder, settings)` creates the files of a store with exactly these settings.
/// - The constructor opens the store in the folder.
/// - `handle(keyPath, kind)` returns what a host of that store would keep for one setting, so that
///   a read converts no names.
/// - `read` gives the value as the store's own type, or as the type of its kind.
/// - `writeInteger` changes a setting in this process; `save` returns when the change is in the
///   file.
template <typename Store>
concept Participant = requires(Store store, const typename Store::Handle& handle,
                               const std::filesystem::path& folder,
                               const std::vector<Setting>& settings, std::string_view keyPath,
                               std::int64_t number) {
    Store::prepare(folder, settings);
    Store(folder);
    { store.handle(keyPath, Kind::Boolean) } -> std::same_as<typename Store::Handle>;
    store.read(handle);
    { store.readBoolean(handle) } -> std::same_as<bool>;
    { store.readInteger(handle) } -> std::same_as<std::int64_t>;
    store.writeInteger(handle, number);
    store.save();
};

}  // namespace Workload

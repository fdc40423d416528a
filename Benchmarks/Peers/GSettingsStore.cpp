// SPDX-License-Identifier: MIT
#include "Peers/GSettingsStore.h"

#include <cstdlib>
#include <iostream>

#include "Peers/PeerSettings.h"
#include "Workload/FolderSync.h"

namespace {

GSettingsSchemaSource* schemasIn(const std::filesystem::path& folder) {
    GError* error = nullptr;
    GSettingsSchemaSource* const source =
        g_settings_schema_source_new_from_directory(folder.c_str(), nullptr, TRUE, &error);
    if (source != nullptr) return source;
    std::cerr << error->message << '\n';
    std::exit(EXIT_FAILURE);
}

GSettingsBackend* backendIn(const std::filesystem::path& folder) {
    if (GSettingsStore::isDconf()) return g_settings_backend_get_default();
    return g_keyfile_settings_backend_new((folder / "values" / "settings").c_str(), "/", nullptr);
}

}  // namespace

GSettingsStore::GSettingsStore(const std::filesystem::path& folder, Writes writes)
    : folder_(folder),
      writes_(writes),
      backend_(backendIn(folder)),
      schemas_(schemasIn(folder / "schemas")) {}

GSettingsStore::GSettingsStore(const std::filesystem::path& folder,
                               const std::filesystem::path& schemas)
    : folder_(folder),
      writes_(Writes::Delayed),
      backend_(backendIn(folder)),
      schemas_(schemasIn(schemas)) {}

GSettingsStore::~GSettingsStore() {
    for (const auto& [name, settings] : groups_) g_object_unref(settings);
    g_settings_schema_source_unref(schemas_);
    g_object_unref(backend_);
}

bool GSettingsStore::isDconf() {
    const char* const backend = std::getenv("GSETTINGS_BACKEND");
    return backend != nullptr && std::string_view(backend) == "dconf";
}

GSettings* GSettingsStore::groupNamed(std::string_view name) {
    const auto [place, isNew] = groups_.try_emplace(std::string(name), nullptr);
    if (!isNew) return place->second;
    GSettingsSchema* const schema =
        g_settings_schema_source_lookup(schemas_, place->first.c_str(), FALSE);
    place->second = g_settings_new_full(schema, backend_, nullptr);
    g_settings_schema_unref(schema);
    return place->second;
}

GSettingsStore::Handle GSettingsStore::handle(std::string_view keyPath, Workload::Kind /*kind*/) {
    const auto [group, key] = Peers::splitKeyPath(keyPath);
    return {groupNamed(group), std::string(key)};
}

std::size_t GSettingsStore::read(const Handle& handle) {
    GVariant* const value = g_settings_get_value(handle.settings, handle.key.c_str());
    const std::size_t size = g_variant_get_size(value);
    g_variant_unref(value);
    return size;
}

bool GSettingsStore::readBoolean(const Handle& handle) {
    return g_settings_get_boolean(handle.settings, handle.key.c_str()) != FALSE;
}

std::int64_t GSettingsStore::readInteger(const Handle& handle) {
    return g_settings_get_int64(handle.settings, handle.key.c_str());
}

void GSettingsStore::writeInteger(const Handle& handle, std::int64_t number) {
    if (writes_ == Writes::Delayed && g_settings_get_has_unapplied(handle.settings) == FALSE) {
        g_settings_delay(handle.settings);
        changed_.push_back(handle.settings);
    }
    g_settings_set_int64(handle.settings, handle.key.c_str(), number);
}

void GSettingsStore::save() {
    for (GSettings* const settings : changed_) g_settings_apply(settings);
    changed_.clear();
    g_settings_sync();
    if (!isDconf()) Workload::syncFolder(folder_ / "values");
}

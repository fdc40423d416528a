// SPDX-License-Identifier: MIT
// The one store object for C.

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/QRVSettingsC+Boundary.h"

using QRVInside::CInterface::Context;
using QRVInside::CInterface::contextOf;
using QRVInside::CInterface::give;
using QRVInside::CInterface::giveValue;
using QRVInside::CInterface::newHandle;
using QRVInside::CInterface::perform;
using QRVInside::CInterface::textOf;

namespace {

QRVSettings& store() {
    return QRVSettings::sharedSettings();
}

/// The handler borrows the handle for the call, and may retain it.
void tell(qrv_change_handler handler, const NSArray& keyPaths, void* context) {
    const std::unique_ptr<qrv_value, decltype(&qrv_value_release)> handle(newHandle(keyPaths),
                                                                          qrv_value_release);
    handler(handle.get(), context);
}

QRVSettings::ChangeHandler changeHandler(qrv_change_handler handler, void* context,
                                         qrv_destroy destroy) {
    Context owned = contextOf(context, destroy);
    if (handler == nullptr) return nullptr;
    return [handler, owned = std::move(owned)](const NSArray& keyPaths) {
        tell(handler, keyPaths, owned.get());
    };
}

PropertyListValue valueOf(const std::optional<std::string>& text) {
    return text ? PropertyListValue(*text) : PropertyListValue();
}

PropertyListValue valueOf(const std::optional<NSDate>& date) {
    return date ? PropertyListValue(*date) : PropertyListValue();
}

}  // namespace

qrv_result qrv_store_exists(bool* exists) {
    return give(exists, [] { return store().exists(); });
}

qrv_result qrv_store_load_defaults(void) {
    return perform([] { store().loadDefaults(); });
}

qrv_result qrv_store_device_id(qrv_value** device_id) {
    return giveValue(device_id, [] { return store().deviceID(); });
}

qrv_result qrv_store_model_identifier(qrv_value** model_identifier) {
    return giveValue(model_identifier, [] { return store().modelIdentifier(); });
}

qrv_result qrv_store_prepare(void) {
    return perform([] { store().prepare(); });
}

qrv_result qrv_store_migrate(void) {
    return perform([] { store().migrate(); });
}

qrv_result qrv_store_monitor_file_changes(bool* monitor) {
    return give(monitor, [] { return store().monitorFileChanges(); });
}

qrv_result qrv_store_set_monitor_file_changes(bool monitor) {
    return perform([&] { store().setMonitorFileChanges(monitor); });
}

qrv_result qrv_store_merges_saves(bool* merges) {
    return give(merges, [] { return store().mergesSaves(); });
}

qrv_result qrv_store_set_merges_saves(bool merges) {
    return perform([&] { store().setMergesSaves(merges); });
}

qrv_result qrv_store_uses_site_defaults(bool* uses) {
    return give(uses, [] { return store().usesSiteDefaults(); });
}

qrv_result qrv_store_set_uses_site_defaults(bool uses) {
    return perform([&] { store().setUsesSiteDefaults(uses); });
}

qrv_result qrv_store_save_lock_timeout(int64_t* milliseconds) {
    return give(milliseconds, [] {
        const auto timeout = store().saveLockTimeout();
        return timeout ? std::int64_t{timeout->count()} : -1;
    });
}

qrv_result qrv_store_set_save_lock_timeout(int64_t milliseconds) {
    return perform([&] {
        store().setSaveLockTimeout(milliseconds < 0
                                       ? std::nullopt
                                       : std::optional(std::chrono::milliseconds(milliseconds)));
    });
}

qrv_result qrv_store_disable_cache(bool* disable) {
    return give(disable, [] { return store().disableCache(); });
}

qrv_result qrv_store_set_disable_cache(bool disable) {
    return perform([&] { store().setDisableCache(disable); });
}

qrv_result qrv_store_prepared(bool* prepared) {
    return give(prepared, [] { return store().prepared(); });
}

qrv_result qrv_store_set_prepared(bool prepared) {
    return perform([&] { store().setPrepared(prepared); });
}

qrv_result qrv_store_active_profile(qrv_value** profile) {
    return giveValue(profile, [] { return valueOf(store().activeProfile()); });
}

qrv_result qrv_store_set_active_profile(const char* profile) {
    return perform([&] {
        const char* const name = textOf(profile);
        store().setActiveProfile(name == nullptr ? std::nullopt : std::optional<std::string>(name));
    });
}

qrv_result qrv_store_set_on_change(qrv_change_handler handler, void* context, qrv_destroy destroy) {
    return perform([&] { store().setOnChange(changeHandler(handler, context, destroy)); });
}

qrv_result qrv_store_location(qrv_value** location) {
    return giveValue(location, [] { return store().location(); });
}

qrv_result qrv_store_defaults(qrv_value** defaults) {
    return giveValue(defaults, [] { return store().defaults(); });
}

qrv_result qrv_store_cache(qrv_value** cache) {
    return giveValue(cache, [] { return store().cache(); });
}

qrv_result qrv_store_storage_cache(qrv_value** storage_cache) {
    return giveValue(storage_cache, [] { return store().storageCache(); });
}

qrv_result qrv_store_current_appearance(qrv_value** appearance) {
    return giveValue(appearance, [] { return store().currentAppearance(); });
}

qrv_result qrv_store_in_batch_save(bool* in_batch_save) {
    return give(in_batch_save, [] { return store().inBatchSave(); });
}

qrv_result qrv_store_local_changes(qrv_value** changes) {
    return giveValue(changes, [] { return store().localChanges(); });
}

qrv_result qrv_store_batch_log_changes(qrv_value** changes) {
    return giveValue(changes, [] { return store().batchLogChanges(); });
}

qrv_result qrv_store_modification_date(qrv_value** date) {
    return giveValue(date, [] { return valueOf(store().modificationDate()); });
}

qrv_result qrv_store_wait_for_saves(void) {
    return perform([] { store().queue().sync([] {}); });
}

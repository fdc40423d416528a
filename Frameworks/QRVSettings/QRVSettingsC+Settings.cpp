// SPDX-License-Identifier: MIT
// The functions that read and write settings, for C.

#include <chrono>
#include <memory>

#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/QRVSettingsC+Boundary.h"

using QRVInside::CInterface::emptied;
using QRVInside::CInterface::give;
using QRVInside::CInterface::giveValue;
using QRVInside::CInterface::keyPathOf;
using QRVInside::CInterface::newHandle;
using QRVInside::CInterface::perform;
using QRVInside::CInterface::textOf;
using QRVInside::CInterface::valueOf;

namespace {

NSDictionary dictionaryOf(const qrv_value* value) {
    return valueOf(value, PropertyListValue::Kind::Dictionary).dictionary();
}

NSArray arrayOrNullOf(const qrv_value* value) {
    if (valueOf(value).isNull()) return nullptr;
    return valueOf(value, PropertyListValue::Kind::Array).array();
}

qrv_save_state numberOf(QRVSaveStatus::State state) {
    switch (state) {
        case QRVSaveStatus::State::Saved:
            return QRV_SAVE_STATE_SAVED;
        case QRVSaveStatus::State::Failed:
            return QRV_SAVE_STATE_FAILED;
        case QRVSaveStatus::State::Pending:
            break;
    }
    return QRV_SAVE_STATE_PENDING;
}

}  // namespace

qrv_result qrv_settings_location(qrv_value** location) {
    return giveValue(location, [] { return QRVSettingsLocation(); });
}

qrv_result qrv_settings_storage(qrv_value** storage) {
    return giveValue(storage, [] { return QRVSettingsStorage(); });
}

qrv_result qrv_settings_stored_values(qrv_value** values) {
    return giveValue(values, [] { return QRVSettingsStoredValues(); });
}

qrv_result qrv_settings_stored_object(const char* key_path, qrv_value** value) {
    return giveValue(value, [&] { return QRVSettingsStoredObjectForKeyPath(keyPathOf(key_path)); });
}

qrv_result qrv_settings_object(const char* key_path, qrv_value** value) {
    return giveValue(value, [&] { return QRVSettingsObjectForKeyPath(keyPathOf(key_path)); });
}

qrv_result qrv_settings_default(const char* key_path, qrv_value** value) {
    return giveValue(value, [&] { return QRVSettingsDefaultForKeyPath(keyPathOf(key_path)); });
}

qrv_result qrv_settings_bool(const char* key_path, bool* boolean) {
    return give(boolean, [&] { return QRVSettingsBoolForKeyPath(keyPathOf(key_path)); });
}

qrv_result qrv_settings_set_object_with_cache(const qrv_value* value, const char* key_path,
                                              bool with_cache) {
    return perform([&] {
        QRVSettingsSetObjectForKeyPathWithCache(valueOf(value), keyPathOf(key_path), with_cache);
    });
}

qrv_result qrv_settings_set_object(const qrv_value* value, const char* key_path) {
    return perform([&] { QRVSettingsSetObjectForKeyPath(valueOf(value), keyPathOf(key_path)); });
}

qrv_result qrv_settings_remove_empty_levels_above(const char* key_path) {
    return perform([&] { QRVSettingsRemoveEmptyLevelsAbove(keyPathOf(key_path)); });
}

qrv_result qrv_settings_save_object_with_log(const qrv_value* object, const qrv_value* log) {
    return perform([&] { QRVSettingsSaveObjectWithLog(dictionaryOf(object), arrayOrNullOf(log)); });
}

qrv_result qrv_settings_save_object(const qrv_value* object) {
    return perform([&] { QRVSettingsSaveObject(dictionaryOf(object)); });
}

qrv_result qrv_settings_clear_cache(const char* key_path) {
    return perform([&] { QRVSettingsClearCacheForKeyPath(keyPathOf(key_path)); });
}

qrv_result qrv_settings_synchronize(void) {
    return perform([] { QRVSettingsSynchronize(); });
}

qrv_result qrv_settings_wait_for_saves(int64_t milliseconds, qrv_save_state* state,
                                       qrv_value** key_paths, qrv_value** reason) {
    return perform([&] {
        qrv_save_state& stateOfSaves = emptied(state);
        qrv_value*& keyPaths = emptied(key_paths);
        qrv_value*& text = emptied(reason);
        const QRVSaveStatus status =
            QRVSettingsWaitForSaves(std::chrono::milliseconds(milliseconds));
        std::unique_ptr<qrv_value, decltype(&qrv_value_release)> newKeyPaths(
            newHandle(status.keyPaths), qrv_value_release);
        text = newHandle(status.reason);
        keyPaths = newKeyPaths.release();
        stateOfSaves = numberOf(status.state);
    });
}

qrv_result qrv_settings_prepare_batch_save(void) {
    return perform([] { QRVSettingsPrepareBatchSave(); });
}

qrv_result qrv_settings_commit_batch_save(void) {
    return perform([] { QRVSettingsCommitBatchSave(); });
}

qrv_result qrv_settings_import(const qrv_value* settings) {
    return perform([&] { QRVSettingsImport(dictionaryOf(settings)); });
}

qrv_result qrv_settings_migration_needed(bool* needed) {
    return give(needed, [] { return QRVSettingsMigrationNeeded(); });
}

qrv_result qrv_settings_perform_migration(void) {
    return perform([] { QRVSettingsPerformMigration(); });
}

qrv_result qrv_settings_profile_key(const char* key_path, qrv_value** profile_key_path) {
    return giveValue(profile_key_path,
                     [&] { return QRVSettingsProfileKeyForKey(keyPathOf(key_path)); });
}

qrv_result qrv_settings_profile_object(const char* key_path, qrv_value** value) {
    return giveValue(value,
                     [&] { return QRVSettingsProfileObjectForKeyPath(keyPathOf(key_path)); });
}

qrv_result qrv_settings_profile_set_object_with_cache(const qrv_value* value, const char* key_path,
                                                      bool with_cache) {
    return perform([&] {
        QRVSettingsProfileSetObjectForKeyPathWithCache(valueOf(value), keyPathOf(key_path),
                                                       with_cache);
    });
}

qrv_result qrv_settings_profile_set_object(const qrv_value* value, const char* key_path) {
    return perform(
        [&] { QRVSettingsProfileSetObjectForKeyPath(valueOf(value), keyPathOf(key_path)); });
}

qrv_result qrv_settings_profile_clear_cache(const char* key_path) {
    return perform([&] { QRVSettingsProfileClearCacheForKeyPath(keyPathOf(key_path)); });
}

qrv_result qrv_settings_is_locked(const char* key_path, bool* locked) {
    return give(locked, [&] { return QRVSettingsIsLocked(keyPathOf(key_path)); });
}

qrv_result qrv_settings_lock_file(const char* key_path, qrv_value** file) {
    return giveValue(file, [&] { return QRVSettingsLockFileForKeyPath(keyPathOf(key_path)); });
}

qrv_result qrv_settings_site_file(const char* key_path, qrv_value** file) {
    return giveValue(file, [&] { return QRVSettingsSiteFileForKeyPath(keyPathOf(key_path)); });
}

qrv_result qrv_settings_site_defaults(qrv_value** values) {
    return giveValue(values, [] { return QRVSettingsSiteDefaults().values; });
}

qrv_result qrv_settings_set_current_appearance(const char* appearance_name) {
    return perform([&] { QRVSettingsSetCurrentAppearance(textOf(appearance_name)); });
}

qrv_result qrv_settings_current_appearance(qrv_value** appearance) {
    return giveValue(appearance, [] { return QRVSettingsCurrentAppearance(); });
}

qrv_result qrv_settings_menu_theme(const char* appearance_name, qrv_value** theme) {
    return giveValue(theme,
                     [&] { return QRVSettingsMenuThemeForAppearance(textOf(appearance_name)); });
}

qrv_result qrv_settings_color(const char* key_path, qrv_value** color) {
    return giveValue(color, [&] { return QRVSettingsColorForKeyPath(keyPathOf(key_path)); });
}

qrv_result qrv_settings_set_color(const qrv_value* color, const char* key_path) {
    return perform([&] { QRVSettingsSetColorForKeyPath(valueOf(color), keyPathOf(key_path)); });
}

// SPDX-License-Identifier: MIT
// The store object: its start, its properties, and changes by other processes.

#include <string.h>

#include "testing.h"

static void the_file_is_there_after_a_save(void) {
    qrv_value* location = NULL;
    qrv_value* computed = NULL;
    bool is_there = true;
    bool equal = false;
    OK(qrv_store_exists(&is_there));
    CHECK(!is_there);
    set_integer("a", 1);
    OK(qrv_store_wait_for_saves());
    OK(qrv_store_exists(&is_there));
    CHECK(is_there);
    OK(qrv_store_location(&location));
    OK(qrv_settings_location(&computed));
    OK(qrv_value_equal(location, computed, &equal));
    CHECK(equal);
    qrv_value_release(location);
    qrv_value_release(computed);
}

static void flags_are_kept(void) {
    bool flag = true;
    OK(qrv_store_prepared(&flag));
    CHECK(!flag);
    OK(qrv_store_set_prepared(true));
    OK(qrv_store_prepared(&flag));
    CHECK(flag);
    OK(qrv_store_monitor_file_changes(&flag));
    CHECK(!flag);
    OK(qrv_store_set_monitor_file_changes(true));
    OK(qrv_store_monitor_file_changes(&flag));
    CHECK(flag);
    OK(qrv_store_merges_saves(&flag));
    CHECK(!flag);
    OK(qrv_store_set_merges_saves(true));
    OK(qrv_store_merges_saves(&flag));
    CHECK(flag);
}

static void a_save_waits_as_long_as_its_timeout_says(void) {
    int64_t milliseconds = 0;
    OK(qrv_store_save_lock_timeout(&milliseconds));
    CHECK(milliseconds == -1);
    OK(qrv_store_set_save_lock_timeout(0));
    OK(qrv_store_save_lock_timeout(&milliseconds));
    CHECK(milliseconds == 0);
    OK(qrv_store_set_save_lock_timeout(1500));
    OK(qrv_store_save_lock_timeout(&milliseconds));
    CHECK(milliseconds == 1500);
    OK(qrv_store_set_save_lock_timeout(-7));
    OK(qrv_store_save_lock_timeout(&milliseconds));
    CHECK(milliseconds == -1);
}

static void waiting_tells_what_was_saved(void) {
    qrv_save_state state = QRV_SAVE_STATE_PENDING;
    qrv_value* key_paths = NULL;
    qrv_value* reason = NULL;
    qrv_value* marker = NULL;
    qrv_value* key_path = NULL;
    size_t count = 0;
    OK(qrv_store_set_merges_saves(true));
    set_integer("good", 1);
    OK(qrv_value_create_null_marker(&marker));
    OK(qrv_settings_set_object(marker, "bad.value"));
    OK(qrv_settings_wait_for_saves(20000, &state, &key_paths, &reason));
    CHECK(state == QRV_SAVE_STATE_FAILED);
    OK(qrv_value_get_count(key_paths, &count));
    CHECK(count == 1);
    OK(qrv_value_get_element(key_paths, 0, &key_path));
    check_text(key_path, "bad.value");
    qrv_value_release(key_paths);
    qrv_value_release(reason);
    set_integer("bad.value", 2);
    OK(qrv_settings_wait_for_saves(20000, &state, &key_paths, &reason));
    CHECK(state == QRV_SAVE_STATE_SAVED);
    check_text(reason, "");
    qrv_value_release(key_paths);
    qrv_value_release(marker);
    OK(qrv_settings_prepare_batch_save());
    set_integer("good", 2);
    OK(qrv_settings_wait_for_saves(0, &state, &key_paths, &reason));
    CHECK(state == QRV_SAVE_STATE_PENDING);
    qrv_value_release(key_paths);
    qrv_value_release(reason);
    FAILS(QRV_ERROR_NULL_POINTER, qrv_settings_wait_for_saves(0, NULL, &key_paths, &reason));
}

static void a_disabled_cache_is_gone(void) {
    qrv_value* cache = NULL;
    bool is_disabled = true;
    OK(qrv_store_disable_cache(&is_disabled));
    CHECK(!is_disabled);
    OK(qrv_store_set_disable_cache(true));
    OK(qrv_store_disable_cache(&is_disabled));
    CHECK(is_disabled);
    OK(qrv_store_cache(&cache));
    check_kind(cache, QRV_KIND_NULL);
}

static void a_start_makes_defaults_and_a_profile(void) {
    qrv_value* value = NULL;
    OK(qrv_store_defaults(&value));
    check_kind(value, QRV_KIND_NULL);
    OK(qrv_store_load_defaults());
    OK(qrv_store_prepare());
    OK(qrv_store_migrate());
    OK(qrv_store_defaults(&value));
    check_kind(value, QRV_KIND_DICTIONARY);
    OK(qrv_store_active_profile(&value));
    check_text(value, "default");
    OK(qrv_store_storage_cache(&value));
    check_kind(value, QRV_KIND_DICTIONARY);
}

static void the_machine_is_the_recorded_one(void) {
    qrv_value* device_id = NULL;
    qrv_value* model = NULL;
    qrv_value* recorded = NULL;
    bool equal = false;
    OK(qrv_store_load_defaults());
    OK(qrv_store_device_id(&device_id));
    OK(qrv_settings_object("Device.Device", &recorded));
    OK(qrv_value_equal(device_id, recorded, &equal));
    CHECK(equal);
    qrv_value_release(recorded);
    OK(qrv_store_model_identifier(&model));
    OK(qrv_settings_object("Device.Model", &recorded));
    OK(qrv_value_equal(model, recorded, &equal));
    CHECK(equal);
    qrv_value_release(recorded);
    qrv_value_release(device_id);
    qrv_value_release(model);
}

static size_t number_of_local_changes(void) {
    qrv_value* changes = NULL;
    size_t count = 0;
    OK(qrv_store_local_changes(&changes));
    OK(qrv_value_get_count(changes, &count));
    qrv_value_release(changes);
    return count;
}

static bool has_a_local_change(void) {
    return number_of_local_changes() == 1;
}

static void a_save_becomes_a_local_change(void) {
    CHECK(number_of_local_changes() == 0);
    set_integer("a", 1);
    drain_until(has_a_local_change);
}

static qrv_value* kept_key_paths;
static int ends_of_context;

/// Called once: it removes itself, and its context has to outlive that.
static void keep_key_paths_once(qrv_value* key_paths, void* context) {
    CHECK(context == &ends_of_context);
    kept_key_paths = qrv_value_retain(key_paths);
    OK(qrv_store_set_on_change(NULL, NULL, NULL));
    CHECK(ends_of_context == 0);
}

static bool has_arrived(void) {
    return kept_key_paths != NULL;
}

static void change_a_setting(void) {
    set_integer("UpdateFrequency", 5);
    OK(qrv_store_wait_for_saves());
}

static void what_another_process_changes_has_arrived(void) {
    qrv_value* value = NULL;
    size_t count = 0;
    prepare_other_process(change_a_setting);
    OK(qrv_store_modification_date(&value));
    check_kind(value, QRV_KIND_NULL);
    OK(qrv_store_set_monitor_file_changes(true));
    OK(qrv_store_set_on_change(keep_key_paths_once, &ends_of_context, count_call));
    OK(qrv_store_prepare());
    OK(qrv_store_wait_for_saves());
    other_process_begins();
    drain_until(has_arrived);
    CHECK(ends_of_context == 1);
    CHECK(integer_at("UpdateFrequency") == 5);
    bool is_among = false;
    OK(qrv_value_get_count(kept_key_paths, &count));
    for (size_t index = 0; index < count; ++index) {
        const char* text = NULL;
        size_t length = 0;
        OK(qrv_value_get_element(kept_key_paths, index, &value));
        OK(qrv_value_get_string(value, &text, &length));
        is_among = is_among || strcmp(text, "UpdateFrequency") == 0;
        qrv_value_release(value);
    }
    CHECK(is_among);
    qrv_value_release(kept_key_paths);
    OK(qrv_store_modification_date(&value));
    check_kind(value, QRV_KIND_DATE);
}

static void count_changes(qrv_value* key_paths, void* context) {
    (void)key_paths;
    (void)context;
}

static void the_context_of_a_handler_ends_with_it(void) {
    int first = 0;
    int second = 0;
    int third = 0;
    OK(qrv_store_set_on_change(count_changes, &first, count_call));
    CHECK(first == 0);
    OK(qrv_store_set_on_change(count_changes, &second, count_call));
    CHECK(first == 1 && second == 0);
    OK(qrv_store_set_on_change(NULL, &third, count_call));
    CHECK(first == 1 && second == 1 && third == 1);
}

static void a_profile_that_is_not_utf8_is_an_error(void) {
    FAILS(QRV_ERROR_NOT_UTF8, qrv_store_set_active_profile("\xFF"));
}

static void a_property_without_a_place_is_an_error(void) {
    FAILS(QRV_ERROR_NULL_POINTER, qrv_store_exists(NULL));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_store_location(NULL));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_settings_object("a", NULL));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_settings_bool("a", NULL));
}

const test store_tests[] = {
    {"the file is there after a save", the_file_is_there_after_a_save},
    {"flags are kept", flags_are_kept},
    {"a save waits as long as its timeout says", a_save_waits_as_long_as_its_timeout_says},
    {"waiting tells what was saved", waiting_tells_what_was_saved},
    {"a disabled cache is gone", a_disabled_cache_is_gone},
    {"a start makes defaults and a profile", a_start_makes_defaults_and_a_profile},
    {"the machine is the recorded one", the_machine_is_the_recorded_one},
    {"a save becomes a local change", a_save_becomes_a_local_change},
    {"what another process changes arrives", what_another_process_changes_has_arrived},
    {"the context of a handler ends with it", the_context_of_a_handler_ends_with_it},
    {"a profile that is not UTF-8 is an error", a_profile_that_is_not_utf8_is_an_error},
    {"a property without a place is an error", a_property_without_a_place_is_an_error},
    {NULL, NULL},
};

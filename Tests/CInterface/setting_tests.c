// SPDX-License-Identifier: MIT
// Reading and writing settings, batches, import, profiles, appearance, colours, and the site.
#define _XOPEN_SOURCE 700

#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include "testing.h"

static const char* const width = "CPU.Menubar.Mode.HistoryGraph.Width";

static qrv_value* dictionary_with(const char* key, int64_t integer) {
    qrv_value* element = integer_value(integer);
    const qrv_value* const elements[] = {element};
    qrv_value* dictionary = NULL;
    OK(qrv_value_create_dictionary(&key, elements, 1, &dictionary));
    qrv_value_release(element);
    return dictionary;
}

/// The integer that the file holds for a key of the top level; -1 when it holds none.
static int64_t integer_in_file(const char* key) {
    qrv_value* tree = NULL;
    qrv_value* element = NULL;
    int64_t integer = -1;
    OK(qrv_store_wait_for_saves());
    OK(qrv_settings_storage(&tree));
    OK(qrv_value_get_entry(tree, key, &element));
    if (qrv_value_kind(element) != QRV_KIND_NULL) OK(qrv_value_get_integer(element, &integer));
    qrv_value_release(element);
    qrv_value_release(tree);
    return integer;
}

static void a_read_asks_the_layers_in_turn(void) {
    qrv_value* value = NULL;
    bool enabled = false;
    OK(qrv_store_load_defaults());
    CHECK(integer_at(width) == 40);
    set_integer(width, 60);
    CHECK(integer_at(width) == 60);
    OK(qrv_settings_default(width, &value));
    check_kind(value, QRV_KIND_INTEGER);
    OK(qrv_settings_stored_object(width, &value));
    check_kind(value, QRV_KIND_INTEGER);
    OK(qrv_settings_bool("CPU.Menubar.Enabled", &enabled));
    CHECK(enabled);
    OK(qrv_settings_stored_object("CPU.Menubar.Enabled", &value));
    check_kind(value, QRV_KIND_NULL);
}

static void a_write_reaches_the_file(void) {
    qrv_value* value = integer_value(3);
    qrv_value* values = NULL;
    OK(qrv_settings_set_object_with_cache(value, "UpdateFrequency", true));
    OK(qrv_settings_synchronize());
    CHECK(integer_in_file("UpdateFrequency") == 3);
    OK(qrv_settings_stored_values(&values));
    check_kind(values, QRV_KIND_DICTIONARY);
    qrv_value_release(value);
}

static void a_null_value_removes_a_setting(void) {
    qrv_value* null = NULL;
    set_integer("UpdateFrequency", 3);
    OK(qrv_value_create_null(&null));
    OK(qrv_settings_set_object(null, "UpdateFrequency"));
    CHECK(integer_in_file("UpdateFrequency") == -1);
    qrv_value_release(null);
}

static void a_cleared_cache_shows_what_is_stored(void) {
    qrv_value* value = NULL;
    OK(qrv_store_load_defaults());
    OK(qrv_settings_object(width, &value));
    qrv_value_release(value);
    OK(qrv_store_cache(&value));
    qrv_value* cached = NULL;
    OK(qrv_value_get_entry(value, width, &cached));
    check_kind(cached, QRV_KIND_INTEGER);
    OK(qrv_settings_clear_cache(width));
    OK(qrv_value_get_entry(value, width, &cached));
    check_kind(cached, QRV_KIND_NULL);
    qrv_value_release(value);
}

static void empty_levels_are_removed(void) {
    const char* const key_path = "Levels.Empty.Key";
    qrv_value* null = NULL;
    qrv_value* value = NULL;
    set_integer(key_path, 1);
    OK(qrv_value_create_null(&null));
    OK(qrv_settings_set_object(null, key_path));
    OK(qrv_settings_stored_object("Levels.Empty", &value));
    check_kind(value, QRV_KIND_DICTIONARY);
    OK(qrv_settings_remove_empty_levels_above(key_path));
    OK(qrv_settings_stored_object("Levels", &value));
    check_kind(value, QRV_KIND_NULL);
    qrv_value_release(null);
}

static void a_tree_is_saved_as_it_is(void) {
    qrv_value* tree = dictionary_with("a", 1);
    qrv_value* null = NULL;
    OK(qrv_settings_save_object(tree));
    CHECK(integer_in_file("a") == 1);
    qrv_value_release(tree);
    tree = dictionary_with("b", 2);
    OK(qrv_value_create_null(&null));
    OK(qrv_settings_save_object_with_log(tree, null));
    CHECK(integer_in_file("a") == -1 && integer_in_file("b") == 2);
    qrv_value_release(null);
    qrv_value_release(tree);
}

static void a_batch_is_saved_by_its_commit(void) {
    bool is_open = false;
    qrv_value* changes = NULL;
    size_t count = 0;
    set_integer("a", 1);
    OK(qrv_settings_prepare_batch_save());
    OK(qrv_store_in_batch_save(&is_open));
    CHECK(is_open);
    set_integer("a", 2);
    CHECK(integer_in_file("a") == 1);
    OK(qrv_store_batch_log_changes(&changes));
    OK(qrv_value_get_count(changes, &count));
    CHECK(count == 1);
    qrv_value_release(changes);
    OK(qrv_settings_commit_batch_save());
    CHECK(integer_in_file("a") == 2);
}

static void an_import_replaces_everything(void) {
    qrv_value* tree = dictionary_with("b", 2);
    bool needed = true;
    set_integer("a", 1);
    OK(qrv_settings_import(tree));
    CHECK(integer_in_file("a") == -1 && integer_in_file("b") == 2);
    OK(qrv_settings_migration_needed(&needed));
    CHECK(!needed);
    OK(qrv_settings_perform_migration());
    qrv_value_release(tree);
}

static void a_profile_has_its_own_settings(void) {
    qrv_value* value = NULL;
    OK(qrv_store_load_defaults());
    OK(qrv_store_set_active_profile("Work"));
    OK(qrv_store_active_profile(&value));
    check_text(value, "Work");
    OK(qrv_settings_profile_key(width, &value));
    check_text(value, "Profiles.Settings.Work.CPU.Menubar.Mode.HistoryGraph.Width");
    value = integer_value(50);
    OK(qrv_settings_profile_set_object(value, width));
    OK(qrv_settings_profile_set_object_with_cache(value, "UpdateFrequency", false));
    qrv_value_release(value);
    CHECK(integer_at(width) == 40);
    CHECK(integer_at("Profiles.Settings.Work.CPU.Menubar.Mode.HistoryGraph.Width") == 50);
    OK(qrv_settings_profile_clear_cache(width));
    OK(qrv_settings_profile_object(width, &value));
    check_kind(value, QRV_KIND_INTEGER);
    OK(qrv_store_set_active_profile(NULL));
    OK(qrv_store_active_profile(&value));
    check_kind(value, QRV_KIND_NULL);
}

static void an_appearance_is_dark_or_light(void) {
    qrv_value* value = NULL;
    OK(qrv_settings_current_appearance(&value));
    check_kind(value, QRV_KIND_NULL);
    OK(qrv_settings_set_current_appearance("NSAppearanceNameDarkAqua"));
    OK(qrv_settings_current_appearance(&value));
    check_text(value, "Dark");
    OK(qrv_settings_set_current_appearance(NULL));
    OK(qrv_store_current_appearance(&value));
    check_text(value, "Light");
    OK(qrv_settings_menu_theme("NSAppearanceNameVibrantDark", &value));
    check_text(value, "dark");
    OK(qrv_settings_menu_theme(NULL, &value));
    check_text(value, "light");
}

static void a_colour_is_stored_as_text(void) {
    const char* const key_path = "Network.Menubar.Mode.Status.NoIP.Color";
    const qrv_color orange = {1, 0.5, 0, 1};
    qrv_color color = {0, 0, 0, 0};
    qrv_value* value = NULL;
    OK(qrv_store_load_defaults());
    OK(qrv_value_create_color(orange, &value));
    OK(qrv_settings_set_color(value, key_path));
    qrv_value_release(value);
    OK(qrv_settings_stored_object(key_path, &value));
    check_text(value, "1 0.5 0 1");
    OK(qrv_settings_color(key_path, &value));
    OK(qrv_value_get_color(value, &color));
    CHECK(color.red == 1 && color.green == 0.5 && color.blue == 0 && color.alpha == 1);
    qrv_value_release(value);
}

static void only_a_colour_is_written_as_one(void) {
    qrv_value* value = integer_value(1);
    FAILS(QRV_ERROR_INVALID_ARGUMENT, qrv_settings_set_color(value, "a"));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_settings_set_color(NULL, "a"));
    qrv_value_release(value);
}

static void the_null_key_path_has_no_value(void) {
    qrv_value* value = NULL;
    bool boolean = true;
    OK(qrv_settings_object(NULL, &value));
    check_kind(value, QRV_KIND_NULL);
    OK(qrv_settings_default(NULL, &value));
    check_kind(value, QRV_KIND_NULL);
    OK(qrv_settings_stored_object(NULL, &value));
    check_kind(value, QRV_KIND_NULL);
    OK(qrv_settings_profile_object(NULL, &value));
    check_kind(value, QRV_KIND_NULL);
    OK(qrv_settings_color(NULL, &value));
    check_kind(value, QRV_KIND_NULL);
    OK(qrv_settings_bool(NULL, &boolean));
    CHECK(!boolean);
    OK(qrv_settings_clear_cache(NULL));
}

static void a_key_path_that_leads_nowhere_is_an_error(void) {
    qrv_value* value = integer_value(1);
    FAILS(QRV_ERROR_INVALID_ARGUMENT, qrv_settings_set_object(value, NULL));
    FAILS(QRV_ERROR_INVALID_ARGUMENT, qrv_settings_set_object_with_cache(value, NULL, false));
    set_integer("leaf", 1);
    FAILS(QRV_ERROR_INVALID_ARGUMENT, qrv_settings_set_object(value, "leaf.below"));
    CHECK(integer_in_file("leaf") == 1);
    qrv_value_release(value);
}

static void a_key_path_that_is_not_utf8_is_an_error(void) {
    const char* const broken = "CPU.\xE4";
    qrv_value* value = integer_value(1);
    qrv_value* result = NULL;
    bool boolean = false;
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_object(broken, &result));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_default(broken, &result));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_stored_object(broken, &result));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_bool(broken, &boolean));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_color(broken, &result));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_set_color(value, broken));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_set_object(value, broken));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_set_object_with_cache(value, broken, false));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_clear_cache(broken));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_remove_empty_levels_above(broken));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_profile_key(broken, &result));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_profile_object(broken, &result));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_profile_set_object(value, broken));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_profile_set_object_with_cache(value, broken, false));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_profile_clear_cache(broken));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_set_current_appearance(broken));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_settings_menu_theme(broken, &result));
    CHECK(result == NULL);
    qrv_value_release(value);
}

static void only_a_dictionary_is_saved_as_a_tree(void) {
    qrv_value* number = integer_value(1);
    qrv_value* tree = dictionary_with("a", 1);
    FAILS(QRV_ERROR_WRONG_KIND, qrv_settings_import(number));
    FAILS(QRV_ERROR_WRONG_KIND, qrv_settings_save_object(number));
    FAILS(QRV_ERROR_WRONG_KIND, qrv_settings_save_object_with_log(number, number));
    FAILS(QRV_ERROR_WRONG_KIND, qrv_settings_save_object_with_log(tree, number));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_settings_save_object_with_log(tree, NULL));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_settings_import(NULL));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_settings_save_object(NULL));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_settings_set_object(NULL, "a"));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_settings_profile_set_object(NULL, "a"));
    qrv_value_release(number);
    qrv_value_release(tree);
}

/// In the folder of the site that every test has.
static void write_site_file(const char* ending, const char* contents) {
    qrv_value* location = NULL;
    const char* path = NULL;
    size_t length = 0;
    char site_path[256];
    OK(qrv_settings_location(&location));
    OK(qrv_value_get_string(location, &path, &length));
    snprintf(site_path, sizeof site_path, "site/Preferences%s%s", strrchr(path, '/'), ending);
    FILE* const file = fopen(site_path, "w");
    CHECK(file != NULL && fputs(contents, file) >= 0 && fclose(file) == 0);
    qrv_value_release(location);
}

static void check_ending(qrv_value* value, const char* expected) {
    const char* text = NULL;
    size_t length = 0;
    OK(qrv_value_get_string(value, &text, &length));
    CHECK(length > strlen(expected) && strcmp(text + length - strlen(expected), expected) == 0);
    qrv_value_release(value);
}

static void the_site_gives_defaults_and_locks(void) {
    qrv_value* values = NULL;
    qrv_value* file = NULL;
    bool flag = true;
    CHECK(mkdir("site", 0700) == 0 && mkdir("site/Preferences", 0700) == 0);
    write_site_file("", "{ UpdateFrequency = 7; }");
    write_site_file(".locks", "# nobody changes this\nUpdateFrequency\n");
    OK(qrv_store_uses_site_defaults(&flag));
    CHECK(!flag);
    OK(qrv_store_set_uses_site_defaults(true));
    OK(qrv_store_load_defaults());
    OK(qrv_settings_is_locked("UpdateFrequency", &flag));
    CHECK(flag);
    OK(qrv_settings_is_locked(NULL, &flag));
    CHECK(!flag);
    OK(qrv_settings_site_defaults(&values));
    check_kind(values, QRV_KIND_DICTIONARY);
    set_integer("UpdateFrequency", 3);
    qrv_value* value = NULL;
    OK(qrv_settings_object("UpdateFrequency", &value));
    check_text(value, "7");
    OK(qrv_settings_lock_file("UpdateFrequency", &file));
    check_ending(file, ".menubar.7.plist.locks");
    OK(qrv_settings_site_file("UpdateFrequency", &file));
    check_ending(file, ".menubar.7.plist");
    FAILS(QRV_ERROR_NULL_POINTER, qrv_settings_is_locked("UpdateFrequency", NULL));
}

const test setting_tests[] = {
    {"a read asks the layers in turn", a_read_asks_the_layers_in_turn},
    {"a write reaches the file", a_write_reaches_the_file},
    {"a null value removes a setting", a_null_value_removes_a_setting},
    {"a cleared cache shows what is stored", a_cleared_cache_shows_what_is_stored},
    {"empty levels are removed", empty_levels_are_removed},
    {"a tree is saved as it is", a_tree_is_saved_as_it_is},
    {"a batch is saved by its commit", a_batch_is_saved_by_its_commit},
    {"an import replaces everything", an_import_replaces_everything},
    {"a profile has its own settings", a_profile_has_its_own_settings},
    {"an appearance is dark or light", an_appearance_is_dark_or_light},
    {"a colour is stored as text", a_colour_is_stored_as_text},
    {"only a colour is written as one", only_a_colour_is_written_as_one},
    {"the site gives defaults and locks", the_site_gives_defaults_and_locks},
    {"the null key path has no value", the_null_key_path_has_no_value},
    {"a key path that leads nowhere is an error", a_key_path_that_leads_nowhere_is_an_error},
    {"a key path that is not UTF-8 is an error", a_key_path_that_is_not_utf8_is_an_error},
    {"only a dictionary is saved as a tree", only_a_dictionary_is_saved_as_a_tree},
    {NULL, NULL},
};

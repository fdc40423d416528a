// SPDX-License-Identifier: MIT
#pragma once

/// The settings store for hosts in C11, and in every language that can call C.
///
///     qrv_value* width = NULL;
///     if (qrv_store_load_defaults() != QRV_OK ||  // before the first read
///         qrv_settings_object("CPU.Menubar.Mode.HistoryGraph.Width", &width) != QRV_OK)
///         fprintf(stderr, "%s\n", qrv_last_error());
///     qrv_value_release(width);
///
/// Each function does what its namesake in C++ does; the headers of C++ say what that is:
/// `QRVSettings/QRVSettings.h` for `qrv_settings_...` and, as members of the one object there,
/// `qrv_store_...`, `Platform/Values/PropertyListValue.h` for `qrv_value_...`, and
/// `Platform/Dispatch/Dispatch.h` (`DispatchMainQueue`) for `qrv_main_queue_...`. The rules below
/// hold for every function that does not name an exception.
///
/// Errors: the result is QRV_OK or an error, which `qrv_last_error` describes. Outputs are the last
/// parameters, which must not be NULL; after an error they are NULL, 0 or false. No C++ exception
/// leaves a function.
///
/// Ownership: a `qrv_value*` output belongs to the caller, who releases it. Arguments stay the
/// caller's: a function keeps a reference or a copy when it needs one. A pointer into a value is
/// valid as long as the value.
///
/// NULL: no argument may be NULL (QRV_ERROR_NULL_POINTER) except a key path, which is then the null
/// key path of C++. "No value" is a value of the kind QRV_KIND_NULL, and never NULL.
///
/// Text is UTF-8 (else QRV_ERROR_NOT_UTF8) and ends with a zero byte where no length is given.
///
/// Threads: those of its namesake for each function. Functions of values and `qrv_last_error` may
/// be called on any thread.
///
/// Later versions may add functions, results and kinds. Meanings and numbers do not change within a
/// major version of the library.

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include "Platform/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/// @name Errors
/// @{

typedef int32_t qrv_result;
enum {
    QRV_OK = 0,
    QRV_ERROR_NULL_POINTER = 1,
    QRV_ERROR_WRONG_KIND = 2,        ///< the value is of another kind
    QRV_ERROR_OUT_OF_RANGE = 3,      ///< an index past the end, an integer that does not fit
    QRV_ERROR_NOT_UTF8 = 4,          ///< text, or a key path
    QRV_ERROR_INVALID_ARGUMENT = 5,  ///< refused by the store: NSInvalidArgumentException
    QRV_ERROR_OUT_OF_MEMORY = 6,
    QRV_ERROR_SYSTEM = 7,  ///< refused by the system
    QRV_ERROR_FAILED = 8,  ///< anything else
};

/// A description of this thread's last error; "" when there was none. Valid until the next error of
/// this thread; success does not change it.
QRV_EXPORT const char* qrv_last_error(void);
/// @}

/// @name Values
/// A value never changes, except dictionaries and arrays that the store returned: they are its own
/// objects, and later writes may change them.
/// @{

typedef struct qrv_value qrv_value;

typedef int32_t qrv_kind;
enum {
    QRV_KIND_NULL = 0,  ///< no value
    QRV_KIND_BOOLEAN = 1,
    QRV_KIND_INTEGER = 2,  ///< from -2^63 to 2^64-1
    QRV_KIND_REAL = 3,
    QRV_KIND_DATE = 4,
    QRV_KIND_NULL_MARKER = 5,  ///< "no layer holds it", in the cache only
    QRV_KIND_STRING = 6,
    QRV_KIND_DATA = 7,
    QRV_KIND_COLOR = 8,
    QRV_KIND_ARRAY = 9,
    QRV_KIND_DICTIONARY = 10,
};

/// In the sRGB space, 0 to 1 being the usual range.
typedef struct qrv_color {
    double red;
    double green;
    double blue;
    double alpha;
} qrv_color;

/// Adds a reference to a value, and returns the value. NULL gives NULL. Cannot fail.
QRV_EXPORT qrv_value* qrv_value_retain(qrv_value* value);
/// Removes a reference; the last one destroys the value. Does nothing for NULL. Cannot fail.
QRV_EXPORT void qrv_value_release(qrv_value* value);

QRV_EXPORT qrv_result qrv_value_create_null(qrv_value** value);
QRV_EXPORT qrv_result qrv_value_create_null_marker(qrv_value** value);
QRV_EXPORT qrv_result qrv_value_create_boolean(bool boolean, qrv_value** value);
QRV_EXPORT qrv_result qrv_value_create_integer(int64_t integer, qrv_value** value);
QRV_EXPORT qrv_result qrv_value_create_unsigned(uint64_t integer, qrv_value** value);
QRV_EXPORT qrv_result qrv_value_create_real(double real, qrv_value** value);
/// An instant in seconds since 1970-01-01 00:00:00 UTC.
QRV_EXPORT qrv_result qrv_value_create_date(double seconds, qrv_value** value);
/// `length` bytes of text, which may include zero bytes. `text` may be NULL when `length` is 0.
QRV_EXPORT qrv_result qrv_value_create_string(const char* text, size_t length, qrv_value** value);
/// `bytes` may be NULL when `length` is 0.
QRV_EXPORT qrv_result qrv_value_create_data(const void* bytes, size_t length, qrv_value** value);
QRV_EXPORT qrv_result qrv_value_create_color(qrv_color color, qrv_value** value);
/// An array of the `count` values at `elements`. None may be of the kind QRV_KIND_NULL
/// (QRV_ERROR_INVALID_ARGUMENT). `elements` may be NULL when `count` is 0.
QRV_EXPORT qrv_result qrv_value_create_array(const qrv_value* const* elements, size_t count,
                                             qrv_value** value);
/// Likewise a dictionary, in which `elements[i]` is the value of `keys[i]`. Of two equal keys the
/// later one wins.
QRV_EXPORT qrv_result qrv_value_create_dictionary(const char* const* keys,
                                                  const qrv_value* const* elements, size_t count,
                                                  qrv_value** value);

/// One of the kinds above, or a number that a later version adds; QRV_KIND_NULL for NULL. Cannot
/// fail.
QRV_EXPORT qrv_kind qrv_value_kind(const qrv_value* value);

/// @name Exact contents; QRV_ERROR_WRONG_KIND for a value of another kind
/// @{
QRV_EXPORT qrv_result qrv_value_get_boolean(const qrv_value* value, bool* boolean);
/// QRV_ERROR_OUT_OF_RANGE above 2^63-1.
QRV_EXPORT qrv_result qrv_value_get_integer(const qrv_value* value, int64_t* integer);
/// QRV_ERROR_OUT_OF_RANGE below 0.
QRV_EXPORT qrv_result qrv_value_get_unsigned(const qrv_value* value, uint64_t* integer);
QRV_EXPORT qrv_result qrv_value_get_real(const qrv_value* value, double* real);
/// Seconds since 1970-01-01 00:00:00 UTC.
QRV_EXPORT qrv_result qrv_value_get_date(const qrv_value* value, double* seconds);
/// The characters, inside the value and followed by a zero byte, and their number of bytes. Text
/// from a file is UTF-8; text that a host in C++ wrote may be something else.
QRV_EXPORT qrv_result qrv_value_get_string(const qrv_value* value, const char** text,
                                           size_t* length);
/// The bytes, inside the value, and their number.
QRV_EXPORT qrv_result qrv_value_get_data(const qrv_value* value, const void** bytes,
                                         size_t* length);
QRV_EXPORT qrv_result qrv_value_get_color(const qrv_value* value, qrv_color* color);
/// The number of elements of an array, or of entries of a dictionary.
QRV_EXPORT qrv_result qrv_value_get_count(const qrv_value* value, size_t* count);
QRV_EXPORT qrv_result qrv_value_get_element(const qrv_value* array, size_t index,
                                            qrv_value** element);
/// A value of the kind QRV_KIND_NULL when there is no such key.
QRV_EXPORT qrv_result qrv_value_get_entry(const qrv_value* dictionary, const char* key,
                                          qrv_value** element);
/// The keys and the values of a dictionary at one moment, two arrays in the same order, which is
/// not defined. Both are released by the caller.
QRV_EXPORT qrv_result qrv_value_get_entries(const qrv_value* dictionary, qrv_value** keys,
                                            qrv_value** elements);
/// @}

/// @name Lenient conversions, defined for every kind
/// @{
QRV_EXPORT qrv_result qrv_value_as_boolean(const qrv_value* value, bool* boolean);
QRV_EXPORT qrv_result qrv_value_as_integer(const qrv_value* value, int64_t* integer);
QRV_EXPORT qrv_result qrv_value_as_real(const qrv_value* value, double* real);
/// A value of the kind QRV_KIND_STRING.
QRV_EXPORT qrv_result qrv_value_as_string(const qrv_value* value, qrv_value** text);
/// @}

QRV_EXPORT qrv_result qrv_value_equal(const qrv_value* left, const qrv_value* right, bool* equal);
/// One line of text for people and logs, as a string value.
QRV_EXPORT qrv_result qrv_value_description(const qrv_value* value, qrv_value** text);
/// @}

/// @name Calling back
/// `context` is passed on unchanged, and may be NULL. `destroy` may be NULL too; it is called with
/// `context` exactly once, when that is no longer needed or when the function that took it fails.
/// No C++ exception may leave these functions.
/// @{

typedef void (*qrv_destroy)(void* context);
/// `key_paths` is an array of strings, valid during the call: retain it to keep it.
typedef void (*qrv_change_handler)(qrv_value* key_paths, void* context);
typedef void (*qrv_work)(void* context);
/// @}

/// @name The store
/// @{
QRV_EXPORT qrv_result qrv_store_exists(bool* exists);
QRV_EXPORT qrv_result qrv_store_load_defaults(void);
/// A string, or null.
QRV_EXPORT qrv_result qrv_store_device_id(qrv_value** device_id);
/// A string, or null.
QRV_EXPORT qrv_result qrv_store_model_identifier(qrv_value** model_identifier);
QRV_EXPORT qrv_result qrv_store_prepare(void);
QRV_EXPORT qrv_result qrv_store_migrate(void);

QRV_EXPORT qrv_result qrv_store_monitor_file_changes(bool* monitor);
QRV_EXPORT qrv_result qrv_store_set_monitor_file_changes(bool monitor);
QRV_EXPORT qrv_result qrv_store_merges_saves(bool* merges);
QRV_EXPORT qrv_result qrv_store_set_merges_saves(bool merges);
QRV_EXPORT qrv_result qrv_store_uses_site_defaults(bool* uses);
QRV_EXPORT qrv_result qrv_store_set_uses_site_defaults(bool uses);
/// -1 for as long as it takes.
QRV_EXPORT qrv_result qrv_store_save_lock_timeout(int64_t* milliseconds);
/// A negative number for as long as it takes.
QRV_EXPORT qrv_result qrv_store_set_save_lock_timeout(int64_t milliseconds);
QRV_EXPORT qrv_result qrv_store_disable_cache(bool* disable);
QRV_EXPORT qrv_result qrv_store_set_disable_cache(bool disable);
QRV_EXPORT qrv_result qrv_store_prepared(bool* prepared);
QRV_EXPORT qrv_result qrv_store_set_prepared(bool prepared);
/// A string, or null.
QRV_EXPORT qrv_result qrv_store_active_profile(qrv_value** profile);
/// NULL for no profile.
QRV_EXPORT qrv_result qrv_store_set_active_profile(const char* profile);
/// NULL removes the handler. The old handler's context is destroyed on this thread, after the old
/// handler has returned when it is running.
QRV_EXPORT qrv_result qrv_store_set_on_change(qrv_change_handler handler, void* context,
                                              qrv_destroy destroy);

/// A string.
QRV_EXPORT qrv_result qrv_store_location(qrv_value** location);
/// A dictionary, or null.
QRV_EXPORT qrv_result qrv_store_defaults(qrv_value** defaults);
/// A dictionary, or null.
QRV_EXPORT qrv_result qrv_store_cache(qrv_value** cache);
/// A dictionary, or null.
QRV_EXPORT qrv_result qrv_store_storage_cache(qrv_value** storage_cache);
QRV_EXPORT qrv_result qrv_store_current_appearance(qrv_value** appearance);
QRV_EXPORT qrv_result qrv_store_in_batch_save(bool* in_batch_save);
/// An array of dictionaries.
QRV_EXPORT qrv_result qrv_store_local_changes(qrv_value** changes);
/// An array of dictionaries.
QRV_EXPORT qrv_result qrv_store_batch_log_changes(qrv_value** changes);
/// A date, or null.
QRV_EXPORT qrv_result qrv_store_modification_date(qrv_value** date);
/// Returns when the saves queued so far have run, whatever became of them: `queue().sync`. Any
/// thread. `qrv_settings_wait_for_saves` has a timeout, and tells what failed.
QRV_EXPORT qrv_result qrv_store_wait_for_saves(void);
/// @}

/// @name Reading
/// @{
/// A string.
QRV_EXPORT qrv_result qrv_settings_location(qrv_value** location);
/// A dictionary, or null.
QRV_EXPORT qrv_result qrv_settings_storage(qrv_value** storage);
/// A dictionary, or null.
QRV_EXPORT qrv_result qrv_settings_stored_values(qrv_value** values);
QRV_EXPORT qrv_result qrv_settings_stored_object(const char* key_path, qrv_value** value);
QRV_EXPORT qrv_result qrv_settings_object(const char* key_path, qrv_value** value);
QRV_EXPORT qrv_result qrv_settings_default(const char* key_path, qrv_value** value);
QRV_EXPORT qrv_result qrv_settings_bool(const char* key_path, bool* boolean);
/// @}

/// @name Writing
/// A value of the kind QRV_KIND_NULL removes the setting.
/// @{
QRV_EXPORT qrv_result qrv_settings_set_object_with_cache(const qrv_value* value,
                                                         const char* key_path, bool with_cache);
QRV_EXPORT qrv_result qrv_settings_set_object(const qrv_value* value, const char* key_path);
QRV_EXPORT qrv_result qrv_settings_remove_empty_levels_above(const char* key_path);
/// A dictionary, and an array of dictionaries or null.
QRV_EXPORT qrv_result qrv_settings_save_object_with_log(const qrv_value* object,
                                                        const qrv_value* log);
/// A dictionary.
QRV_EXPORT qrv_result qrv_settings_save_object(const qrv_value* object);
QRV_EXPORT qrv_result qrv_settings_clear_cache(const char* key_path);
QRV_EXPORT qrv_result qrv_settings_synchronize(void);

typedef int32_t qrv_save_state;
enum {
    QRV_SAVE_STATE_SAVED = 0,
    QRV_SAVE_STATE_FAILED = 1,
    QRV_SAVE_STATE_PENDING = 2,
};
/// `key_paths` is an array of strings, `reason` a string: the members of QRVSaveStatus.
QRV_EXPORT qrv_result qrv_settings_wait_for_saves(int64_t milliseconds, qrv_save_state* state,
                                                  qrv_value** key_paths, qrv_value** reason);
/// @}

/// @name Batches and import
/// @{
QRV_EXPORT qrv_result qrv_settings_prepare_batch_save(void);
QRV_EXPORT qrv_result qrv_settings_commit_batch_save(void);
/// A dictionary.
QRV_EXPORT qrv_result qrv_settings_import(const qrv_value* settings);
QRV_EXPORT qrv_result qrv_settings_migration_needed(bool* needed);
QRV_EXPORT qrv_result qrv_settings_perform_migration(void);
/// @}

/// @name Settings of the active profile
/// @{
/// A string.
QRV_EXPORT qrv_result qrv_settings_profile_key(const char* key_path, qrv_value** profile_key_path);
QRV_EXPORT qrv_result qrv_settings_profile_object(const char* key_path, qrv_value** value);
QRV_EXPORT qrv_result qrv_settings_profile_set_object_with_cache(const qrv_value* value,
                                                                 const char* key_path,
                                                                 bool with_cache);
QRV_EXPORT qrv_result qrv_settings_profile_set_object(const qrv_value* value, const char* key_path);
QRV_EXPORT qrv_result qrv_settings_profile_clear_cache(const char* key_path);
/// @}

/// @name Defaults and locks of the site
/// @{
QRV_EXPORT qrv_result qrv_settings_is_locked(const char* key_path, bool* locked);
/// A string.
QRV_EXPORT qrv_result qrv_settings_lock_file(const char* key_path, qrv_value** file);
/// A string.
QRV_EXPORT qrv_result qrv_settings_site_file(const char* key_path, qrv_value** file);
/// A dictionary, or null: the member `values`.
QRV_EXPORT qrv_result qrv_settings_site_defaults(qrv_value** values);
/// @}

/// @name Appearance of the menu bar
/// The name of an appearance may be NULL.
/// @{
QRV_EXPORT qrv_result qrv_settings_set_current_appearance(const char* appearance_name);
QRV_EXPORT qrv_result qrv_settings_current_appearance(qrv_value** appearance);
/// A string.
QRV_EXPORT qrv_result qrv_settings_menu_theme(const char* appearance_name, qrv_value** theme);
/// @}

/// @name Colours
/// @{
/// A colour, null, or what another read has cached under the key path.
QRV_EXPORT qrv_result qrv_settings_color(const char* key_path, qrv_value** color);
QRV_EXPORT qrv_result qrv_settings_set_color(const qrv_value* color, const char* key_path);
/// @}

/// @name The main queue
/// @{
/// -1 while the system has no descriptor left; each call tries again.
QRV_EXPORT qrv_result qrv_main_queue_fd(int32_t* fd);
/// The number of items that were run.
QRV_EXPORT qrv_result qrv_main_queue_drain(size_t* count);
QRV_EXPORT qrv_result qrv_main_queue_run(void);
QRV_EXPORT qrv_result qrv_main_queue_stop(void);
QRV_EXPORT qrv_result qrv_main_queue_wait(int64_t nanoseconds, bool* has_work);
/// The context is destroyed on the main thread after the work.
QRV_EXPORT qrv_result qrv_main_queue_async(qrv_work work, void* context, qrv_destroy destroy);
/// The context is destroyed on the main thread after the work.
QRV_EXPORT qrv_result qrv_main_queue_async_after(int64_t nanoseconds, qrv_work work, void* context,
                                                 qrv_destroy destroy);
/// @}

#ifdef __cplusplus
}  // extern "C"
#endif

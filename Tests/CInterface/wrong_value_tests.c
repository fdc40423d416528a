// SPDX-License-Identifier: MIT
// What is no value, or another value than was asked for, gives an error.

#include <string.h>

#include "testing.h"

static void another_kind_is_an_error(void) {
    qrv_value* value = string_value("text");
    qrv_value* element = value;
    qrv_value* elements = value;
    bool boolean = true;
    int64_t integer = 1;
    uint64_t natural = 1;
    double real = 1;
    size_t length = 1;
    const void* bytes = "x";
    qrv_color color = {1, 1, 1, 1};
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_boolean(value, &boolean));
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_integer(value, &integer));
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_unsigned(value, &natural));
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_real(value, &real));
    CHECK(!boolean && integer == 0 && natural == 0 && real == 0);
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_date(value, &real));
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_data(value, &bytes, &length));
    CHECK(bytes == NULL && length == 0);
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_color(value, &color));
    CHECK(color.red == 0 && color.alpha == 0);
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_count(value, &length));
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_element(value, 0, &element));
    CHECK(element == NULL);
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_entry(value, "a", &element));
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_entries(value, &element, &elements));
    CHECK(element == NULL && elements == NULL);
    qrv_value_release(value);
}

static void no_string_is_an_error(void) {
    qrv_value* value = integer_value(1);
    const char* text = "x";
    size_t length = 1;
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_string(value, &text, &length));
    CHECK(text == NULL && length == 0);
    CHECK(strstr(qrv_last_error(), "1") != NULL);
    qrv_value_release(value);
}

static void a_missing_value_is_an_error(void) {
    qrv_value* value = integer_value(1);
    qrv_value* result = NULL;
    bool boolean = true;
    int64_t integer = 0;
    double real = 0;
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_get_boolean(NULL, &boolean));
    CHECK(!boolean);
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_equal(value, NULL, &boolean));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_equal(NULL, value, &boolean));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_as_boolean(NULL, &boolean));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_as_integer(NULL, &integer));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_as_real(NULL, &real));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_as_string(NULL, &result));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_description(NULL, &result));
    qrv_value_release(value);
}

static void a_result_without_a_place_is_an_error(void) {
    qrv_value* value = integer_value(1);
    size_t length = 0;
    const char* text = NULL;
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_create_null(NULL));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_get_integer(value, NULL));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_get_string(value, NULL, &length));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_get_string(value, &text, NULL));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_get_entries(value, NULL, NULL));
    qrv_value_release(value);
}

static void text_that_is_not_utf8_is_an_error(void) {
    qrv_value* value = integer_value(1);
    const qrv_value* const elements[] = {value};
    const char* const keys[] = {"\xC3"};
    qrv_value* result = NULL;
    FAILS(QRV_ERROR_NOT_UTF8, qrv_value_create_string("ab\xFF", 3, &result));
    CHECK(result == NULL);
    CHECK(strstr(qrv_last_error(), "byte 2") != NULL);
    FAILS(QRV_ERROR_NOT_UTF8, qrv_value_create_dictionary(keys, elements, 1, &result));
    qrv_value_release(value);
}

static void text_that_is_not_there_is_an_error(void) {
    qrv_value* result = NULL;
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_create_string(NULL, 1, &result));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_create_data(NULL, 1, &result));
}

static void a_container_holds_no_null(void) {
    qrv_value* null = NULL;
    qrv_value* result = NULL;
    OK(qrv_value_create_null(&null));
    const qrv_value* const elements[] = {null};
    const qrv_value* const missing[] = {NULL};
    const char* const keys[] = {"a"};
    const char* const missing_keys[] = {NULL};
    FAILS(QRV_ERROR_INVALID_ARGUMENT, qrv_value_create_array(elements, 1, &result));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_create_array(missing, 1, &result));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_create_array(NULL, 1, &result));
    FAILS(QRV_ERROR_INVALID_ARGUMENT, qrv_value_create_dictionary(keys, elements, 1, &result));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_create_dictionary(keys, missing, 1, &result));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_create_dictionary(missing_keys, elements, 1, &result));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_create_dictionary(NULL, NULL, 1, &result));
    CHECK(result == NULL);
    qrv_value_release(null);
}

static void an_index_past_the_end_is_an_error(void) {
    qrv_value* array = NULL;
    qrv_value* element = NULL;
    OK(qrv_value_create_array(NULL, 0, &array));
    FAILS(QRV_ERROR_OUT_OF_RANGE, qrv_value_get_element(array, 0, &element));
    FAILS(QRV_ERROR_OUT_OF_RANGE, qrv_value_get_element(array, SIZE_MAX, &element));
    CHECK(element == NULL);
    qrv_value_release(array);
}

static void a_wrong_key_is_an_error(void) {
    qrv_value* dictionary = NULL;
    qrv_value* element = NULL;
    OK(qrv_value_create_dictionary(NULL, NULL, 0, &dictionary));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_value_get_entry(dictionary, NULL, &element));
    FAILS(QRV_ERROR_NOT_UTF8, qrv_value_get_entry(dictionary, "\xFF", &element));
    qrv_value_release(dictionary);
}

static void success_leaves_the_last_error(void) {
    qrv_value* result = NULL;
    CHECK(qrv_last_error()[0] == '\0');
    FAILS(QRV_ERROR_NOT_UTF8, qrv_value_create_string("\xFF", 1, &result));
    OK(qrv_value_create_null(&result));
    CHECK(strstr(qrv_last_error(), "UTF-8") != NULL);
    qrv_value_release(result);
}

const test wrong_value_tests[] = {
    {"another kind is an error", another_kind_is_an_error},
    {"no string is an error", no_string_is_an_error},
    {"a missing value is an error", a_missing_value_is_an_error},
    {"a result without a place is an error", a_result_without_a_place_is_an_error},
    {"text that is not UTF-8 is an error", text_that_is_not_utf8_is_an_error},
    {"text that is not there is an error", text_that_is_not_there_is_an_error},
    {"a container holds no null", a_container_holds_no_null},
    {"an index past the end is an error", an_index_past_the_end_is_an_error},
    {"a wrong key is an error", a_wrong_key_is_an_error},
    {"success leaves the last error", success_leaves_the_last_error},
    {NULL, NULL},
};

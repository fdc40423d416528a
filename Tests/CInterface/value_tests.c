// SPDX-License-Identifier: MIT
// Values: made, looked into, converted, compared, shared.

#include <pthread.h>
#include <string.h>

#include "testing.h"

static void null_is_a_value(void) {
    qrv_value* null = NULL;
    OK(qrv_value_create_null(&null));
    check_kind(null, QRV_KIND_NULL);
    OK(qrv_value_create_null_marker(&null));
    check_kind(null, QRV_KIND_NULL_MARKER);
    CHECK(qrv_value_kind(NULL) == QRV_KIND_NULL);
}

static void booleans_are_no_numbers(void) {
    qrv_value* value = NULL;
    qrv_value* one = integer_value(1);
    bool boolean = false;
    bool equal = true;
    OK(qrv_value_create_boolean(true, &value));
    OK(qrv_value_get_boolean(value, &boolean));
    CHECK(boolean);
    OK(qrv_value_equal(value, one, &equal));
    CHECK(!equal);
    qrv_value_release(one);
    check_kind(value, QRV_KIND_BOOLEAN);
}

static void integers_have_64_bits_of_either_sign(void) {
    qrv_value* value = integer_value(INT64_MIN);
    int64_t integer = 0;
    uint64_t natural = 0;
    OK(qrv_value_get_integer(value, &integer));
    CHECK(integer == INT64_MIN);
    qrv_value_release(value);
    OK(qrv_value_create_unsigned(UINT64_MAX, &value));
    OK(qrv_value_get_unsigned(value, &natural));
    CHECK(natural == UINT64_MAX);
    check_kind(value, QRV_KIND_INTEGER);
}

static void an_integer_is_never_cut(void) {
    qrv_value* value = integer_value(-1);
    int64_t integer = 7;
    uint64_t natural = 7;
    FAILS(QRV_ERROR_OUT_OF_RANGE, qrv_value_get_unsigned(value, &natural));
    CHECK(natural == 0);
    qrv_value_release(value);
    OK(qrv_value_create_unsigned((uint64_t)INT64_MAX + 1, &value));
    FAILS(QRV_ERROR_OUT_OF_RANGE, qrv_value_get_integer(value, &integer));
    CHECK(integer == 0);
    qrv_value_release(value);
}

static void reals_and_dates_keep_their_double(void) {
    qrv_value* value = NULL;
    double number = 0;
    OK(qrv_value_create_real(0.1, &value));
    OK(qrv_value_get_real(value, &number));
    CHECK(number == 0.1);
    check_kind(value, QRV_KIND_REAL);
    OK(qrv_value_create_date(1577836800.5, &value));
    OK(qrv_value_get_date(value, &number));
    CHECK(number == 1577836800.5);
    check_kind(value, QRV_KIND_DATE);
}

static void a_string_may_hold_a_zero_byte(void) {
    qrv_value* value = NULL;
    const char* text = NULL;
    size_t length = 0;
    OK(qrv_value_create_string("a\0\xC3\xA4", 4, &value));
    OK(qrv_value_get_string(value, &text, &length));
    CHECK(length == 4);
    CHECK(memcmp(text, "a\0\xC3\xA4", 5) == 0);
    check_kind(value, QRV_KIND_STRING);
    OK(qrv_value_create_string(NULL, 0, &value));
    check_text(value, "");
}

static void data_keeps_its_bytes(void) {
    qrv_value* value = NULL;
    const void* bytes = NULL;
    size_t length = 0;
    OK(qrv_value_create_data("\0\xFF\x80", 3, &value));
    OK(qrv_value_get_data(value, &bytes, &length));
    CHECK(length == 3);
    CHECK(memcmp(bytes, "\0\xFF\x80", 3) == 0);
    check_kind(value, QRV_KIND_DATA);
    OK(qrv_value_create_data(NULL, 0, &value));
    OK(qrv_value_get_data(value, &bytes, &length));
    CHECK(length == 0);
    check_kind(value, QRV_KIND_DATA);
}

static void a_colour_has_four_components(void) {
    const qrv_color orange = {1, 0.5, 0.25, 0.75};
    qrv_color color = {0, 0, 0, 0};
    qrv_value* value = NULL;
    OK(qrv_value_create_color(orange, &value));
    OK(qrv_value_get_color(value, &color));
    CHECK(color.red == 1 && color.green == 0.5 && color.blue == 0.25 && color.alpha == 0.75);
    check_kind(value, QRV_KIND_COLOR);
}

static void an_array_holds_its_elements_in_order(void) {
    qrv_value* first = string_value("a");
    qrv_value* second = integer_value(2);
    const qrv_value* const elements[] = {first, second};
    qrv_value* array = NULL;
    qrv_value* element = NULL;
    size_t count = 0;
    OK(qrv_value_create_array(elements, 2, &array));
    qrv_value_release(first);
    qrv_value_release(second);
    OK(qrv_value_get_count(array, &count));
    CHECK(count == 2);
    OK(qrv_value_get_element(array, 0, &element));
    check_text(element, "a");
    OK(qrv_value_get_element(array, 1, &element));
    check_kind(element, QRV_KIND_INTEGER);
    check_kind(array, QRV_KIND_ARRAY);
    OK(qrv_value_create_array(NULL, 0, &array));
    OK(qrv_value_get_count(array, &count));
    CHECK(count == 0);
    qrv_value_release(array);
}

static qrv_value* dictionary_of(const char* key, const char* other_key) {
    const char* const keys[] = {key, other_key};
    qrv_value* first = string_value("first");
    qrv_value* second = string_value("second");
    const qrv_value* const elements[] = {first, second};
    qrv_value* dictionary = NULL;
    OK(qrv_value_create_dictionary(keys, elements, 2, &dictionary));
    qrv_value_release(first);
    qrv_value_release(second);
    return dictionary;
}

static void a_dictionary_answers_by_key(void) {
    qrv_value* dictionary = dictionary_of("a", "b");
    qrv_value* element = NULL;
    size_t count = 0;
    OK(qrv_value_get_count(dictionary, &count));
    CHECK(count == 2);
    OK(qrv_value_get_entry(dictionary, "b", &element));
    check_text(element, "second");
    OK(qrv_value_get_entry(dictionary, "c", &element));
    check_kind(element, QRV_KIND_NULL);
    check_kind(dictionary, QRV_KIND_DICTIONARY);
}

static void of_two_equal_keys_the_later_one_wins(void) {
    qrv_value* dictionary = dictionary_of("a", "a");
    qrv_value* element = NULL;
    OK(qrv_value_get_entry(dictionary, "a", &element));
    check_text(element, "second");
    qrv_value_release(dictionary);
}

static void keys_and_values_come_in_one_order(void) {
    qrv_value* dictionary = dictionary_of("a", "b");
    qrv_value* keys = NULL;
    qrv_value* elements = NULL;
    size_t count = 0;
    OK(qrv_value_get_entries(dictionary, &keys, &elements));
    OK(qrv_value_get_count(keys, &count));
    CHECK(count == 2);
    OK(qrv_value_get_count(elements, &count));
    CHECK(count == 2);
    for (size_t index = 0; index < 2; ++index) {
        qrv_value* key = NULL;
        qrv_value* element = NULL;
        const char* text = NULL;
        size_t length = 0;
        OK(qrv_value_get_element(keys, index, &key));
        OK(qrv_value_get_string(key, &text, &length));
        OK(qrv_value_get_element(elements, index, &element));
        check_text(element, text[0] == 'a' ? "first" : "second");
        qrv_value_release(key);
    }
    qrv_value_release(keys);
    qrv_value_release(elements);
    qrv_value_release(dictionary);
}

static void every_kind_converts_leniently(void) {
    qrv_value* text = string_value("12 apples");
    qrv_value* converted = NULL;
    bool boolean = false;
    int64_t integer = 0;
    double real = 0;
    OK(qrv_value_as_boolean(text, &boolean));
    OK(qrv_value_as_integer(text, &integer));
    OK(qrv_value_as_real(text, &real));
    CHECK(boolean && integer == 12 && real == 12);
    qrv_value_release(text);
    qrv_value* number = integer_value(12);
    OK(qrv_value_as_string(number, &converted));
    check_text(converted, "12");
    qrv_value_release(number);
}

static void equality_goes_by_contents(void) {
    qrv_value* left = dictionary_of("a", "b");
    qrv_value* right = dictionary_of("a", "b");
    qrv_value* other = dictionary_of("a", "c");
    bool equal = false;
    OK(qrv_value_equal(left, right, &equal));
    CHECK(equal);
    OK(qrv_value_equal(left, other, &equal));
    CHECK(!equal);
    qrv_value_release(left);
    qrv_value_release(right);
    qrv_value_release(other);
}

static void a_description_is_one_line(void) {
    qrv_value* dictionary = dictionary_of("b", "a");
    qrv_value* text = NULL;
    OK(qrv_value_description(dictionary, &text));
    check_text(text, "{a = \"second\", b = \"first\"}");
    qrv_value_release(dictionary);
}

static void a_value_lives_until_its_last_release(void) {
    qrv_value* value = string_value("kept");
    CHECK(qrv_value_retain(value) == value);
    qrv_value_release(value);
    check_text(value, "kept");
    CHECK(qrv_value_retain(NULL) == NULL);
    qrv_value_release(NULL);
}

static void* use_and_fail(void* value) {
    bool boolean = false;
    CHECK(qrv_last_error()[0] == '\0');
    for (int round = 0; round < 1000; ++round) {
        const char* text = NULL;
        size_t length = 0;
        qrv_value* same = qrv_value_retain(value);
        OK(qrv_value_get_string(same, &text, &length));
        CHECK(strcmp(text, "shared") == 0);
        qrv_value_release(same);
    }
    FAILS(QRV_ERROR_WRONG_KIND, qrv_value_get_boolean(value, &boolean));
    qrv_value_release(value);
    return NULL;
}

static void threads_share_a_value_and_no_error(void) {
    pthread_t threads[2];
    qrv_value* value = string_value("shared");
    for (size_t index = 0; index < 2; ++index)
        CHECK(pthread_create(&threads[index], NULL, use_and_fail, qrv_value_retain(value)) == 0);
    qrv_value_release(value);
    for (size_t index = 0; index < 2; ++index) CHECK(pthread_join(threads[index], NULL) == 0);
    CHECK(qrv_last_error()[0] == '\0');
}

const test value_tests[] = {
    {"null is a value", null_is_a_value},
    {"booleans are no numbers", booleans_are_no_numbers},
    {"integers have 64 bits of either sign", integers_have_64_bits_of_either_sign},
    {"an integer is never cut", an_integer_is_never_cut},
    {"reals and dates keep their double", reals_and_dates_keep_their_double},
    {"a string may hold a zero byte", a_string_may_hold_a_zero_byte},
    {"data keeps its bytes", data_keeps_its_bytes},
    {"a colour has four components", a_colour_has_four_components},
    {"an array holds its elements in order", an_array_holds_its_elements_in_order},
    {"a dictionary answers by key", a_dictionary_answers_by_key},
    {"of two equal keys the later one wins", of_two_equal_keys_the_later_one_wins},
    {"keys and values come in one order", keys_and_values_come_in_one_order},
    {"every kind converts leniently", every_kind_converts_leniently},
    {"equality goes by contents", equality_goes_by_contents},
    {"a description is one line", a_description_is_one_line},
    {"a value lives until its last release", a_value_lives_until_its_last_release},
    {"threads share a value and no error", threads_share_a_value_and_no_error},
    {NULL, NULL},
};

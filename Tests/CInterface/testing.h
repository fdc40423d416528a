// SPDX-License-Identifier: MIT
#pragma once

// Tests in C: each is run in a process and a folder of its own.

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include "QRVSettings/QRVSettingsC.h"

typedef struct test {
    const char* name;
    void (*body)(void);
} test;

/// Each ends with a test without a name.
extern const test value_tests[];
extern const test wrong_value_tests[];
extern const test setting_tests[];
extern const test store_tests[];
extern const test main_queue_tests[];

/// Ends the test as failed when the condition does not hold.
#define CHECK(condition) check((condition), #condition, __FILE__, __LINE__)
void check(bool holds, const char* condition, const char* file, int line);

/// The call succeeds.
#define OK(call) check_result((call), QRV_OK, #call, __FILE__, __LINE__)
/// The call fails with this result, and says why.
#define FAILS(result, call) check_result((call), (result), #call, __FILE__, __LINE__)
void check_result(qrv_result actual, qrv_result expected, const char* call, const char* file,
                  int line);

/// What is written like the contents of a scalar, made or compared and released.
qrv_value* string_value(const char* text);
qrv_value* integer_value(int64_t integer);
void check_text(qrv_value* value, const char* text);
void check_kind(qrv_value* value, qrv_kind kind);

void set_integer(const char* key_path, int64_t integer);
int64_t integer_at(const char* key_path);

/// Counts how often it is called: a `qrv_destroy` for an `int`.
void count_call(void* count);

/// Drains the main queue until the condition holds; the test fails after a deadline.
void drain_until(bool (*condition)(void));

/// Runs `body` in another process, which begins when `other_process_begins` is called.
void prepare_other_process(void (*body)(void));
void other_process_begins(void);

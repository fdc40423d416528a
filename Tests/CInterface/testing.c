// SPDX-License-Identifier: MIT
#define _XOPEN_SOURCE 700

#include "testing.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

void check(bool holds, const char* condition, const char* file, int line) {
    if (holds) return;
    fprintf(stderr, "%s:%d: does not hold: %s; the last error: %s\n", file, line, condition,
            qrv_last_error());
    exit(EXIT_FAILURE);
}

void check_result(qrv_result actual, qrv_result expected, const char* call, const char* file,
                  int line) {
    if (actual != expected) {
        fprintf(stderr, "%s:%d: %d instead of %d (%s): %s\n", file, line, (int)actual,
                (int)expected, qrv_last_error(), call);
        exit(EXIT_FAILURE);
    }
    check(actual == QRV_OK || qrv_last_error()[0] != '\0', call, file, line);
}

qrv_value* string_value(const char* text) {
    qrv_value* value = NULL;
    OK(qrv_value_create_string(text, strlen(text), &value));
    return value;
}

qrv_value* integer_value(int64_t integer) {
    qrv_value* value = NULL;
    OK(qrv_value_create_integer(integer, &value));
    return value;
}

void check_text(qrv_value* value, const char* expected) {
    const char* text = NULL;
    size_t length = 0;
    OK(qrv_value_get_string(value, &text, &length));
    if (strcmp(text, expected) != 0) fprintf(stderr, "\"%s\", not \"%s\"\n", text, expected);
    CHECK(strcmp(text, expected) == 0);
    CHECK(length == strlen(expected));
    qrv_value_release(value);
}

void check_kind(qrv_value* value, qrv_kind kind) {
    CHECK(value != NULL);
    CHECK(qrv_value_kind(value) == kind);
    qrv_value_release(value);
}

void set_integer(const char* key_path, int64_t integer) {
    qrv_value* value = integer_value(integer);
    OK(qrv_settings_set_object(value, key_path));
    qrv_value_release(value);
}

int64_t integer_at(const char* key_path) {
    qrv_value* value = NULL;
    int64_t integer = 0;
    OK(qrv_settings_object(key_path, &value));
    OK(qrv_value_get_integer(value, &integer));
    qrv_value_release(value);
    return integer;
}

void count_call(void* count) {
    ++*(int*)count;
}

void drain_until(bool (*condition)(void)) {
    const time_t deadline = time(NULL) + 20;
    while (!condition()) {
        bool has_work = false;
        size_t count = 0;
        CHECK(time(NULL) < deadline);
        OK(qrv_main_queue_wait(50 * 1000 * 1000, &has_work));
        if (has_work) OK(qrv_main_queue_drain(&count));
    }
}

static pid_t other_process;
static int gate;

void prepare_other_process(void (*body)(void)) {
    int ends[2];
    char byte = 0;
    CHECK(pipe(ends) == 0);
    gate = ends[1];
    other_process = fork();
    CHECK(other_process >= 0);
    if (other_process > 0) return;
    close(ends[1]);
    CHECK(read(ends[0], &byte, 1) == 1);
    body();
    exit(EXIT_SUCCESS);
}

void other_process_begins(void) {
    int status = 0;
    CHECK(write(gate, "x", 1) == 1);
    CHECK(waitpid(other_process, &status, 0) == other_process);
    CHECK(WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS);
}

// SPDX-License-Identifier: MIT
// The main queue: in a loop of the host's own, and in its own.

#define _XOPEN_SOURCE 700

#include <fcntl.h>
#include <poll.h>

#include "testing.h"

static bool is_readable(int32_t fd) {
    struct pollfd entry = {fd, POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
}

static void the_descriptor_is_readable_while_there_is_work(void) {
    int32_t fd = -1;
    int calls = 0;
    int ends = 0;
    size_t count = 0;
    OK(qrv_main_queue_fd(&fd));
    CHECK(fcntl(fd, F_GETFD) == FD_CLOEXEC);
    CHECK(!is_readable(fd));
    OK(qrv_main_queue_async(count_call, &calls, NULL));
    OK(qrv_main_queue_async(count_call, &calls, NULL));
    CHECK(is_readable(fd));
    OK(qrv_main_queue_drain(&count));
    CHECK(count == 2 && calls == 2);
    CHECK(!is_readable(fd));
    OK(qrv_main_queue_async(count_call, &ends, count_call));
    OK(qrv_main_queue_drain(&count));
    CHECK(ends == 2);
}

static void stop(void* context) {
    (void)context;
    OK(qrv_main_queue_stop());
}

static void a_run_ends_by_stop(void) {
    int calls = 0;
    OK(qrv_main_queue_async(count_call, &calls, NULL));
    OK(qrv_main_queue_async_after(1000 * 1000, stop, NULL, NULL));
    OK(qrv_main_queue_run());
    CHECK(calls == 1);
}

static void a_wait_returns_whether_there_is_work(void) {
    bool has_work = true;
    int calls = 0;
    OK(qrv_main_queue_wait(0, &has_work));
    CHECK(!has_work);
    OK(qrv_main_queue_wait(INT64_MIN, &has_work));
    CHECK(!has_work);
    OK(qrv_main_queue_async_after(INT64_MIN, count_call, &calls, NULL));
    OK(qrv_main_queue_wait(INT64_MAX, &has_work));
    CHECK(has_work);
}

static void no_work_is_an_error(void) {
    int ends = 0;
    FAILS(QRV_ERROR_NULL_POINTER, qrv_main_queue_async(NULL, &ends, count_call));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_main_queue_async_after(0, NULL, &ends, count_call));
    CHECK(ends == 2);
    FAILS(QRV_ERROR_NULL_POINTER, qrv_main_queue_fd(NULL));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_main_queue_drain(NULL));
    FAILS(QRV_ERROR_NULL_POINTER, qrv_main_queue_wait(0, NULL));
}

const test main_queue_tests[] = {
    {"the descriptor is readable while there is work",
     the_descriptor_is_readable_while_there_is_work},
    {"a run ends by stop", a_run_ends_by_stop},
    {"a wait returns whether there is work", a_wait_returns_whether_there_is_work},
    {"no work is an error", no_work_is_an_error},
    {NULL, NULL},
};

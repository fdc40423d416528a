// SPDX-License-Identifier: MIT
// The main queue for C.

#include <chrono>
#include <functional>

#include "Platform/Dispatch/Dispatch.h"
#include "QRVSettings/QRVSettingsC+Boundary.h"

using QRVInside::CInterface::Context;
using QRVInside::CInterface::contextOf;
using QRVInside::CInterface::give;
using QRVInside::CInterface::notNull;
using QRVInside::CInterface::perform;

namespace {

DispatchMainQueue& mainQueue() {
    return DispatchMainQueue::shared();
}

std::function<void()> workOf(qrv_work work, void* context, qrv_destroy destroy) {
    Context owned = contextOf(context, destroy);
    return [work = notNull(work, "the work"), owned = std::move(owned)] { work(owned.get()); };
}

}  // namespace

qrv_result qrv_main_queue_fd(int32_t* fd) {
    return give(fd, [] { return mainQueue().fd(); });
}

qrv_result qrv_main_queue_drain(size_t* count) {
    return give(count, [] { return mainQueue().drain(); });
}

qrv_result qrv_main_queue_run(void) {
    return perform([] { mainQueue().run(); });
}

qrv_result qrv_main_queue_stop(void) {
    return perform([] { mainQueue().stop(); });
}

qrv_result qrv_main_queue_wait(int64_t nanoseconds, bool* has_work) {
    return give(has_work, [&] { return mainQueue().wait(std::chrono::nanoseconds(nanoseconds)); });
}

qrv_result qrv_main_queue_async(qrv_work work, void* context, qrv_destroy destroy) {
    return perform([&] { mainQueue().async(workOf(work, context, destroy)); });
}

qrv_result qrv_main_queue_async_after(int64_t nanoseconds, qrv_work work, void* context,
                                      qrv_destroy destroy) {
    return perform([&] {
        mainQueue().asyncAfter(std::chrono::nanoseconds(nanoseconds),
                               workOf(work, context, destroy));
    });
}

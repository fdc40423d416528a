// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "Platform/Dispatch/MainQueueSignal.h"

namespace QRVPlatform {

// An epoll descriptor over the two others, because it cannot be read: a child that was made without
// the fork handlers (vfork, clone) still cannot consume the parent's wake-up.

namespace {

FileDescriptor makeReadyDescriptor() {
    return FileDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
}

FileDescriptor makeTimerDescriptor() {
    return FileDescriptor(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
}

FileDescriptor makePollDescriptor() {
    return FileDescriptor(epoll_create1(EPOLL_CLOEXEC));
}

bool watch(const FileDescriptor& poll, const FileDescriptor& watched) {
    epoll_event event{};
    event.events = EPOLLIN;
    return epoll_ctl(poll.number(), EPOLL_CTL_ADD, watched.number(), &event) == 0;
}

/// The new descriptor under the number that `shared` has.
FileDescriptor replacement(FileDescriptor shared) {
    const int number = shared.number();
    shared.close();
    FileDescriptor created = makePollDescriptor();
    if (!created.isOpen() || created.number() == number) return created;
    return FileDescriptor(dup3(created.number(), number, O_CLOEXEC));
}

}  // namespace

std::error_code MainQueueSignal::open() noexcept {
    if (!poll_.isOpen()) poll_ = makePollDescriptor();
    if (poll_.isOpen()) ready_ = makeReadyDescriptor();
    if (ready_.isOpen()) timer_ = makeTimerDescriptor();
    if (timer_.isOpen() && watch(poll_, ready_) && watch(poll_, timer_)) return {};
    const std::error_code error(errno, std::generic_category());
    close();
    return error;
}

void MainQueueSignal::close() noexcept {
    ready_.close();
    timer_.close();
    poll_.close();
}

void MainQueueSignal::setReady(bool isReady) noexcept {
    if (!isOpen()) return;
    std::uint64_t counter = 1;
    const ssize_t result = isReady ? write(ready_.number(), &counter, sizeof counter)
                                   : read(ready_.number(), &counter, sizeof counter);
    // Fails when it is in that state already.
    static_cast<void>(result);
}

void MainQueueSignal::setTime(std::optional<std::chrono::steady_clock::time_point> time) noexcept {
    if (!isOpen()) return;
    using namespace std::chrono;
    itimerspec wanted{};
    if (time) {
        // A time of 0 would mean none.
        const auto sinceStart = std::max<nanoseconds>(time->time_since_epoch(), nanoseconds(1));
        const auto wholeSeconds = duration_cast<seconds>(sinceStart);
        wanted.it_value.tv_sec = wholeSeconds.count();
        wanted.it_value.tv_nsec = (sinceStart - wholeSeconds).count();
    }
    timerfd_settime(timer_.number(), TFD_TIMER_ABSTIME, &wanted, nullptr);
}

void MainQueueSignal::startInChild() noexcept {
    if (!isOpen()) return;
    ready_.close();
    timer_.close();
    poll_ = replacement(std::move(poll_));
    if (poll_.isOpen()) open();
}

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <system_error>

#include "Platform/Dispatch/MainQueueSignal.h"

namespace QRVPlatform {

// An epoll descriptor over the two others, because it cannot be read: a child that was made without
// the fork handlers (vfork, clone) still cannot consume the parent's wake-up.

namespace {

int checked(int result) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), "main queue");
    return result;
}

FileDescriptor makeReadyDescriptor() {
    return FileDescriptor(checked(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)));
}

FileDescriptor makeTimerDescriptor() {
    return FileDescriptor(checked(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)));
}

FileDescriptor makePollDescriptor() {
    return FileDescriptor(checked(epoll_create1(EPOLL_CLOEXEC)));
}

void watch(const FileDescriptor& poll, const FileDescriptor& watched) {
    epoll_event event{};
    event.events = EPOLLIN;
    checked(epoll_ctl(poll.number(), EPOLL_CTL_ADD, watched.number(), &event));
}

/// The new descriptor under the number that `shared` has.
FileDescriptor replacement(FileDescriptor shared) {
    const int number = shared.number();
    shared.close();
    FileDescriptor created = makePollDescriptor();
    if (created.number() == number) return created;
    return FileDescriptor(checked(dup3(created.number(), number, O_CLOEXEC)));
}

}  // namespace

MainQueueSignal::MainQueueSignal()
    : ready_(makeReadyDescriptor()), timer_(makeTimerDescriptor()), poll_(makePollDescriptor()) {
    watch(poll_, ready_);
    watch(poll_, timer_);
}

void MainQueueSignal::setReady(bool isReady) noexcept {
    std::uint64_t counter = 1;
    const ssize_t result = isReady ? write(ready_.number(), &counter, sizeof counter)
                                   : read(ready_.number(), &counter, sizeof counter);
    // Fails when it is in that state already.
    static_cast<void>(result);
}

void MainQueueSignal::setTime(std::optional<std::chrono::steady_clock::time_point> time) noexcept {
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
    try {
        poll_ = replacement(std::move(poll_));
        ready_.close();
        ready_ = makeReadyDescriptor();
        timer_.close();
        timer_ = makeTimerDescriptor();
        watch(poll_, ready_);
        watch(poll_, timer_);
    } catch (const std::system_error&) {
        ready_.close();
        timer_.close();
        poll_.close();
    }
}

}  // namespace QRVPlatform

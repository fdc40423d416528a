// SPDX-License-Identifier: MIT
#include <pthread.h>

#include <atomic>
#include <memory>
#include <system_error>

#include "Platform/Threads/Threads.h"

namespace QRVPlatform {

namespace {

// The C library is asked once, and the order of the functions is kept here. It would not call the
// functions that are registered while `preparation` waits for other threads.

struct ForkObserver {
    void (*before)();
    void (*inParent)();
    void (*inChild)();
    const ForkObserver* earlier;
};

/// Never removed, so that a fork needs no lock to walk the list.
std::atomic<const ForkObserver*> latest = nullptr;
std::atomic<void (*)()> preparation = nullptr;
std::atomic<unsigned> forks = 0;
/// Of the fork that this thread is in.
thread_local const ForkObserver* latestOfFork = nullptr;

void beforeFork() {
    if (void (*const prepare)() = preparation) prepare();
    latestOfFork = latest;
    for (const ForkObserver* observer = latestOfFork; observer; observer = observer->earlier)
        observer->before();
}

void callInOrder(const ForkObserver* last, void (*ForkObserver::*function)()) {
    if (last == nullptr) return;
    callInOrder(last->earlier, function);
    (last->*function)();
}

void inParent() {
    callInOrder(latestOfFork, &ForkObserver::inParent);
}

void inChild() {
    ++forks;
    callInOrder(latestOfFork, &ForkObserver::inChild);
}

bool askSystem() {
    if (const int error = pthread_atfork(beforeFork, inParent, inChild); error != 0)
        throw std::system_error(error, std::generic_category(), "observing forks");
    return true;
}

}  // namespace

void Threads::nameCurrentThread(const std::string& label) {
    constexpr std::size_t longestName = 15;
    const std::string tail = label.substr(label.rfind('.') + 1, longestName);
    pthread_setname_np(pthread_self(), tail.c_str());
}

void Threads::observeForks(void (*before)(), void (*inParent)(), void (*inChild)()) {
    auto observer =
        std::make_unique<ForkObserver>(ForkObserver{before, inParent, inChild, nullptr});
    static const bool isAsked = askSystem();
    static_cast<void>(isAsked);
    observer->earlier = latest;
    while (!latest.compare_exchange_weak(observer->earlier, observer.get())) continue;
    static_cast<void>(observer.release());
}

void Threads::prepareForks(void (*function)()) {
    preparation = function;
}

unsigned Threads::forkCount() noexcept {
    return forks;
}

}  // namespace QRVPlatform

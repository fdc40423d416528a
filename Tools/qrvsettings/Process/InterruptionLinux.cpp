// SPDX-License-Identifier: MIT
#include "Process/Interruption.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace Tool {
namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void fail(int error) {
    throw std::system_error(error, std::generic_category(), "waiting for signals");
}

/// Threads that start later block them too, so that they stay pending for the descriptor.
sigset_t blockedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    if (const int error = pthread_sigmask(SIG_BLOCK, &signals, nullptr)) fail(error);
    return signals;
}

/// For poll, rounded up. At most an hour; the caller then polls again.
int millisecondsUntil(std::optional<Clock::time_point> deadline) {
    if (!deadline) return -1;
    const auto left = std::clamp<Clock::duration>(*deadline - Clock::now(), Clock::duration(0),
                                                  std::chrono::hours(1));
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count());
}

}  // namespace

Interruption::Interruption() {
    const sigset_t signals = blockedSignals();
    signals_ = signalfd(-1, &signals, SFD_CLOEXEC);
    if (signals_ < 0) fail(errno);
}

Interruption::~Interruption() {
    close(signals_);
}

Interruption::Reason Interruption::waitFor(int descriptor,
                                           std::optional<Clock::time_point> deadline) const {
    for (;;) {
        std::array<pollfd, 2> entries = {{{signals_, POLLIN, 0}, {descriptor, POLLIN, 0}}};
        const int count = poll(entries.data(), entries.size(), millisecondsUntil(deadline));
        if (count < 0 && errno != EINTR) fail(errno);
        if (count > 0 && entries[0].revents != 0) return Reason::Interrupted;
        if (deadline && Clock::now() >= *deadline) return Reason::TimedOut;
        if (count > 0) return Reason::Readable;
    }
}

}  // namespace Tool

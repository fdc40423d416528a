// SPDX-License-Identifier: MIT
#include "Process/Waiting.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "Process/StandardError.h"
#include "Process/StandardStreams.h"

namespace Tool {

Waiting::Waiting(std::function<std::string()> what) : what_(std::move(what)) {
    if (isQuiet() || !standardErrorIsTerminal()) return;
    try {
        thread_ = std::thread([this] { remarkLater(); });
    } catch (const std::system_error&) {  // No thread is left: what is waited for matters more.
    }
}

Waiting::~Waiting() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard guard(mutex_);
        isOver_ = true;
    }
    ended_.notify_one();
    thread_.join();
}

void Waiting::remarkLater() {
    std::unique_lock lock(mutex_);
    if (!ended_.wait_for(lock, std::chrono::seconds(1), [this] { return isOver_; }))
        remark("waiting for " + what_());
}

}  // namespace Tool

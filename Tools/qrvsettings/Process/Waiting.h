// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace Tool {

/// While it lives, for a person at a terminal: writes one line `waiting for ...` to standard error
/// a second after it was made. Writes nothing where standard error is no terminal, or is kept
/// quiet, or where no thread can be started.
class Waiting {
  public:
    /// `what` is called on another thread, when the line is written.
    explicit Waiting(std::function<std::string()> what);
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting();

  private:
    void remarkLater();
    std::function<std::string()> what_;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool isOver_ = false;
    std::thread thread_;
};

}  // namespace Tool

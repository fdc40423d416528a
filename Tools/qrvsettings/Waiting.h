// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace Tool {

/// Tells a person what takes so long: a second after it was made, and while it lives, one line
/// `waiting for ...` on standard error. Only where that is a terminal, and nobody wants it quiet.
class Waiting {
  public:
    explicit Waiting(const std::string& what);
    /// `what` is called on another thread, when the line is written.
    explicit Waiting(std::function<std::string()> what);
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting();

  private:
    void tellLater();
    std::function<std::string()> what_;
    std::mutex mutex_;
    std::condition_variable ended_;
    bool isOver_ = false;
    std::thread thread_;
};

}  // namespace Tool

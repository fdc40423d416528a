// SPDX-License-Identifier: MIT
#pragma once

// Real processes for tests: forked children, and gates on which one process waits for another.

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

constexpr std::chrono::seconds testDeadline(20);

/// False when the condition has not come true until the deadline.
inline bool waitUntil(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + testDeadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// Made before the fork; opened by one process, seen by all.
class Gate {
  public:
    Gate() {
        if (pipe(ends_.data()) != 0) throw std::runtime_error("no pipe");
    }
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;
    ~Gate() {
        close(ends_[0]);
        close(ends_[1]);
    }
    void open() const {
        if (write(ends_[1], "x", 1) != 1) throw std::runtime_error("cannot open the gate");
    }
    [[nodiscard]] bool isOpen() const { return pollFor(std::chrono::milliseconds(0)); }
    /// False when it stays shut until the deadline.
    [[nodiscard]] bool wait(std::chrono::seconds deadline = testDeadline) const {
        return pollFor(deadline);
    }

    /// Paths by which a program that this process starts opens the gate, by writing, and waits at
    /// it, by reading one byte.
    [[nodiscard]] std::string pathToOpen() const {
        return "/proc/self/fd/" + std::to_string(ends_[1]);
    }
    [[nodiscard]] std::string pathToWait() const {
        return "/proc/self/fd/" + std::to_string(ends_[0]);
    }

  private:
    [[nodiscard]] bool pollFor(std::chrono::milliseconds timeout) const {
        pollfd entry{ends_[0], POLLIN, 0};
        return poll(&entry, 1, static_cast<int>(timeout.count())) == 1;
    }
    std::array<int, 2> ends_{};
};

/// Runs `body` in a forked child, which exits with success when that returns true. Killed at the
/// end if it still lives.
class ChildProcess {
  public:
    explicit ChildProcess(const std::function<bool()>& body) : pid_(fork()) {
        if (pid_ < 0) throw std::runtime_error("no child");
        if (pid_ != 0) return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        _exit(body() ? 0 : 1);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() {
        if (hasEnded_) return;
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }

    [[nodiscard]] pid_t pid() const { return pid_; }
    void send(int signal) const { kill(pid_, signal); }
    /// False when it is not stopped until the deadline.
    bool stop() {
        send(SIGSTOP);
        return waitUntil([this] {
            return waitpid(pid_, &status_, WUNTRACED | WNOHANG) == pid_ && WIFSTOPPED(status_);
        });
    }
    [[nodiscard]] bool hasEnded() {
        if (!hasEnded_) hasEnded_ = waitpid(pid_, &status_, WNOHANG) == pid_;
        return hasEnded_;
    }
    [[nodiscard]] bool succeeded() {
        return ended() && WIFEXITED(status_) && WEXITSTATUS(status_) == 0;
    }
    [[nodiscard]] bool diedOf(int signal) {
        return ended() && WIFSIGNALED(status_) && WTERMSIG(status_) == signal;
    }

  private:
    bool ended() {
        return waitUntil([this] { return hasEnded(); });
    }
    pid_t pid_;
    int status_ = 0;
    bool hasEnded_ = false;
};

// SPDX-License-Identifier: MIT
#pragma once

// A child process whose system calls are watched one by one, so that any of them can be made to
// fail or to be the last. For x86-64, whose registers carry a call's result.

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <map>
#include <stdexcept>
#include <string>

namespace TracedProcess {

struct Call {
    long number;
    std::array<std::uint64_t, 6> arguments;
    pid_t thread;

    /// The text that an argument points to; empty when it is none.
    [[nodiscard]] std::string textOf(std::size_t argument) const {
        std::string text;
        for (std::uint64_t address = arguments.at(argument);; address += sizeof(long)) {
            errno = 0;
            const long word = ptrace(PTRACE_PEEKDATA, thread, address, nullptr);
            if (errno != 0) return text;
            std::array<char, sizeof word> characters{};
            std::memcpy(characters.data(), &word, sizeof word);
            const auto end = std::find(characters.begin(), characters.end(), '\0');
            text.append(characters.begin(), end);
            if (end != characters.end()) return text;
        }
    }
    [[nodiscard]] bool is(std::initializer_list<long> numbers) const {
        return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
    }
};

/// What becomes of a call: nothing, an error number that it fails with, or the end of the process
/// before it.
constexpr int goesOn = 0;
constexpr int kills = -1;
using Judge = std::function<int(const Call&)>;

class Tracer {
  public:
    Tracer(pid_t child, Judge judge) : child_(child), judge_(std::move(judge)) {}

    /// The status with which the child ended.
    int run() {
        int status = 0;
        waitpid(child_, &status, 0);
        ptrace(PTRACE_SETOPTIONS, child_, nullptr,
               PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL);
        ptrace(PTRACE_SYSCALL, child_, nullptr, nullptr);
        for (;;) {
            const pid_t thread = waitpid(-1, &status, __WALL);
            if (thread < 0) throw std::runtime_error("lost the traced process");
            const bool hasEnded = WIFEXITED(status) || WIFSIGNALED(status);
            if (hasEnded && thread == child_) return status;
            if (!hasEnded) goOn(thread, status);
        }
    }

  private:
    void goOn(pid_t thread, int status) {
        const int signal = WSTOPSIG(status);
        if (signal == (SIGTRAP | 0x80)) {
            atCall(thread);
            ptrace(PTRACE_SYSCALL, thread, nullptr, nullptr);
            return;
        }
        const bool isOurs = signal == SIGTRAP || signal == SIGSTOP;  // a new thread, or news of one
        ptrace(PTRACE_SYSCALL, thread, nullptr, isOurs ? 0 : signal);
    }

    void atCall(pid_t thread) {
        __ptrace_syscall_info info{};
        ptrace(PTRACE_GET_SYSCALL_INFO, thread, sizeof info, &info);
        user_regs_struct registers{};
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
            Call call{static_cast<long>(info.entry.nr), {}, thread};
            std::copy_n(info.entry.args, call.arguments.size(), call.arguments.begin());
            const int verdict = judge_(call);
            if (verdict == kills) kill(child_, SIGKILL);
            if (verdict <= 0) return;
            failing_[thread] = verdict;
            ptrace(PTRACE_GETREGS, thread, nullptr, &registers);
            registers.orig_rax = static_cast<unsigned long long>(-1);
            ptrace(PTRACE_SETREGS, thread, nullptr, &registers);
        } else if (const auto failing = failing_.find(thread); failing != failing_.end()) {
            ptrace(PTRACE_GETREGS, thread, nullptr, &registers);
            registers.rax = static_cast<unsigned long long>(-failing->second);
            ptrace(PTRACE_SETREGS, thread, nullptr, &registers);
            failing_.erase(failing);
        }
    }

    pid_t child_;
    Judge judge_;
    std::map<pid_t, int> failing_;
};

/// Runs `body` in a forked child, which exits with success when that returns true, and asks `judge`
/// about each system call of any of its threads. Returns the status with which the child ended.
inline int run(const std::function<bool()>& body, Judge judge) {
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("no child");
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(2);
        if (raise(SIGSTOP) != 0) _exit(2);
        _exit(body() ? 0 : 1);
    }
    return Tracer(child, std::move(judge)).run();
}

/// For the child, before it becomes another program: AddressSanitizer cannot look for leaks in a
/// process that is traced; it fails instead.
inline void switchLeaksOff() {
    const char* const options = std::getenv("ASAN_OPTIONS");
    const std::string others = options == nullptr ? "" : std::string(options) + ":";
    setenv("ASAN_OPTIONS", (others + "detect_leaks=0").c_str(), 1);
}

/// A machine may let nobody trace a process.
inline bool isAllowed() {
    const pid_t child = fork();
    if (child == 0) _exit(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 ? 0 : 1);
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

inline bool succeeded(int status) {
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace TracedProcess

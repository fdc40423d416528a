// SPDX-License-Identifier: MIT
// Standard input and child processes, with the system calls of Linux.

#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>

#include "Platform/Dispatch/Dispatch.h"
#include "Processes.h"

namespace {

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// Input that was read and not yet returned. A C++ stream would not do: poll does not know what is
/// in its buffer.
std::string& unreturnedInput() {
    static std::string text;
    return text;
}

std::optional<std::string> takeLine() {
    std::string& text = unreturnedInput();
    const std::size_t end = text.find('\n');
    if (end == std::string::npos) return std::nullopt;
    std::string line = text.substr(0, end);
    text.erase(0, end + 1);
    return line;
}

/// False at the end of the input.
bool readInput() {
    std::array<char, 4096> bytes{};
    const ssize_t length = read(STDIN_FILENO, bytes.data(), bytes.size());
    if (length < 0 && errno == EINTR) return true;
    if (length <= 0) return false;
    unreturnedInput().append(bytes.data(), static_cast<std::size_t>(length));
    return true;
}

/// Readable once the process is asked to end; -1 while that ends it at once.
int endDescriptor = -1;

enum class Event { Input, EndOfProcess };

/// Waits for an event; `input` is a descriptor, or -1. Drains the main queue meanwhile.
Event nextEvent(int input) {
    std::array<pollfd, 3> entries = {{{DispatchMainQueue::shared().fd(), POLLIN, 0},
                                      {input, POLLIN, 0},
                                      {endDescriptor, POLLIN, 0}}};
    for (;;) {
        if (poll(entries.data(), entries.size(), -1) < 0) {
            if (errno == EINTR) continue;
            fail("waiting for events");
        }
        if (entries[0].revents != 0) DispatchMainQueue::shared().drain();
        if (entries[2].revents != 0) return Event::EndOfProcess;
        if (entries[1].revents != 0) return Event::Input;
    }
}

}  // namespace

void endWithoutLosingSaves() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT}) sigaddset(&signals, signal);
    endDescriptor = signalfd(-1, &signals, SFD_CLOEXEC);
    if (endDescriptor < 0 || sigprocmask(SIG_BLOCK, &signals, nullptr) != 0) fail("signals");
}

std::optional<std::string> nextLineOfInput() {
    for (;;) {
        if (std::optional<std::string> line = takeLine()) return line;
        if (nextEvent(STDIN_FILENO) == Event::EndOfProcess || !readInput()) return std::nullopt;
    }
}

void runUntilAskedToEnd() {
    nextEvent(-1);
}

int endOfProcess() {
    return endDescriptor;
}

int startProcess(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"/proc/self/exe"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);

    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0) fail("starting a process");
    if (child > 0) return child;
    // The parent may have ended before this child has asked for the signal.
    if (prctl(PR_SET_PDEATHSIG, SIGTERM) == 0 && getppid() == parent)
        execv(pointers[0], pointers.data());
    _exit(127);
}

int waitForProcess(int process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0)
        if (errno != EINTR) fail("waiting for a process");
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

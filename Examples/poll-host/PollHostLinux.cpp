// SPDX-License-Identifier: MIT
// Prints every setting that another process changes, and the setting of each key path that it reads
// from standard input: a host with its own main loop around poll. SIGTERM and SIGINT end it.

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <iostream>
#include <string>
#include <string_view>

#include "QRVSettings/QRVSettings.h"

namespace {

void print(const std::string& keyPath) {
    std::cout << keyPath << ": " << QRVSettingsObjectForKeyPath(keyPath) << std::endl;
}

void startUp() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMergesSaves(true);
    store.setUsesSiteDefaults(true);
    store.setMonitorFileChanges(true);  // before prepare
    store.setOnChange([](const NSArray& keyPaths) {
        for (const PropertyListValue& keyPath : keyPaths) print(keyPath.stringValue());
    });
    store.loadDefaults();
    store.prepare();
    std::cout << "watching " << store.location() << std::endl;
}

/// False at the end of the input.
bool readKeyPaths(std::string& unfinishedLine) {
    std::array<char, 4096> bytes{};
    const ssize_t length = read(STDIN_FILENO, bytes.data(), bytes.size());
    if (length <= 0) return length < 0 && errno == EINTR;
    for (const char character : std::string_view(bytes.data(), static_cast<std::size_t>(length))) {
        if (character != '\n') {
            unfinishedLine += character;
            continue;
        }
        print(unfinishedLine);
        unfinishedLine.clear();
    }
    return true;
}

/// Readable once the process is asked to end. To be called before there are threads.
int openEndOfProcess() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT}) sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

/// Returns when the process is asked to end; false when it cannot wait for that.
bool runMainLoop(int endOfProcess) {
    std::array<pollfd, 3> entries = {{{DispatchMainQueue::shared().fd(), POLLIN, 0},
                                      {STDIN_FILENO, POLLIN, 0},
                                      {endOfProcess, POLLIN, 0}}};
    auto& [queue, input, end] = entries;
    std::string unfinishedLine;
    for (;;) {
        if (poll(entries.data(), entries.size(), -1) < 0 && errno != EINTR) return false;
        if (queue.revents != 0) DispatchMainQueue::shared().drain();
        if (input.revents != 0 && !readKeyPaths(unfinishedLine)) input.fd = -1;
        if (end.revents != 0) return true;
    }
}

}  // namespace

int main() {
    const int endOfProcess = openEndOfProcess();
    startUp();
    const bool wasAsked = runMainLoop(endOfProcess);
    const QRVSaveStatus saves = QRVSettingsWaitForSaves(std::chrono::seconds(5));
    return wasAsked && saves.state == QRVSaveStatus::State::Saved ? 0 : 1;
}

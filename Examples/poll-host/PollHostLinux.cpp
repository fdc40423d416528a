// SPDX-License-Identifier: MIT
// Prints every setting that another process changes, and the setting of each key path that it reads
// from standard input: a host with its own main loop around poll.

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
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

}  // namespace

int main() {
    startUp();
    std::array<pollfd, 2> entries = {
        {{DispatchMainQueue::shared().fd(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
    auto& [queue, input] = entries;
    std::string unfinishedLine;
    for (;;) {
        if (poll(entries.data(), entries.size(), -1) < 0) {
            if (errno == EINTR) continue;
            return 1;
        }
        if (queue.revents != 0) DispatchMainQueue::shared().drain();
        if (input.revents != 0 && !readKeyPaths(unfinishedLine)) input.fd = -1;
    }
}

// SPDX-License-Identifier: MIT
// Prints every setting that another process changes, until SIGTERM or SIGINT.

#include <csignal>
#include <iostream>

#include "QRVSettings/QRVSettings.h"

volatile std::sig_atomic_t isEnding = 0;

int main() {
    for (const int signal : {SIGTERM, SIGINT}) std::signal(signal, [](int) { isEnding = 1; });

    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMergesSaves(true);
    store.setUsesSiteDefaults(true);
    store.setMonitorFileChanges(true);  // before prepare
    store.setOnChange([](const NSArray& keyPaths) {
        for (const PropertyListValue& keyPath : keyPaths)
            std::cout << keyPath.stringView() << ": "
                      << QRVSettingsObjectForKeyPath(keyPath.stringValue()) << std::endl;
    });
    store.loadDefaults();
    store.prepare();
    std::cout << "watching " << store.location() << std::endl;

    DispatchMainQueue& mainQueue = DispatchMainQueue::shared();
    while (isEnding == 0)  // or watch its fd() in a loop of your own
        if (mainQueue.wait(std::chrono::seconds(1))) mainQueue.drain();

    const QRVSaveStatus saves = QRVSettingsWaitForSaves(std::chrono::seconds(5));
    if (saves.state != QRVSaveStatus::State::Saved) {
        std::cerr << "not saved: " << saves.keyPaths << ' ' << saves.reason << '\n';
        return 1;
    }
}

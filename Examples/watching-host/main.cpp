// SPDX-License-Identifier: MIT
// Prints every setting that another process changes.

#include <iostream>

#include "QRVSettings/QRVSettings.h"

int main() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMonitorFileChanges(true);  // before prepare
    store.setOnChange([](const NSArray& keyPaths) {
        for (const PropertyListValue& keyPath : keyPaths)
            std::cout << keyPath.stringView() << ": "
                      << QRVSettingsObjectForKeyPath(keyPath.stringValue()) << std::endl;
    });
    store.loadDefaults();
    store.prepare();
    std::cout << "watching " << store.location() << std::endl;
    DispatchMainQueue::shared().run();  // or watch its fd() in a loop of your own
}

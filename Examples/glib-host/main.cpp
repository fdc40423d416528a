// SPDX-License-Identifier: MIT
// Prints every setting that another process changes: a host with the main loop of GLib.

#include <iostream>

#include "Platform/Dispatch/Adapters/GLib.h"
#include "QRVSettings/QRVSettings.h"

int main() {
    const GLibMainQueue mainQueue;  // from here on the default main context drains it

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

    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    g_main_loop_run(loop);
    g_main_loop_unref(loop);
}

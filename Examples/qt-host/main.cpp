// SPDX-License-Identifier: MIT
// Prints every setting that another process changes: a host with the event loop of Qt.

#include <QCoreApplication>
#include <iostream>

#include "Platform/Dispatch/Adapters/Qt.h"
#include "QRVSettings/QRVSettings.h"

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QtMainQueue mainQueue;  // from here on the event loop drains it

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
    return QCoreApplication::exec();
}

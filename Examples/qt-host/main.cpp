// SPDX-License-Identifier: MIT
// Prints every setting that another process changes: a host with the event loop of Qt. SIGTERM and
// SIGINT end it; so would the closing of its last window, if it had one.

#include <QCoreApplication>
#include <QTimer>
#include <csignal>
#include <iostream>

#include "Platform/Dispatch/Adapters/Qt.h"
#include "QRVSettings/QRVSettings.h"

volatile std::sig_atomic_t isEnding = 0;

int main(int argc, char** argv) {
    for (const int signal : {SIGTERM, SIGINT}) std::signal(signal, [](int) { isEnding = 1; });
    const QCoreApplication application(argc, argv);
    const QtMainQueue mainQueue;  // from here on the event loop drains it

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

    QTimer lookForTheEnd;
    QObject::connect(&lookForTheEnd, &QTimer::timeout, [] {
        if (isEnding != 0) QCoreApplication::quit();
    });
    lookForTheEnd.start(std::chrono::milliseconds(200));
    const int status = QCoreApplication::exec();  // returns when the last window is closed, too

    const QRVSaveStatus saves = QRVSettingsWaitForSaves(std::chrono::seconds(5));
    return saves.state == QRVSaveStatus::State::Saved ? status : 1;
}

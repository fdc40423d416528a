// SPDX-License-Identifier: MIT
// Starts the processes of the application. The launcher itself does not use the store: a process
// that forks must not have started the store's threads.

#include "Launcher.h"

#include "Processes.h"
#include "QRVSettings/QRVSettings.h"

int runPreparation() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.loadDefaults();
    store.prepare();
    store.queue().sync([] {});
    return 0;
}

int runLauncher(const std::string& colorOption) {
    // First and alone: if several processes migrated at the same time, the last save would discard
    // what the others have written.
    if (const int status = waitForProcess(startProcess({"prepare"}))) return status;
    const int display = startProcess({"display", colorOption});
    startProcess({"settings"});
    return waitForProcess(display);
}

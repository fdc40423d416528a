// SPDX-License-Identifier: MIT
// The launcher itself has no settings: a process that forks must not have started the store's
// threads.

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
    // First and alone: of processes that do it at the same time, the last would save its tree over
    // what the others have written by then.
    if (const int status = waitForProcess(startProcess({"prepare"}))) return status;
    const int display = startProcess({"display", colorOption});
    startProcess({"settings"});
    return waitForProcess(display);
}

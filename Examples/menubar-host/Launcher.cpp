// SPDX-License-Identifier: MIT
// Starts the processes of the application. The launcher itself does not use the store: a process
// that forks must not have started the store's threads.

#include "Launcher.h"

#include "AppearanceProcess.h"
#include "Processes.h"

int runLauncher(const std::string& colorOption) {
    const int display = startProcess({"display", colorOption});
    startProcess({"settings"});
    if (hasAppearanceProcess) startProcess({"appearance"});
    return waitForProcess(display);
}

// SPDX-License-Identifier: MIT
// Reads a default, writes settings, and waits until the file holds them.

#include <iostream>

#include "QRVSettings/QRVSettings.h"

int main() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMergesSaves(true);       // no process loses what another has written
    store.setUsesSiteDefaults(true);  // defaults of this machine's administrator hold
    store.loadDefaults();             // before the first read
    const char* const width = "CPU.Menubar.Mode.HistoryGraph.Width";

    std::cout << "width by default: " << QRVSettingsObjectForKeyPath(width) << '\n';
    QRVSettingsSetObjectForKeyPath(60, width);
    std::cout << "width: " << QRVSettingsObjectForKeyPath(width) << '\n'
              << "in the menu bar: " << QRVSettingsBoolForKeyPath("CPU.Menubar.Enabled") << '\n';
    QRVSettingsSetColorForKeyPath(NSColor{1, 0.5, 0, 1}, "Network.Menubar.Mode.Status.NoIP.Color");

    const QRVSaveStatus saves = QRVSettingsWaitForSaves(std::chrono::seconds(5));
    if (saves.state != QRVSaveStatus::State::Saved) {
        std::cerr << "not saved: " << saves.keyPaths << ' ' << saves.reason << '\n';
        return 1;
    }
    std::cout << "saved in " << QRVSettingsLocation() << '\n';
}

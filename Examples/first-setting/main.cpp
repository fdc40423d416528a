// SPDX-License-Identifier: MIT
// Reads a default, writes settings, and waits until the file holds them.

#include <iostream>

#include "QRVSettings/QRVSettings.h"

int main() {
    QRVSettings::sharedSettings().loadDefaults();  // before the first read
    const char* const width = "CPU.Menubar.Mode.HistoryGraph.Width";

    std::cout << "width by default: " << QRVSettingsObjectForKeyPath(width) << '\n';
    QRVSettingsSetObjectForKeyPath(60, width);
    std::cout << "width: " << QRVSettingsObjectForKeyPath(width) << '\n'
              << "in the menu bar: " << QRVSettingsBoolForKeyPath("CPU.Menubar.Enabled") << '\n';
    QRVSettingsSetColorForKeyPath(NSColor{1, 0.5, 0, 1}, "Network.Menubar.Mode.Status.NoIP.Color");

    QRVSettings::sharedSettings().queue().sync([] {});  // the saves queued so far have run
    std::cout << "saved in " << QRVSettingsLocation() << '\n';
}

// SPDX-License-Identifier: MIT
// Writes a setting, reads it, and waits until the file holds it.

#include <iostream>

#include "QRVSettings/QRVSettings.h"

int main() {
    QRVSettingsSetObjectForKeyPath(40, "CPU.Graph.Width");
    QRVSettingsSetObjectForKeyPath(NSArray{NSDictionary{{"source", 21}}}, "Combined.Items");

    std::cout << "width: " << QRVSettingsObjectForKeyPath("CPU.Graph.Width") << '\n'
              << "enabled: " << QRVSettingsBoolForKeyPath("CPU.Enabled") << '\n';

    QRVSettings::sharedSettings().queue().sync([] {});  // the saves queued so far have run
    std::cout << "saved in " << QRVSettingsLocation() << '\n';
}

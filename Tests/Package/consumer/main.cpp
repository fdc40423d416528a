// SPDX-License-Identifier: MIT
// A host outside this project, built with an installed copy.
#include <iostream>

#include "QRVSettings/QRVSettings.h"

int main() {
    QRVSettings::sharedSettings().loadDefaults();
    QRVSettingsSetObjectForKeyPath(60, "CPU.Menubar.Mode.HistoryGraph.Width");
    QRVSettings::sharedSettings().queue().sync([] {});
    std::cout << QRVSettingsStorage().objectForKey("CPU") << '\n';
}

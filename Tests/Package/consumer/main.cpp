// SPDX-License-Identifier: MIT
#include <iostream>

#include "QRVSettings/QRVSettings.h"

int main() {
    QRVSettings::sharedSettings().loadDefaults();
    QRVSettingsSetObjectForKeyPath(60, "CPU.Menubar.Mode.HistoryGraph.Width");
    QRVSettings::sharedSettings().queue().sync([] {});
    std::cout << QRVSettingsStorage().objectForKey("CPU") << '\n';
}

// SPDX-License-Identifier: MIT
// A host outside this project that takes part in the history.
#include <iostream>

#include "QRVHistory/QRVHistory.h"
#include "QRVSettings/QRVSettings.h"

int main() {
    QRVHistoryStart("consumer");
    QRVSettings::sharedSettings().loadDefaults();
    QRVSettingsSetObjectForKeyPath(60, "CPU.Menubar.Mode.HistoryGraph.Width");
    if (!QRVHistoryWait(std::chrono::seconds(20))) return 1;
    for (const QRVHistorySave& save : QRVHistorySaves({.prefix = "CPU"}).saves)
        std::cout << save.program << ": " << QRVSettingsStorage().objectForKey("CPU") << '\n';
}

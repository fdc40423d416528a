// SPDX-License-Identifier: MIT
// A host outside this project, built with an installed copy.
#include <iostream>

#include "QRVSettings/QRVKeys.h"
#include "QRVSettings/QRVSettings.h"

int main() {
    QRVSettings::sharedSettings().loadDefaults();
    QRVSettingsSetValue(60, Keys::CPU::Menubar::Mode::HistoryGraph::Width);
    QRVSettings::sharedSettings().queue().sync([] {});
    std::cout << QRVSettingsStorage().objectForKey("CPU") << '\n';
}

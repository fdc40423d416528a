// SPDX-License-Identifier: MIT

#include "StartUp.h"

#include <utility>

#include "Platform/Dispatch/NSOperationQueue.h"

void startUp(QRVSettings::ChangeHandler onChange) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMonitorFileChanges(true);  // before prepare
    store.setOnChange(std::move(onChange));
    store.loadDefaults();
    store.prepare();
    // What others changed after the first read and before the watch began has told nobody.
    store.presenterQueue()->addOperation([&store] { store.presentedItemDidChange(); });
}

// SPDX-License-Identifier: MIT
#include "StartUp.h"

#include <utility>

void startUp(QRVSettings::ChangeHandler onChange) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMonitorFileChanges(true);  // before prepare
    store.setOnChange(std::move(onChange));
    store.loadDefaults();
    store.prepare();
}

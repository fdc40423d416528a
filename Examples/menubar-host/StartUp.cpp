// SPDX-License-Identifier: MIT
#include "StartUp.h"

#include <iostream>
#include <utility>

#include "Processes.h"
#include "RememberedChanges.h"

void startUp(QRVSettings::ChangeHandler onChange) {
    endWithoutLosingSaves();
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMergesSaves(true);
    store.setUsesSiteDefaults(true);
    store.setMonitorFileChanges(true);  // before prepare
    store.setOnChange(std::move(onChange));
    rememberChanges();  // before loadDefaults
    store.loadDefaults();
    store.prepare();
}

int endUp(int status) {
    const QRVSaveStatus saves = QRVSettingsWaitForSaves(std::chrono::seconds(5));
    waitForRememberedChanges();
    if (saves.state == QRVSaveStatus::State::Saved) return status;
    std::cerr << "not saved: " << saves.keyPaths << ' ' << saves.reason << '\n';
    return 1;
}

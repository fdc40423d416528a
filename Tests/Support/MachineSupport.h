// SPDX-License-Identifier: MIT
#pragma once

// Another machine than the one the tests run on, and hosts on it.

#include <fstream>
#include <optional>
#include <string>

#include "Platform/Machine/MachineIdentity.h"
#include "QRVSettings/QRVSettings.h"

namespace MachineSupport {

/// From now on the machine is the one of these texts, kept in files of the working folder; without
/// a text it does not tell.
inline void beMachine(const std::optional<std::string>& serialNumber,
                      const std::optional<std::string>& model) {
    QRVPlatform::MachineIdentitySources sources{{}, {}, false};
    if (serialNumber) {
        std::ofstream("serial-number", std::ios::binary) << *serialNumber;
        sources.serialNumberFiles = {"serial-number"};
    }
    if (model) {
        std::ofstream("model", std::ios::binary) << *model;
        sources.modelFiles = {"model"};
    }
    QRVPlatform::setMachineIdentitySources(sources);
}

/// Starts this process as a host that observes changes does.
inline void startWatching() {
    beMachine("1", "M");
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMonitorFileChanges(true);
    store.loadDefaults();
    store.prepare();
}

}  // namespace MachineSupport

// SPDX-License-Identifier: MIT
// Whether the machine has an id: without one, settings that name hardware are reset.

#include "Doctor/Doctor.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/StoreKeyPaths.h"
#include "Settings/Preparation.h"

namespace Tool {

void examineMachine(Diagnosis& diagnosis, const NSDictionary& settings) {
    if (machineHasID()) return;
    const std::string keyPath(QRVStoreKeyPaths::primaryInterface);
    const bool isAffected = !NSDictionaryQRV::objectAtKeyPath(settings, keyPath).isNull();
    diagnosis.findings.push_back(
        {isAffected ? Finding::Level::Warning : Finding::Level::Note,
         std::string(machineWithoutID) + ", so that " + keyPath + " is reset at each start",
         adviceForMachineID});
}

}  // namespace Tool

// SPDX-License-Identifier: MIT
// A change of this store in one process, and its handler in another.
#include "Measures/Propagation.h"
#include "Own/OwnStore.h"
#include "Platform/Dispatch/Dispatch.h"

namespace {

void listenForChanges(const std::filesystem::path& /*folder*/) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMonitorFileChanges(true);
    store.loadDefaults();
    store.prepare();
    OwnStore::save();
    store.setOnChange([](const NSArray& /*changes*/) { Measures::printTimeOfChange(); });
    Measures::printReady();
    DispatchMainQueue::shared().run();
}

void writeChanges(const std::filesystem::path& folder) {
    const std::string keyPath = Measures::changingKeyPath(folder);
    QRVSettingsObjectForKeyPath(keyPath);
    Measures::changeOnRequest(
        [&keyPath](std::int64_t number) { OwnStore::writeInteger(keyPath, number); },
        OwnStore::save);
}

}  // namespace

int main(int argc, char** argv) {
    return Measures::propagation(argc, argv, {listenForChanges, writeChanges});
}

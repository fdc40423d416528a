// SPDX-License-Identifier: MIT
// A change of GSettings in one process, and its signal in another.
#include "Measures/Propagation.h"
#include "Peers/GSettingsStore.h"

namespace {

void listenForChanges(const std::filesystem::path& folder) {
    GSettingsStore store(folder);
    const auto handle = store.handle(Measures::changingKeyPath(folder), Workload::Kind::Integer);
    g_signal_connect(handle.settings, ("changed::" + handle.key).c_str(),
                     G_CALLBACK(Measures::printTimeOfChange), nullptr);
    // GSettings signals only keys that were read before.
    if (GSettingsStore::readInteger(handle) >= 0) Measures::printReady();
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}

void writeChanges(const std::filesystem::path& folder) {
    GSettingsStore store(folder, GSettingsStore::Writes::Direct);
    const auto handle = store.handle(Measures::changingKeyPath(folder), Workload::Kind::Integer);
    Measures::changeOnRequest(
        [&](std::int64_t number) {
            store.writeInteger(handle, number);
            store.save();
        },
        [] {});
}

}  // namespace

int main(int argc, char** argv) {
    return Measures::propagation(argc, argv, {listenForChanges, writeChanges});
}

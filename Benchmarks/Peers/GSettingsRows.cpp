// SPDX-License-Identifier: MIT
// The rows of GSettings.
#include "Measures/StoreRows.h"
#include "Peers/GSettingsStore.h"

int main(int argc, char** argv) {
    const Measures::RowArguments arguments = Measures::takeRowArguments(argc, argv);
    Measures::StoreOfSize<GSettingsStore> of(arguments.folder, arguments.size);
    Measures::registerStoreRows(of);
    if (GSettingsStore::isDconf()) return Measures::runRows(argc, argv);  // has one database
    GSettingsStore empty(arguments.folder / "empty", arguments.folder / "schemas");
    Measures::registerDefaultRows(of, empty);
    return Measures::runRows(argc, argv);
}

// SPDX-License-Identifier: MIT
// The rows of QSettings.
#include "Measures/StoreRows.h"
#include "Peers/QSettingsStore.h"

int main(int argc, char** argv) {
    const Measures::RowArguments arguments = Measures::takeRowArguments(argc, argv);
    Measures::StoreOfSize<QSettingsStore> of(arguments.folder, arguments.size);
    QSettingsStore::prepare(arguments.folder / "empty", {});
    QSettingsStore empty(arguments.folder / "empty");
    Measures::registerStoreRows(of);
    Measures::registerDefaultRows(of, empty);
    return Measures::runRows(argc, argv);
}

// SPDX-License-Identifier: MIT
// The rows of KConfig.
#include "Measures/StoreRows.h"
#include "Peers/KConfigStore.h"

int main(int argc, char** argv) {
    const Measures::RowArguments arguments = Measures::takeRowArguments(argc, argv);
    Measures::StoreOfSize<KConfigStore> of(arguments.folder, arguments.size);
    KConfigStore::prepare(arguments.folder / "empty", {});
    KConfigStore empty(arguments.folder / "empty");
    Measures::registerStoreRows(of);
    Measures::registerDefaultRows(of, empty);
    return Measures::runRows(argc, argv);
}

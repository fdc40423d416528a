// SPDX-License-Identifier: MIT
// Several processes that write to one store of QSettings.
#include "Measures/Together.h"
#include "Peers/QSettingsStore.h"

int main(int argc, char** argv) {
    return Measures::together<QSettingsStore>(argc, argv);
}

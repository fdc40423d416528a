// SPDX-License-Identifier: MIT
// A process that opens QSettings and reads it.
#include "Measures/OpenAndRead.h"
#include "Peers/QSettingsStore.h"

int main(int argc, char** argv) {
    return Measures::openAndRead<QSettingsStore>(argc, argv);
}

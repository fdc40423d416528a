// SPDX-License-Identifier: MIT
// A process that opens GSettings and reads it.
#include "Measures/OpenAndRead.h"
#include "Peers/GSettingsStore.h"

int main(int argc, char** argv) {
    return Measures::openAndRead<GSettingsStore>(argc, argv);
}

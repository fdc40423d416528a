// SPDX-License-Identifier: MIT
#include "Measures/OpenAndRead.h"
#include "Peers/GSettingsStore.h"

int main(int argc, char** argv) {
    return Measures::openAndRead<GSettingsStore>(argc, argv);
}

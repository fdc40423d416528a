// SPDX-License-Identifier: MIT
#include "Measures/OpenAndRead.h"
#include "Peers/QSettingsStore.h"

int main(int argc, char** argv) {
    return Measures::openAndRead<QSettingsStore>(argc, argv);
}

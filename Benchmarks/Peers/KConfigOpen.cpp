// SPDX-License-Identifier: MIT
// A process that opens KConfig and reads it.
#include "Measures/OpenAndRead.h"
#include "Peers/KConfigStore.h"

int main(int argc, char** argv) {
    return Measures::openAndRead<KConfigStore>(argc, argv);
}

// SPDX-License-Identifier: MIT
#include "Measures/OpenAndRead.h"
#include "Peers/KConfigStore.h"

int main(int argc, char** argv) {
    return Measures::openAndRead<KConfigStore>(argc, argv);
}

// SPDX-License-Identifier: MIT
#include "Measures/OpenAndRead.h"
#include "Peers/LibplistStore.h"

int main(int argc, char** argv) {
    return Measures::openAndRead<LibplistStore>(argc, argv);
}

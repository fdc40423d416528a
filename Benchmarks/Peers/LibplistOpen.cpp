// SPDX-License-Identifier: MIT
// A process that reads a file with libplist.
#include "Measures/OpenAndRead.h"
#include "Peers/LibplistStore.h"

int main(int argc, char** argv) {
    return Measures::openAndRead<LibplistStore>(argc, argv);
}

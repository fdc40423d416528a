// SPDX-License-Identifier: MIT
// A process that opens this store and reads it.
#include "Measures/OpenAndRead.h"
#include "Own/OwnStore.h"

int main(int argc, char** argv) {
    return Measures::openAndRead<OwnStore>(argc, argv);
}

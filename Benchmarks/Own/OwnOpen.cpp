// SPDX-License-Identifier: MIT
#include "Measures/OpenAndRead.h"
#include "Own/OwnStore.h"

int main(int argc, char** argv) {
    return Measures::openAndRead<OwnStore>(argc, argv);
}

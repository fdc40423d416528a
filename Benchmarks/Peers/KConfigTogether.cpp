// SPDX-License-Identifier: MIT
// Several processes that write to one store of KConfig.
#include "Measures/Together.h"
#include "Peers/KConfigStore.h"

int main(int argc, char** argv) {
    return Measures::together<KConfigStore>(argc, argv);
}

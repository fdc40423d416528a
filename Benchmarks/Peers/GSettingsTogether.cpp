// SPDX-License-Identifier: MIT
// Several processes that write to one store of GSettings.
#include "Measures/Together.h"
#include "Peers/GSettingsStore.h"

int main(int argc, char** argv) {
    return Measures::together<GSettingsStore>(argc, argv);
}

// SPDX-License-Identifier: MIT
// Loads the libraries that the tool ends up with, and does nothing.

#include <cstdlib>

int main() {
    return EXIT_SUCCESS;
}

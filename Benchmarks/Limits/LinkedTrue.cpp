// SPDX-License-Identifier: MIT
// Loads the libraries of the tool, and does nothing.

#include <cstdlib>

int main() {
    return EXIT_SUCCESS;
}

// SPDX-License-Identifier: MIT
// The process that applies edits, without a window around it.
#include "Edits/ApplyEdits.h"

int main() {
    return Tool::runApplyProcess();
}

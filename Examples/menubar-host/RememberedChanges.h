// SPDX-License-Identifier: MIT
#pragma once

/// Who changed which setting, where the library of the history is built.

/// This process takes part; to be called before `loadDefaults`.
void rememberChanges();

/// Waits until the changes of this process are entered.
void waitForRememberedChanges();

/// Prints the last changes, the newest first.
void printRememberedChanges();

// SPDX-License-Identifier: MIT
#pragma once

#include "QRVSettings/QRVSettings.h"

/// Starts the store in a process of this application. From then on the process follows the changes
/// of the others, and `onChange` is called for each.
void startUp(QRVSettings::ChangeHandler onChange);

/// Waits for the saves. Returns the exit status: `status`, or 1 when not everything was saved.
int endUp(int status);

// SPDX-License-Identifier: MIT
#pragma once

#include "QRVSettings/QRVSettings.h"

/// Starts the store in a process of this application. From then on the process follows the changes
/// of the others, and `onChange` is called for each.
void startUp(QRVSettings::ChangeHandler onChange);

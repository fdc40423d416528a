// SPDX-License-Identifier: MIT
#pragma once

#include "QRVSettings/QRVSettings.h"

/// How each process of this application begins: from here on it follows what the others change, and
/// `onChange` is told of it.
void startUp(QRVSettings::ChangeHandler onChange);

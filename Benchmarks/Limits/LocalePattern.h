// SPDX-License-Identifier: MIT
#pragma once

/// Asks ICU for the short time pattern of the locale in LC_ALL; the number of its letters.
int lengthOfTimePattern();

// SPDX-License-Identifier: MIT
#pragma once

#include <rapidcheck.h>

#include "Platform/Values/PropertyListValue.h"

/// Trees that can be written: every kind of value, text and keys of any characters, reals of any
/// bits, dates of whole seconds.
rc::Gen<PropertyListValue> anyTree();

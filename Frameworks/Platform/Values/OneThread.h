// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Values/PropertyListValue.h"

/// Copies and releases values whose objects no other thread has seen yet, as while a file is being
/// read. References are then counted without atomic instructions, which take longer than all the
/// rest of a copy.
namespace QRVPlatform::OneThread {

/// The same object, or the same scalar.
PropertyListValue copy(const PropertyListValue& value) noexcept;
/// Makes the value null.
void clear(PropertyListValue& value) noexcept;

}  // namespace QRVPlatform::OneThread

// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Values/PropertyListValue.h"

namespace QRVInside {

/// The change record of one write before it is a dictionary: a write that leaves only this behind
/// costs its caller less.
struct ChangeRecord {
    PropertyListValue keyPath;  ///< as passed; a string
    double time = 0;            ///< of the write, in seconds since 1970

    /// Equal ones for each call. Any thread.
    [[nodiscard]] NSDictionary dictionary() const&;
    /// Without a write to the text, which other threads may be reading at the same time.
    [[nodiscard]] NSDictionary dictionary() &&;
};

}  // namespace QRVInside

// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Platform/Values/NSDate.h"

/// Scalars as text for people, the same in every locale.
namespace QRVPlatform::ReadableScalars {

/// The shortest decimal text that reads back as the same double; `nan`, `inf`, `-inf`.
std::string real(double value);

/// `2020-01-31T23:59:59.25Z`: UTC, rounded to microseconds, without a fraction when it is 0. A year
/// outside 0 to 9999 has a sign. `invalid date` when the date is not finite, or more than 9e11 s
/// (28,000 years) from 1970.
std::string date(NSDate date);

}  // namespace QRVPlatform::ReadableScalars

// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Platform/Values/NSDate.h"

/// Scalars as text for people, the same in every locale.
namespace QRVPlatform::ReadableScalars {

/// The shortest decimal text that reads back as the same double; `nan`, `inf`, `-inf`.
std::string real(double value);

/// `2020-01-31T23:59:59.25Z`: UTC, rounded to microseconds, without a fraction when it is 0. A year
/// before 0 has a sign, one after 9999 more digits. `invalid date` when the date is not finite, or
/// beyond `Calendar::furthestSecond`.
std::string date(NSDate date);

}  // namespace QRVPlatform::ReadableScalars

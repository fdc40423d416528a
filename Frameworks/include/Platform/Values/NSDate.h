// SPDX-License-Identifier: MIT
#pragma once

#include <compare>
#include <iosfwd>

#include "Platform/Export.h"

/// An instant: seconds, with fraction, since 2001-01-01 00:00:00 UTC (leap seconds not counted).
/// The resolution is that of the double: better than a microsecond for this century.
class QRV_EXPORT NSDate {
  public:
    /// Seconds from 1970-01-01 to the reference date 2001-01-01.
    static constexpr double timeIntervalBetween1970AndReferenceDate = 978307200.0;

    constexpr explicit NSDate(double secondsSinceReferenceDate)
        : seconds_(secondsSinceReferenceDate) {}
    static NSDate now();
    static constexpr NSDate dateWithTimeIntervalSince1970(double seconds) {
        return NSDate(seconds - timeIntervalBetween1970AndReferenceDate);
    }
    [[nodiscard]] constexpr double timeIntervalSinceReferenceDate() const { return seconds_; }
    [[nodiscard]] constexpr double timeIntervalSince1970() const {
        return seconds_ + timeIntervalBetween1970AndReferenceDate;
    }
    constexpr auto operator<=>(const NSDate&) const = default;

  private:
    double seconds_;
};

QRV_EXPORT std::ostream& operator<<(std::ostream& stream, const NSDate& value);

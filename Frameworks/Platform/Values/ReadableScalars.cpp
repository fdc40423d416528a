// SPDX-License-Identifier: MIT
#include "Platform/Values/ReadableScalars.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "Platform/Values/Calendar.h"

namespace QRVPlatform::ReadableScalars {

std::string real(double value) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return {buffer.data(), result.ptr};
}

std::string date(NSDate date) {
    const double seconds = date.timeIntervalSinceReferenceDate();
    // Written so that NaN is outside too.
    if (!(std::abs(seconds) <= Calendar::furthestSecond)) return "invalid date";
    const double wholeSeconds = std::floor(seconds);
    const auto microseconds =
        static_cast<std::int64_t>(std::floor((seconds - wholeSeconds) * 1e6 + 0.5));
    const std::int64_t second = static_cast<std::int64_t>(wholeSeconds) + microseconds / 1000000;
    std::array<char, Calendar::longestText> buffer{};
    std::string text(buffer.data(), Calendar::writeText(buffer.data(), second));
    if (microseconds % 1000000 != 0) {
        std::string digits = std::to_string(1000000 + microseconds).substr(1);
        digits.erase(digits.find_last_not_of('0') + 1);
        text.insert(text.size() - 1, '.' + digits);
    }
    return text;
}

}  // namespace QRVPlatform::ReadableScalars

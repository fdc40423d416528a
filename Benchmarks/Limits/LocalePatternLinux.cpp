// SPDX-License-Identifier: MIT
// Asks ICU for the time pattern of the locale.
#include <unicode/udat.h>

#include <array>
#include <cstdlib>
#include <string>
#include <string_view>

#include "Limits/LocalePattern.h"

int lengthOfTimePattern() {
    const char* const variable = std::getenv("LC_ALL");
    const std::string_view locale = variable == nullptr ? "C" : variable;
    const std::string name =
        locale == "C" ? "en_US_POSIX" : std::string(locale.substr(0, locale.find('.')));
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUDateFormatPointer format(
        udat_open(UDAT_SHORT, UDAT_NONE, name.c_str(), nullptr, 0, nullptr, 0, &status));
    if (U_FAILURE(status) != 0) return 0;
    std::array<UChar, 128> pattern{};
    return udat_toPattern(format.getAlias(), 0, pattern.data(), pattern.size(), &status);
}

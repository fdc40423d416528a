// SPDX-License-Identifier: MIT
#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/ures.h>

#include <array>
#include <cstdlib>

#include "Platform/System/UserLocale.h"

namespace {

constexpr const char* ofNoLanguage = "root";

/// The name in the library's own form, `de_DE`; empty when it has none.
std::string canonicalName(const std::string& locale) {
    // Not names of languages, but what a system without a chosen locale speaks.
    const std::string name = locale.substr(0, locale.find_first_of(".@"));
    if (name == "C" || name == "POSIX") return "en_US_POSIX";
    std::array<char, ULOC_FULLNAME_CAPACITY> canonical{};
    UErrorCode status = U_ZERO_ERROR;
    uloc_canonicalize(locale.c_str(), canonical.data(), canonical.size(), &status);
    return U_FAILURE(status) != 0 || status == U_STRING_NOT_TERMINATED_WARNING ? ""
                                                                               : canonical.data();
}

/// Without this test an unknown locale would have the pattern of the library's default locale,
/// which depends on what the host has set.
bool isKnown(const std::string& name) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUResourceBundlePointer bundle(ures_open(nullptr, name.c_str(), &status));
    return U_SUCCESS(status) != 0 && status != U_USING_DEFAULT_WARNING;
}

/// Of interest are the letters, which are ASCII; anything else becomes `?`.
std::string asText(const std::array<UChar, 128>& pattern, int length) {
    std::string text;
    for (int index = 0; index < length; ++index) {
        const UChar unit = pattern.at(static_cast<std::size_t>(index));
        text += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return text;
}

}  // namespace

std::string userTimeLocale() {
    for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* const locale = std::getenv(variable);
        if (locale != nullptr && *locale != '\0') return locale;
    }
    return "C";
}

std::string shortTimePattern(const std::string& locale) {
    const std::string name = canonicalName(locale);
    const char* const known = !name.empty() && isKnown(name) ? name.c_str() : ofNoLanguage;
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUDateFormatPointer format(
        udat_open(UDAT_SHORT, UDAT_NONE, known, nullptr, 0, nullptr, 0, &status));
    if (U_FAILURE(status) != 0) return {};
    std::array<UChar, 128> pattern{};
    const int length =
        udat_toPattern(format.getAlias(), 0, pattern.data(), pattern.size(), &status);
    return U_FAILURE(status) != 0 ? "" : asText(pattern, length);
}

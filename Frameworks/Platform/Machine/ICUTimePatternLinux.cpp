// SPDX-License-Identifier: MIT
#include "Platform/Machine/ICUTimePattern.h"

// ICU's inline C++ would call its functions directly, and the library is not linked.
#define U_SHOW_CPLUSPLUS_API 0

#include <dlfcn.h>
#include <sys/auxv.h>
#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/ures.h>

#include <array>
#include <memory>

// The headers rename each function to the one of their own version.
#define QRV_TEXT(name) #name
#define QRV_NAME_IN_LIBRARY(function) QRV_TEXT(function)

namespace QRVPlatform {

namespace {

constexpr const char* ofNoLanguage = "root";

/// The functions of ICU. Loading it takes as long as the rest of a process's start, and few
/// processes need it: so the first use loads it.
struct ICU {
    decltype(&uloc_canonicalize) canonicalize = nullptr;
    decltype(&ures_open) openBundle = nullptr;
    decltype(&ures_close) closeBundle = nullptr;
    decltype(&udat_open) openFormat = nullptr;
    decltype(&udat_close) closeFormat = nullptr;
    decltype(&udat_toPattern) toPattern = nullptr;
};

template <typename Function>
bool find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

bool findAll(void* library, ICU& icu) {
    return find(library, QRV_NAME_IN_LIBRARY(uloc_canonicalize), icu.canonicalize) &&
           find(library, QRV_NAME_IN_LIBRARY(ures_open), icu.openBundle) &&
           find(library, QRV_NAME_IN_LIBRARY(ures_close), icu.closeBundle) &&
           find(library, QRV_NAME_IN_LIBRARY(udat_open), icu.openFormat) &&
           find(library, QRV_NAME_IN_LIBRARY(udat_close), icu.closeFormat) &&
           find(library, QRV_NAME_IN_LIBRARY(udat_toPattern), icu.toPattern);
}

std::optional<ICU> loadICU() {
    if (getauxval(AT_SECURE) != 0) return std::nullopt;
    constexpr const char* file = "libicui18n.so." U_ICU_VERSION_SHORT;
    ICU icu;
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    return library != nullptr && findAll(library, icu) ? std::optional(icu) : std::nullopt;
}

/// Empty where it cannot be loaded; there is no retry.
const std::optional<ICU>& loadedICU() {
    static const std::optional<ICU> icu = loadICU();
    return icu;
}

/// The name in the library's own form, `de_DE`; empty when it has none.
std::string canonicalName(const std::string& locale, const ICU& icu) {
    // No names of languages: they stand for a system without a chosen locale.
    const std::string name = locale.substr(0, locale.find_first_of(".@"));
    if (name == "C" || name == "POSIX") return "en_US_POSIX";
    std::array<char, ULOC_FULLNAME_CAPACITY> canonical{};
    UErrorCode status = U_ZERO_ERROR;
    icu.canonicalize(locale.c_str(), canonical.data(), canonical.size(), &status);
    return U_FAILURE(status) != 0 || status == U_STRING_NOT_TERMINATED_WARNING ? ""
                                                                               : canonical.data();
}

/// Without this test an unknown locale would have the pattern of the library's default locale,
/// which depends on what the host has set.
bool isKnown(const std::string& name, const ICU& icu) {
    UErrorCode status = U_ZERO_ERROR;
    icu.closeBundle(icu.openBundle(nullptr, name.c_str(), &status));
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

std::string patternOf(const char* name, const ICU& icu) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UDateFormat, decltype(icu.closeFormat)> format(
        icu.openFormat(UDAT_SHORT, UDAT_NONE, name, nullptr, 0, nullptr, 0, &status),
        icu.closeFormat);
    if (U_FAILURE(status) != 0) return {};
    std::array<UChar, 128> pattern{};
    const int length = icu.toPattern(format.get(), 0, pattern.data(), pattern.size(), &status);
    return U_FAILURE(status) != 0 ? "" : asText(pattern, length);
}

}  // namespace

std::optional<std::string> ICUTimePattern::of(const std::string& locale) {
    const std::optional<ICU>& icu = loadedICU();
    if (!icu) return std::nullopt;
    const std::string name = canonicalName(locale, *icu);
    const bool isKnownName = !name.empty() && isKnown(name, *icu);
    return patternOf(isKnownName ? name.c_str() : ofNoLanguage, *icu);
}

}  // namespace QRVPlatform

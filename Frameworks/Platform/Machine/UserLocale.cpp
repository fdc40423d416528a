// SPDX-License-Identifier: MIT
#include "Platform/Machine/UserLocale.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "Platform/Machine/ICUTimePattern.h"
#include "Platform/Machine/TimePatternTable.h"

namespace QRVPlatform {

namespace {

/// The name without encoding and modifier, which do not change the pattern. A modifier of ICU's own
/// (`@hours=h12`) may; that name is in no table.
std::string_view nameInTable(std::string_view locale) {
    if (locale.find('=') != std::string_view::npos) return locale;
    return locale.substr(0, locale.find_first_of(".@"));
}

std::optional<std::string> knownPattern(std::string_view name) {
    const auto row = std::lower_bound(TimePatternTable::rows.begin(), TimePatternTable::rows.end(),
                                      name, [](const auto& candidate, std::string_view wanted) {
                                          return candidate.locale.data() < wanted;
                                      });
    if (row == TimePatternTable::rows.end() || row->locale.data() != name) return std::nullopt;
    return std::string(TimePatternTable::patterns[row->pattern]);
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
    std::optional<std::string> pattern = knownPattern(nameInTable(locale));
    if (!pattern) pattern = ICUTimePattern::of(locale);
    return pattern ? *pattern : knownPattern("C").value_or("");
}

}  // namespace QRVPlatform

// SPDX-License-Identifier: MIT
#include "Settings/KnownKeyPaths.h"

#include <algorithm>

#include "Text/KeyPaths.h"
#include "Text/LetterCase.h"

namespace Tool {
namespace {

bool isDigit(char character) {
    return '0' <= character && character <= '9';
}

/// Replaces every number by one digit.
std::string withoutNumbers(std::string_view text) {
    std::string result;
    for (const char character : text) {
        if (!isDigit(character))
            result += character;
        else if (!result.ends_with('0'))
            result += '0';
    }
    return result;
}

/// Whether one edit turns one text into the other. They must differ in their first and last
/// characters.
bool isOneEdit(std::string_view one, std::string_view other) {
    if (one.size() + other.size() == 1) return true;
    if (one.size() != other.size()) return false;
    return one.size() == 1 || (one.size() == 2 && one[0] == other[1] && one[1] == other[0]);
}

bool isOneEditApart(std::string_view one, std::string_view other) {
    const std::size_t shorter = std::min(one.size(), other.size());
    std::size_t start = 0;
    while (start < shorter && one[start] == other[start]) ++start;
    one.remove_prefix(start);
    other.remove_prefix(start);
    while (!one.empty() && !other.empty() && one.back() == other.back()) {
        one.remove_suffix(1);
        other.remove_suffix(1);
    }
    return isOneEdit(one, other);
}

/// Up to the end of the first key that differs.
std::string_view throughFirstDifference(std::string_view keyPath, std::string_view other) {
    const auto difference =
        std::mismatch(keyPath.begin(), keyPath.end(), other.begin(), other.end()).first -
        keyPath.begin();
    return keyPath.substr(0, keyPath.find('.', static_cast<std::size_t>(difference)));
}

}  // namespace

KnownKeyPaths::KnownKeyPaths(const KnownLists& lists) {
    for (const auto& [keyPath, setting] : lists.settings()) add(keyPath);
}

void KnownKeyPaths::add(const std::string& keyPath) {
    for (std::size_t end = keyPath.find('.'); end != keyPath.npos; end = keyPath.find('.', end + 1))
        keyPaths_.insert(keyPath.substr(0, end));
    keyPaths_.insert(keyPath);
}

bool KnownKeyPaths::have(std::string_view keyPath) const {
    return keyPaths_.find(keyPath) != keyPaths_.end();
}

// Another known name in its place, such as GPU for CPU, is no typo. Names that differ in case alone
// are easily mistaken for each other.
bool KnownKeyPaths::isTypo(std::string_view keyPath, std::string_view known) const {
    if (lowercase(std::string(keyPath)) == lowercase(std::string(known))) return true;
    return isOneEditApart(keyPath, known) && withoutNumbers(keyPath) != withoutNumbers(known) &&
           !have(throughFirstDifference(keyPath, known));
}

std::optional<std::string> KnownKeyPaths::meantBy(std::string_view keyPath) const {
    if (have(keyPath)) return std::nullopt;
    const auto known = std::find_if(keyPaths_.begin(), keyPaths_.end(),
                                    [&](const auto& one) { return isTypo(keyPath, one); });
    return known == keyPaths_.end() ? std::nullopt : std::optional(*known);
}

std::optional<std::string> KnownKeyPaths::meantInPlaceBy(std::string_view keyPath) const {
    const std::string_view plain = QRVPlainKeyPath(keyPath);
    const auto meant = meantBy(plain);
    if (!meant) return std::nullopt;
    return std::string(keyPath.substr(0, keyPath.size() - plain.size())) + *meant;
}

std::string atKeyPath(std::string_view keyPath) {
    const auto known = KnownKeyPaths(KnownLists::read()).meantInPlaceBy(keyPath);
    return ", " + keyPathText(keyPath) + (known ? "; did you mean " + *known + "?" : "");
}

std::string notSet(std::string_view keyPath) {
    return "not set" + atKeyPath(keyPath);
}

}  // namespace Tool

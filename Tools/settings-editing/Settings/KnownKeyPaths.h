// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "Settings/KnownLists.h"

namespace Tool {

/// The key paths that are known, and those above them. The application also uses others.
class KnownKeyPaths {
  public:
    explicit KnownKeyPaths(const KnownLists& lists);

    [[nodiscard]] bool have(std::string_view keyPath) const;

    /// The known key path of which this one is a typo: a character too many, too few, wrong, or
    /// swapped with its neighbour, or letters in the wrong case. Empty for a known key path, and
    /// where the difference has a meaning: another number, or another known name in its place.
    [[nodiscard]] std::optional<std::string> meantBy(std::string_view keyPath) const;
    /// The same for a key path that may be one of a profile, in that profile.
    [[nodiscard]] std::optional<std::string> meantInPlaceBy(std::string_view keyPath) const;

  private:
    [[nodiscard]] bool isTypo(std::string_view keyPath, std::string_view known) const;
    void add(const std::string& keyPath);
    std::set<std::string, std::less<>> keyPaths_;
};

/// `, KEYPATH`, and `; did you mean KNOWN?` when it is a typo of a known one: for the end of a
/// message that nothing is there.
std::string atKeyPath(std::string_view keyPath);

/// The message of commands that find no value at a key path.
std::string notSet(std::string_view keyPath);

}  // namespace Tool

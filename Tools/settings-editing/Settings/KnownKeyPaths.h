// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// The key paths that the application is known to use, and those above them: key paths with a
/// default, and those of the store itself. The application also uses others, without a default.
class KnownKeyPaths {
  public:
    /// `defaults` is the tree of them; null for none.
    explicit KnownKeyPaths(const NSDictionary& defaults);

    [[nodiscard]] bool have(std::string_view keyPath) const;

    /// The known key path of which this one is a typo: a character too many, too few, wrong, or
    /// swapped with its neighbour, or letters in the wrong case. Empty for a known key path, and
    /// where the difference has a meaning: another number, or another known name in its place.
    [[nodiscard]] std::optional<std::string> meantBy(std::string_view keyPath) const;

  private:
    [[nodiscard]] bool isTypo(std::string_view keyPath, std::string_view known) const;
    void add(const std::string& keyPath);
    std::set<std::string, std::less<>> keyPaths_;
};

/// `; did you mean KEYPATH?`, for the end of a message; empty when it is no typo of a known one.
/// Call it after the store is prepared: there are no defaults before.
std::string didYouMean(std::string_view keyPath);

/// The key path as the application reads it: for a setting of a profile, the part after the name of
/// the profile.
std::string_view withoutProfile(std::string_view keyPath);

}  // namespace Tool

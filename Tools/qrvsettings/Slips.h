// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

/// The key paths that the application is known to use, those on the way to them included: the
/// defaults', and those that the store keeps for itself. There are others, which have no default.
class KnownKeyPaths {
  public:
    /// `defaults` is the tree of them; null for none.
    explicit KnownKeyPaths(const NSDictionary& defaults);

    [[nodiscard]] bool have(std::string_view keyPath) const;

    /// The known key path that is one slip of the keyboard away: a character too many, too few,
    /// wrong, or swapped with its neighbour, or letters in the wrong case. Empty for a known key
    /// path, and where the difference has a meaning: another number, or another known name in
    /// its place.
    [[nodiscard]] std::optional<std::string> meantBy(std::string_view keyPath) const;

  private:
    [[nodiscard]] bool isSlip(std::string_view keyPath, std::string_view known) const;
    void add(const std::string& keyPath);
    std::set<std::string, std::less<>> keyPaths_;
};

/// `; did you mean KEYPATH?`, for the end of a message; empty where nothing suggests itself. Knows
/// the defaults after the start-up only.
std::string didYouMean(std::string_view keyPath);

/// The key path as the application asks for it: of one in a profile what comes after the name.
std::string_view withoutProfile(std::string_view keyPath);

}  // namespace Tool

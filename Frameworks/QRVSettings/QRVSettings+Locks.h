// SPDX-License-Identifier: MIT
#pragma once

// The key paths that the site has locked, and what that does to values.

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace QRVInside {

/// Where the defaults have what is at a key path: at the plain one. Empty, for all of them, where
/// the key path is that of a whole profile or of all profiles.
std::string_view keyPathOfDefault(std::string_view keyPath);

class Locks {
    struct Level {
        std::string file;  ///< of the lock; empty where nothing is locked but below
        std::map<std::string, Level, std::less<>> levels;
    };

  public:
    /// Where a key path leads to among the locks. Valid as long as the locks, and until the next is
    /// added.
    class Place {
      public:
        /// Neither it nor anything below it is locked.
        [[nodiscard]] bool isFree() const { return kind_ == Kind::Free; }
        [[nodiscard]] bool isLocked() const { return !file().empty(); }
        /// Of the lock; empty when it is not locked.
        [[nodiscard]] const std::string& file() const;
        /// Of the first lock at or below it.
        [[nodiscard]] const std::string& fileBelow() const;
        [[nodiscard]] Place at(std::string_view key) const;
        /// The level that holds all profiles: what is locked below it is locked in each.
        [[nodiscard]] bool holdsProfiles() const { return kind_ == Kind::ProfileNames; }
        /// The keys at which something is locked, in a tree that has these two values here.
        [[nodiscard]] std::set<std::string> keys(const NSDictionary& one,
                                                 const NSDictionary& other) const;

      private:
        friend class Locks;
        enum class Kind { Free, Root, Level, Profiles, ProfileNames };
        Place(Kind kind, const Locks* locks, const Level* level)
            : kind_(kind), locks_(locks), level_(level) {}
        Kind kind_;
        const Locks* locks_;
        const Level* level_;  ///< of plain key paths
    };

    /// Locks the key path with all below it. Of two locks the earlier is kept.
    void add(std::string_view keyPath, const std::string& file);
    [[nodiscard]] bool areNone() const { return root_.levels.empty(); }
    [[nodiscard]] Place root() const;
    [[nodiscard]] Place at(std::string_view keyPath) const;

  private:
    Level root_;
};

/// The value with the defaults where it is locked. `byDefault` is the default at the place, and
/// `defaults` are all.
PropertyListValue lockedView(const Locks::Place& place, const PropertyListValue& value,
                             const PropertyListValue& byDefault, const NSDictionary& defaults);

/// A write at a place, of which only what is not locked is done.
struct LockedWrite {
    /// `file` is that of the lock.
    using Refusal = std::function<void(const std::string& keyPath, const std::string& file)>;

    PropertyListValue stored;   ///< at present
    PropertyListValue written;  ///< null removes
    PropertyListValue byDefault;
    std::string keyPath;  ///< for the refusals

    /// What to write instead; empty when nothing may be written. `refuse` is called for each locked
    /// place at which something else was to be written than is stored or is the default.
    [[nodiscard]] std::optional<PropertyListValue> permitted(const Locks::Place& place,
                                                             const NSDictionary& defaults,
                                                             const Refusal& refuse) const;
};

}  // namespace QRVInside

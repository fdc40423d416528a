// SPDX-License-Identifier: MIT
#pragma once

/// Held keys: typed keys for settings that a host reads very often, such as for each frame that it
/// draws. All other reads need only the functions of `QRVKeys.h`.
///
///     class Menubar {
///         QRVHeldProfileKey<bool> isShown_{Keys::CPU::Menubar::Enabled};
///         void draw() { if (isShown_.value()) ... }
///     };
///
/// A `QRVHeldKey` always gives what `QRVSettingsValue` gives for its key, and a `QRVHeldProfileKey`
/// what `QRVSettingsProfileValue` gives, whatever has changed since the last read: values, the
/// active profile, defaults, locks, the cache. A held key remembers no value. It remembers which
/// entry of the cache (`QRVSettings::cache`) has the value, and each read asks the cache itself.
///
/// Cost: a few nanoseconds while the entry has not moved; text is copied as well. These reads cost
/// as much as those of `QRVKeys.h`:
/// - the first read, and the next one after the entry has moved;
/// - each read without a cache, or while the site has locked anything;
/// - each read where no layer has a value, or the cache has one that cannot be converted.
///
/// Threads: reads and copies are for the host's thread. A held key may be made and destroyed on any
/// thread and at any time, also before the store exists and at the end of the process. The text of
/// its key path must live as long.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <type_traits>

#include "Platform/Export.h"
#include "Platform/Values/ObjectReference.h"
#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"
#include "QRVSettings/QRVKeys.h"

namespace QRVInside {

/// @cond
/// Which entry of the cache a value was in. An entry is known by the object of its key, which is
/// kept, so that no other key can be taken for it.
class QRV_EXPORT HeldEntry {
  public:
    enum class Scope : std::uint8_t { Application, Profile };
    explicit HeldEntry(Scope scope) noexcept : scope_(scope) {}

    /// The effective value if the entry is where it was and has one; else null. Valid until the
    /// next call of the store.
    [[nodiscard]] const PropertyListValue* value() const;
    /// Looks for the entry of the key path.
    void find(QRVKeyPath keyPath);

  private:
    QRVPlatform::ValueObjects::ObjectReference key_;
    std::uint64_t profile_ = 0;  ///< the number of the active one when the entry was found
    std::uint32_t index_ = 0;
    Scope scope_;
};
/// @endcond

/// What both kinds of held key have.
template <QRVKeyValue Value, HeldEntry::Scope Scope>
class HeldKey {
  public:
    explicit HeldKey(const QRVKey<Value>& key) noexcept : key_(key) {}

    [[nodiscard]] const QRVKey<Value>& key() const noexcept { return key_; }
    /// The value; where nothing answers, what the function without a fallback gives.
    [[nodiscard]] Value value() const { return present().value_or(nothing<Value>()); }
    /// The value; `fallback` where nothing answers.
    [[nodiscard]] Value value(const std::type_identity_t<Value>& fallback) const {
        return present().value_or(fallback);
    }

  private:
    [[nodiscard]] std::optional<Value> present() const {
        if (const PropertyListValue* const held = entry_.value()) {
            std::optional<Value> value = valueAs<Value>(*held);
            if (value) return value;
        }
        return presentInAnyLayer();
    }
    [[nodiscard, gnu::noinline]] std::optional<Value> presentInAnyLayer() const {
        std::optional<Value> result;
        if constexpr (Scope == HeldEntry::Scope::Profile)
            result = profileValue(key_);
        else
            result = QRVInside::value(key_);
        entry_.find(key_);
        return result;
    }

    QRVKey<Value> key_;
    mutable HeldEntry entry_{Scope};
};

}  // namespace QRVInside

/// A setting as `QRVSettingsValue` reads it.
template <QRVKeyValue Value>
class QRVHeldKey : public QRVInside::HeldKey<Value, QRVInside::HeldEntry::Scope::Application> {
  public:
    explicit QRVHeldKey(const QRVKey<Value>& key) noexcept
        : QRVInside::HeldKey<Value, QRVInside::HeldEntry::Scope::Application>(key) {}
};

/// A setting of the active profile, as `QRVSettingsProfileValue` reads it.
template <QRVKeyValue Value>
class QRVHeldProfileKey : public QRVInside::HeldKey<Value, QRVInside::HeldEntry::Scope::Profile> {
  public:
    explicit QRVHeldProfileKey(const QRVKey<Value>& key) noexcept
        : QRVInside::HeldKey<Value, QRVInside::HeldEntry::Scope::Profile>(key) {}
};

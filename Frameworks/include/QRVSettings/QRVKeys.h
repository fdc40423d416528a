// SPDX-License-Identifier: MIT
#pragma once

/// Typed keys: a misspelt key path and a value of the wrong kind do not compile.
///
///     const bool isShown = QRVSettingsProfileValue(Keys::CPU::Menubar::Enabled);
///     QRVSettingsSetValue("violet", Keys::Menu::Theme::Dark);
///     QRVSettingsSetValue(nullptr, Keys::Menu::Theme::Dark);  // the default again
///
/// `Keys` has a key for each known setting but the records of the store. Its name follows from the
/// key path: each "." becomes "::". A number has an N before it, as in
/// `Keys::Weather::Menu::Forecast::Graph::N1`. A name that C++ keeps for itself, or that is also a
/// level, has a _ at its end: `Keys::Sensors::Global::Fans_`, beside
/// `Keys::Sensors::Global::Fans::Curve::Sync`.
///
/// A host declares keys of its own, and gives a default where it reads:
///
///     constexpr QRVKey<std::int64_t> interval("Host.Interval");
///     const std::int64_t seconds = QRVSettingsValue(interval, 30);
///
/// Each function does what the one with `Object` in its name does for a key path, or the one with
/// `Color` for a colour: caching, threads and errors are as in `QRVSettings.h`. `QRVScopeOfKeyPath`
/// says which settings the application reads from a profile.
///
/// Xlib.h defines a macro `Status`: undefine it after the include.
///
/// What is stored may be of another kind than the key, because another program or an earlier
/// version wrote it. Then booleans, numbers and text are converted as by `boolValue`,
/// `integerValue`, `doubleValue` and `stringValue`. Everything else, and text that is no colour,
/// counts as absent: the default answers.

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "Platform/Export.h"
#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/KeyPath.h"
#include "QRVSettings/QRVSettings.h"

/// The types that a key may have. `PropertyListValue` is for a setting of any kind.
template <typename Value>
concept QRVKeyValue =
    std::same_as<Value, bool> || std::same_as<Value, std::int64_t> || std::same_as<Value, double> ||
    std::same_as<Value, std::string> || std::same_as<Value, NSColor> ||
    std::same_as<Value, NSDate> || std::same_as<Value, NSData> || std::same_as<Value, NSArray> ||
    std::same_as<Value, NSDictionary> || std::same_as<Value, PropertyListValue>;

/// The key path of a setting, with the type of its value.
template <QRVKeyValue Value>
class QRVKey {
  public:
    /// Refers to the text.
    explicit constexpr QRVKey(std::string_view keyPath) noexcept : keyPath_(keyPath) {}

    [[nodiscard]] constexpr std::string_view keyPath() const noexcept { return keyPath_; }
    /// For the functions that take a key path.
    constexpr operator QRVKeyPath() const noexcept { return keyPath_; }

  private:
    std::string_view keyPath_;
};

/// Whether a value of type `Given` may be written to a key. Nothing is converted to a boolean, and
/// a boolean to nothing else.
template <typename Given, typename Value>
concept QRVWritableAs =
    std::same_as<Given, Value> ||
    (std::same_as<Value, std::int64_t>&& std::integral<Given> && !std::same_as<Given, bool> &&
     std::constructible_from<PropertyListValue, Given>) ||
    (std::same_as<Value, double> && std::constructible_from<PropertyListValue, Given> &&
     (std::floating_point<Given> || (std::integral<Given> && !std::same_as<Given, bool>))) ||
    (std::same_as<Value, std::string> && !std::same_as<Given, std::nullptr_t> &&
     std::convertible_to<Given, std::string_view>) ||
    (!std::same_as<Value, PropertyListValue> && std::is_class_v<Value> &&
     std::derived_from<Given, Value>) ||
    (std::same_as<Value, PropertyListValue> && !std::same_as<Given, std::nullptr_t> &&
     std::convertible_to<Given, PropertyListValue>);

/// @cond
namespace QRVInside {

constexpr bool isConvertible(const PropertyListValue& value) {
    return value.isBoolean() || value.isNumber() || value.isString();
}

template <QRVKeyValue Value>
Value nothing() {
    if constexpr (std::same_as<Value, NSDate>)
        return NSDate(0);
    else
        return Value();
}

/// Empty where the value counts as absent.
template <QRVKeyValue Value>
std::optional<Value> valueAs(const PropertyListValue& value);
template <>
inline std::optional<bool> valueAs(const PropertyListValue& value) {
    return isConvertible(value) ? std::optional(value.boolValue()) : std::nullopt;
}
template <>
inline std::optional<std::int64_t> valueAs(const PropertyListValue& value) {
    return isConvertible(value) ? std::optional(value.integerValue()) : std::nullopt;
}
template <>
inline std::optional<double> valueAs(const PropertyListValue& value) {
    return isConvertible(value) ? std::optional(value.doubleValue()) : std::nullopt;
}
template <>
inline std::optional<std::string> valueAs(const PropertyListValue& value) {
    return isConvertible(value) ? std::optional(value.stringValue()) : std::nullopt;
}
template <>
inline std::optional<NSDate> valueAs(const PropertyListValue& value) {
    return value.isDate() ? std::optional(value.date()) : std::nullopt;
}
template <>
inline std::optional<NSData> valueAs(const PropertyListValue& value) {
    return value.isData() ? std::optional(value.data()) : std::nullopt;
}
template <>
inline std::optional<NSArray> valueAs(const PropertyListValue& value) {
    return value.isArray() ? std::optional(value.array()) : std::nullopt;
}
template <>
inline std::optional<NSDictionary> valueAs(const PropertyListValue& value) {
    return value.isDictionary() ? std::optional(value.dictionary()) : std::nullopt;
}
template <>
inline std::optional<NSColor> valueAs(const PropertyListValue& value) {
    const PropertyListValue color = value.isColor() ? value : QRVSettingsColorOfText(value);
    return color.isColor() ? std::optional(color.color()) : std::nullopt;
}
template <>
inline std::optional<PropertyListValue> valueAs(const PropertyListValue& value) {
    return value.isNull() ? std::nullopt : std::optional(value);
}

template <QRVKeyValue Value>
std::optional<Value> presentValue(const PropertyListValue& effective, const QRVKey<Value>& key) {
    const std::optional<Value> value = valueAs<Value>(effective);
    return value ? value : valueAs<Value>(QRVSettingsDefaultForKeyPath(key));
}

template <QRVKeyValue Value>
std::optional<Value> value(const QRVKey<Value>& key) {
    if constexpr (std::same_as<Value, NSColor>)
        return presentValue(QRVSettingsColorForKeyPath(key), key);
    else
        return presentValue(QRVSettingsObjectForKeyPath(key), key);
}

template <QRVKeyValue Value>
std::optional<Value> profileValue(const QRVKey<Value>& key) {
    if constexpr (std::same_as<Value, NSColor>) {
        const PropertyListValue color =
            QRVSettingsColorForKeyPath(QRVSettingsProfileKeyForKey(key));
        // The null marker that was cached would hide the default from reads of the object.
        if (color.isNull()) QRVSettingsProfileClearCacheForKeyPath(key);
        return presentValue(color, key);
    } else {
        return presentValue(QRVSettingsProfileObjectForKeyPath(key), key);
    }
}

template <QRVKeyValue Value, typename Given>
PropertyListValue written(const Given& given, const QRVKey<Value>& key) {
    if constexpr (std::same_as<Value, NSColor>) {
        // The text of the default itself: one made from its colour may have other digits.
        const PropertyListValue byDefault = QRVSettingsDefaultForKeyPath(key);
        return valueAs<NSColor>(byDefault) == given ? byDefault : QRVSettingsTextOfColor(given);
    } else if constexpr (std::same_as<Value, double>)
        return static_cast<double>(given);
    else if constexpr (std::same_as<Value, std::string>)
        return std::string_view(given);
    else
        return given;
}

}  // namespace QRVInside
/// @endcond

/// @name Reading
/// Where nothing answers, the result is false, 0, empty, opaque black, the first instant of 2001,
/// or null for a key of any kind.
/// @{

/// The effective value.
template <QRVKeyValue Value>
[[nodiscard]] Value QRVSettingsValue(const QRVKey<Value>& key) {
    return QRVInside::value(key).value_or(QRVInside::nothing<Value>());
}

/// The same; `fallback` where neither a stored value nor a default answers.
template <QRVKeyValue Value>
[[nodiscard]] Value QRVSettingsValue(const QRVKey<Value>& key,
                                     const std::type_identity_t<Value>& fallback) {
    return QRVInside::value(key).value_or(fallback);
}

/// The stored value, without cache and defaults.
template <QRVKeyValue Value>
[[nodiscard]] std::optional<Value> QRVSettingsStoredValue(const QRVKey<Value>& key) {
    return QRVInside::valueAs<Value>(QRVSettingsStoredObjectForKeyPath(key));
}

/// The built-in default.
template <QRVKeyValue Value>
[[nodiscard]] Value QRVSettingsDefaultValue(const QRVKey<Value>& key) {
    return QRVInside::valueAs<Value>(QRVSettingsDefaultForKeyPath(key))
        .value_or(QRVInside::nothing<Value>());
}

/// The active profile's value, else the default.
template <QRVKeyValue Value>
[[nodiscard]] Value QRVSettingsProfileValue(const QRVKey<Value>& key) {
    return QRVInside::profileValue(key).value_or(QRVInside::nothing<Value>());
}

/// The same; `fallback` where neither answers.
template <QRVKeyValue Value>
[[nodiscard]] Value QRVSettingsProfileValue(const QRVKey<Value>& key,
                                            const std::type_identity_t<Value>& fallback) {
    return QRVInside::profileValue(key).value_or(fallback);
}
/// @}

/// @name Writing
/// `nullptr` removes the stored value, and so does a value that equals the default; for a colour,
/// one that reads as the default does.
/// @{
template <QRVKeyValue Value, typename Given>
requires QRVWritableAs<std::decay_t<const Given&>, Value>
void QRVSettingsSetValue(const Given& value, const QRVKey<Value>& key) {
    QRVSettingsSetObjectForKeyPath(QRVInside::written(value, key), key);
    // What a write has cached is text, and the next read of the colour must give a colour.
    if constexpr (std::same_as<Value, NSColor>) QRVSettingsClearCacheForKeyPath(key);
}
template <QRVKeyValue Value>
void QRVSettingsSetValue(std::nullptr_t, const QRVKey<Value>& key) {
    QRVSettingsSetObjectForKeyPath(nullptr, key);
    if constexpr (std::same_as<Value, NSColor>) QRVSettingsClearCacheForKeyPath(key);
}

template <QRVKeyValue Value, typename Given>
requires QRVWritableAs<std::decay_t<const Given&>, Value>
void QRVSettingsProfileSetValue(const Given& value, const QRVKey<Value>& key) {
    QRVSettingsProfileSetObjectForKeyPath(QRVInside::written(value, key), key);
    if constexpr (std::same_as<Value, NSColor>) QRVSettingsProfileClearCacheForKeyPath(key);
}
template <QRVKeyValue Value>
void QRVSettingsProfileSetValue(std::nullptr_t, const QRVKey<Value>& key) {
    QRVSettingsProfileSetObjectForKeyPath(nullptr, key);
    if constexpr (std::same_as<Value, NSColor>) QRVSettingsProfileClearCacheForKeyPath(key);
}
/// @}

/// @cond
#define QRV_TYPE_Boolean bool
#define QRV_TYPE_Integer std::int64_t
#define QRV_TYPE_String std::string
#define QRV_TYPE_Color NSColor
#define QRV_TYPE_Array NSArray
#define QRV_TYPE_Dictionary NSDictionary
#define QRV_TYPE_Null PropertyListValue
#define QRV_KEY_OF_Record(keyPath, levels, name, type)
#define QRV_KEY_OF_Application(keyPath, levels, name, type) \
    namespace levels {                                      \
    inline constexpr QRVKey<type> name(keyPath);            \
    }
#define QRV_KEY_OF_Profile(keyPath, levels, name, type) \
    QRV_KEY_OF_Application(keyPath, levels, name, type)
#define QRV_SETTING(keyPath, levels, name, kind, byDefault, scope, sentence) \
    QRV_KEY_OF_##scope(keyPath, levels, name, QRV_TYPE_##kind)
#include "QRVSettings/KnownSettingsTable.h"  // IWYU pragma: keep
#undef QRV_KEY_OF_Profile
#undef QRV_KEY_OF_Application
#undef QRV_KEY_OF_Record
#undef QRV_TYPE_Null
#undef QRV_TYPE_Dictionary
#undef QRV_TYPE_Array
#undef QRV_TYPE_Color
#undef QRV_TYPE_String
#undef QRV_TYPE_Integer
#undef QRV_TYPE_Boolean
/// @endcond

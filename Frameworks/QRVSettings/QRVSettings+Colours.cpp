// SPDX-License-Identifier: MIT
// Colours: four numbers as text in the settings, a colour object in the cache.
//
// A read, QRVSettingsColorForKeyPath:
// 1. A null key path is null.
// 2. A cache entry answers, whatever it is; the null marker gives null.
// 3. A stored colour answers, and is cached unless the cache is disabled.
// 4. The default colour answers, and is cached even when the cache is disabled.
// 5. Without a default colour the null marker is cached likewise.

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "QRVSettings/QRVSettings+Cache.h"
#include "QRVSettings/QRVSettings+HostThread.h"
#include "QRVSettings/QRVSettings+Site.h"
#include "QRVSettings/QRVSettings.h"

using QRVInside::cachedValue;
using QRVInside::cacheValue;
using QRVInside::requireHostThread;
using QRVInside::StoreInside;
using QRVInside::valueOfEntry;
using QRVPlatform::HashedKey;

namespace {

using Pieces = std::array<std::string_view, 4>;

/// The texts between the spaces when there are four; else empty.
std::optional<Pieces> splitAtSpaces(std::string_view text) {
    Pieces pieces;
    for (std::size_t index = 0; index < pieces.size(); ++index) {
        const bool isLast = index + 1 == pieces.size();
        const std::size_t end = text.find(' ');
        if ((end == std::string_view::npos) != isLast) return std::nullopt;
        pieces[index] = text.substr(0, end);
        if (!isLast) text.remove_prefix(end + 1);
    }
    return pieces;
}

double component(std::string_view piece) {
    return PropertyListValue(piece).floatValue();
}

}  // namespace

PropertyListValue QRVSettingsColorOfText(const PropertyListValue& text) {
    if (!text.isString()) return nullptr;
    const std::optional<Pieces> pieces = splitAtSpaces(text.stringView());
    if (!pieces) return nullptr;
    const auto& [red, green, blue, alpha] = *pieces;
    return NSColor::colorWithSRGBRed(component(red), component(green), component(blue),
                                     component(alpha));
}

std::string QRVSettingsTextOfColor(const NSColor& color) {
    const auto number = [](double component) { return PropertyListValue(component).stringValue(); };
    return number(color.redComponent) + " " + number(color.greenComponent) + " " +
           number(color.blueComponent) + " " + number(color.alphaComponent);
}

PropertyListValue QRVSettingsColorForKeyPath(QRVKeyPath keyPath) {
    requireHostThread();
    if (keyPath.isNull()) return nullptr;  // 1
    const bool areLocked = StoreInside::state().locks != nullptr;
    if (areLocked && QRVSettingsIsLocked(keyPath))
        return QRVSettingsColorOfText(QRVInside::lockedValue(keyPath.text()));
    const StoreInside::State& state = StoreInside::state();
    const HashedKey key = HashedKey::of(keyPath.text());

    const PropertyListValue* const cached = cachedValue(state, key);
    if (cached != nullptr) return valueOfEntry(*cached);  // 2

    PropertyListValue stored = QRVSettingsColorOfText(QRVSettingsStoredObjectForKeyPath(keyPath));
    if (!stored.isNull()) {  // 3
        if (!state.disableCache) cacheValue(state, stored, key);
        return stored;
    }

    PropertyListValue byDefault =
        QRVSettingsColorOfText(QRVSettingsDefaultForKeyPath(keyPath));  // 4, 5
    cacheValue(state, byDefault, key);
    return byDefault;
}

void QRVSettingsSetColorForKeyPath(const PropertyListValue& color, QRVKeyPath keyPath) {
    requireHostThread();
    if (!color.isNull() && !color.isColor())
        throw NSInvalidArgumentException("the value to write is not a colour");
    const PropertyListValue text =
        color.isNull() ? nullptr : PropertyListValue(QRVSettingsTextOfColor(color.color()));
    // The whole key path as one key of the top level. No key there holds a dot; for key paths with
    // a dot the write below compares with the default.
    const QRVSettings& store = QRVSettings::sharedSettings();
    const bool isDefault = !text.isNull() && store.defaults().objectForKey(keyPath.text()) == text;
    QRVSettingsSetObjectForKeyPathWithCache(isDefault ? nullptr : text, keyPath, false);
    // The write has cached the text; the next read must give a colour.
    store.cache().removeObjectForKey(keyPath.text());
}

// SPDX-License-Identifier: MIT
#include "Table/Variants.h"

#include "QRVSettings/QRVSettings.h"
#include "Session/Session.h"

namespace QRVWindow {
namespace {

std::optional<NSColor> colorOf(const Session& session, const Tool::SettingRow& row,
                               bool ofDefault) {
    if (!row.isColor()) return std::nullopt;
    const PropertyListValue color =
        QRVSettingsColorOfText(ofDefault ? row.byDefault : session.valueWithEdits(row.keyPath));
    return color.isColor() ? std::optional(color.color()) : std::nullopt;
}

}  // namespace

std::optional<OtherVariant> otherVariant(std::string_view keyPath) {
    std::size_t end = keyPath.size();
    for (int names = 0; names < 2 && end != 0; ++names) {
        const std::size_t dot = keyPath.rfind('.', end - 1);
        const std::size_t start = dot == std::string_view::npos ? 0 : dot + 1;
        const std::string_view name = keyPath.substr(start, end - start);
        if (name == "Light" || name == "Dark") {
            const bool isDark = name == "Light";
            return OtherVariant{std::string(keyPath.substr(0, start)) +
                                    (isDark ? "Dark" : "Light") + std::string(keyPath.substr(end)),
                                isDark};
        }
        end = start == 0 ? 0 : dot;
    }
    return std::nullopt;
}

std::vector<Variant> variantsOf(const Session& session, const Tool::SettingRow& row,
                                bool ofDefault) {
    const std::optional<NSColor> own = colorOf(session, row, ofDefault);
    if (!own) return {};
    std::vector<Variant> variants{{*own, true}};
    const std::optional<OtherVariant> other = otherVariant(row.keyPath);
    const Tool::SettingRow* otherRow = other ? session.table().at(other->keyPath) : nullptr;
    const std::optional<NSColor> color =
        otherRow != nullptr ? colorOf(session, *otherRow, ofDefault) : std::nullopt;
    if (color) variants.insert(other->isDark ? variants.end() : variants.begin(), {*color, false});
    return variants;
}

}  // namespace QRVWindow

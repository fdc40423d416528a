// SPDX-License-Identifier: MIT
#include "Dialogs/ValueCells.h"

#include <QCoreApplication>
#include <algorithm>

#include "Editors/Kinds.h"
#include "Look/Text.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Rows/SettingAnswer.h"
#include "Text/KeyPaths.h"

namespace QRVWindow {
namespace {

/// Values of many lines, or of thousands of characters, belong into an editor.
constexpr qsizetype shownOfValue = 200;

std::optional<NSColor> colorOf(const Session& session, const std::string& keyPath,
                               const PropertyListValue& value) {
    if (!value.isString()) return {};
    Tool::SettingRow row;
    row.keyPath = keyPath;
    row.effective = value;
    row.known = session.lists().at(keyPath);
    if (!row.isColor()) return {};
    const PropertyListValue color = QRVSettingsColorOfText(value);
    return color.isColor() ? std::optional(color.color()) : std::nullopt;
}

}  // namespace

ChangeCell keyPathCell(const std::string& keyPath) {
    return {.text = fromText(Tool::keyPathText(keyPath)), .isLeftToRight = true};
}

ChangeCell profileCell(const std::string& profile) {
    return profile.empty() ? ChangeCell{} : ChangeCell{.text = fromText(profile)};
}

ChangeCell wordsCell(const QString& text) {
    return {.text = text};
}

ChangeCell valueCell(const Session& session, const std::string& keyPath,
                     const PropertyListValue& value, KindShown kindShown) {
    if (value.isNull())
        return {.text = QCoreApplication::translate("QRVWindow::ValueCells", "not stored")};
    const QString text = valueAsText(value, shownOfValue);
    const QString kind = kindText(value.kind());
    return {
        .text =
            kindShown == KindShown::Always
                ? QCoreApplication::translate("QRVWindow::ValueCells", "%1 (%2)").arg(text, kind)
                : text,
        .color = colorOf(session, keyPath, value),
        .isLeftToRight = true};
}

ChangeCell resultCell(const Session& session, const Tool::SettingPlace& place,
                      const PropertyListValue& value, KindShown kindShown) {
    if (!value.isNull()) return valueCell(session, place.keyPath, value, kindShown);
    const PropertyListValue byDefault = defaultAt(session, place);
    if (byDefault.isNull())
        return {.text =
                    QCoreApplication::translate("QRVWindow::ValueCells", "not stored, no default")};
    ChangeCell cell = valueCell(session, place.keyPath, byDefault, kindShown);
    cell.text = QCoreApplication::translate("QRVWindow::ValueCells", "not stored: default %1")
                    .arg(leftToRight(cell.text));
    cell.isLeftToRight = false;
    return cell;
}

KindShown kindShownFor(const std::vector<PropertyListValue>& values) {
    std::set<PropertyListValue::Kind> kinds;
    for (const PropertyListValue& value : values)
        if (!value.isNull()) kinds.insert(value.kind());
    return kinds.size() > 1 ? KindShown::Always : KindShown::Never;
}

PropertyListValue storedAt(const Session& session, const Tool::SettingPlace& place) {
    return NSDictionaryQRV::objectAtKeyPath(session.stored(), place.storedKeyPath());
}

PropertyListValue defaultAt(const Session& session, const Tool::SettingPlace& place) {
    return Tool::answerAt(session.snapshot(), place.keyPath, place.profile).byDefault();
}

}  // namespace QRVWindow

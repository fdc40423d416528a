// SPDX-License-Identifier: MIT
#pragma once

// Values of settings as cells of the dialogs' lists.

#include <optional>
#include <vector>

#include "Dialogs/ChangeModel.h"
#include "Platform/Values/PropertyListValue.h"
#include "Session/Session.h"

namespace QRVWindow {

enum class KindShown { Never, Always };

ChangeCell keyPathCell(const std::string& keyPath);
ChangeCell profileCell(const std::string& profile);
ChangeCell wordsCell(const QString& text);
/// The value as JSON, with a swatch where it is the text of a colour; "not stored" for null.
ChangeCell valueCell(const Session& session, const std::string& keyPath,
                     const PropertyListValue& value, KindShown kindShown = KindShown::Never);
/// What a place will hold after an edit: the value, or what answers where none is stored.
ChangeCell resultCell(const Session& session, const Tool::SettingPlace& place,
                      const PropertyListValue& value, KindShown kindShown = KindShown::Never);
/// Whether these values are of several kinds, so that the kinds are worth telling.
KindShown kindShownFor(const std::vector<PropertyListValue>& values);

/// What the file holds at a place; null when nothing.
PropertyListValue storedAt(const Session& session, const Tool::SettingPlace& place);
/// What answers at a place where nothing is stored; null when nothing does.
PropertyListValue defaultAt(const Session& session, const Tool::SettingPlace& place);

}  // namespace QRVWindow

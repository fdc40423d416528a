// SPDX-License-Identifier: MIT
#pragma once

// The kinds of values, as an editor offers them.

#include <QString>
#include <span>

#include "Editors/ValueEditor.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVWindow {

/// In the order of a menu.
std::span<const PropertyListValue::Kind> editedKinds();
/// "integer", "string", "colour"; "by what is typed" for `Null`.
QString kindText(PropertyListValue::Kind kind);

/// The kind in which an editor begins.
PropertyListValue::Kind kindOfEditor(const EditedSetting& setting);
/// What is left of a typed text when a person chooses another kind.
QString textInKind(const QString& text, PropertyListValue::Kind before,
                   PropertyListValue::Kind kind);

}  // namespace QRVWindow

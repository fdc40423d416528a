// SPDX-License-Identifier: MIT
#pragma once

// Key paths and values as widgets show them.

#include <QFont>
#include <QString>
#include <string>
#include <string_view>

#include "Platform/Values/PropertyListValue.h"

namespace QRVWindow {

/// For commands and code: letters of one width, as large as other text.
QFont codeFont();

QString fromText(std::string_view text);
std::string toText(const QString& text);

/// The text for a sentence; where that runs from right to left, within marks that keep the text
/// from left to right.
QString leftToRight(const QString& text);
/// A key path on one line, from left to right.
QString keyPathInSentence(std::string_view keyPath);

/// A value as JSON, shortened to so many characters where that is not 0; empty for null.
QString valueAsText(const PropertyListValue& value, qsizetype maximum = 0);

}  // namespace QRVWindow

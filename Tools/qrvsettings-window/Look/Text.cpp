// SPDX-License-Identifier: MIT
#include "Look/Text.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>

#include "Text/JSON.h"
#include "Text/KeyPaths.h"

namespace QRVWindow {
namespace {

constexpr QChar leftToRightIsolate(0x2066);
constexpr QChar endOfIsolate(0x2069);
constexpr QChar ellipsis(0x2026);

}  // namespace

QFont codeFont() {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(QFontInfo(QApplication::font()).pixelSize());
    return font;
}

QString fromText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string toText(const QString& text) {
    return text.toStdString();
}

QString leftToRight(const QString& text) {
    return QGuiApplication::isLeftToRight() ? text : leftToRightIsolate + text + endOfIsolate;
}

QString keyPathInSentence(std::string_view keyPath) {
    return leftToRight(fromText(Tool::keyPathText(keyPath)));
}

QString valueAsText(const PropertyListValue& value, qsizetype maximum) {
    if (value.isNull()) return {};
    const QString text = fromText(Tool::jsonText(value));
    return maximum > 0 && text.size() > maximum ? text.left(maximum - 1) + ellipsis : text;
}

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#include "Editors/Kinds.h"

#include <QCoreApplication>
#include <array>

#include "Editors/FieldText.h"
#include "Reporting/Failure.h"
#include "Text/JSON.h"

namespace QRVWindow {
namespace {

using Kind = PropertyListValue::Kind;

bool isValue(const QString& text, Kind kind) {
    try {
        static_cast<void>(valueOfFieldText(text, kind, false));
        return true;
    } catch (const Tool::Failure&) {
        return false;
    }
}

Kind kindOfNumber(const EditedSetting& setting) {
    // A setting that takes reals may hold an integer: a fraction can be typed nevertheless.
    const bool takesReals =
        setting.known != nullptr ? setting.known->kind == Kind::Real : setting.byDefault.isReal();
    return takesReals ? Kind::Real : setting.value.kind();
}

bool isColor(const EditedSetting& setting) {
    if (setting.known != nullptr && setting.known->kind != Kind::Null)
        return setting.known->kind == Kind::Color;
    const std::string name = setting.keyPath.substr(setting.keyPath.rfind('.') + 1);
    return name == "Color" && colorOfText(fieldText(setting.value, FieldLines::One)).has_value();
}

}  // namespace

std::span<const Kind> editedKinds() {
    static constexpr std::array kinds{Kind::Boolean, Kind::Integer, Kind::Real,
                                      Kind::String,  Kind::Color,   Kind::Date,
                                      Kind::Data,    Kind::Array,   Kind::Dictionary};
    return kinds;
}

QString kindText(Kind kind) {
    const auto text = [](const char* source) {
        return QCoreApplication::translate("QRVWindow::Kinds", source);
    };
    switch (kind) {
        case Kind::Boolean:
            return text(QT_TRANSLATE_NOOP("QRVWindow::Kinds", "boolean"));
        case Kind::Integer:
            return text(QT_TRANSLATE_NOOP("QRVWindow::Kinds", "integer"));
        case Kind::Real:
            return text(QT_TRANSLATE_NOOP("QRVWindow::Kinds", "real"));
        case Kind::String:
            return text(QT_TRANSLATE_NOOP("QRVWindow::Kinds", "string"));
        case Kind::Color:
            return text(QT_TRANSLATE_NOOP("QRVWindow::Kinds", "colour"));
        case Kind::Date:
            return text(QT_TRANSLATE_NOOP("QRVWindow::Kinds", "date"));
        case Kind::Data:
            return text(QT_TRANSLATE_NOOP("QRVWindow::Kinds", "data"));
        case Kind::Array:
            return text(QT_TRANSLATE_NOOP("QRVWindow::Kinds", "array"));
        case Kind::Dictionary:
            return text(QT_TRANSLATE_NOOP("QRVWindow::Kinds", "dictionary"));
        case Kind::Null:
        case Kind::NullMarker:
            break;
    }
    return text(QT_TRANSLATE_NOOP("QRVWindow::Kinds", "by what is typed"));
}

Kind kindOfEditor(const EditedSetting& setting) {
    if (setting.value.isNull()) {
        if (setting.known != nullptr && setting.known->kind != Kind::Null)
            return setting.known->kind;
        return setting.byDefault.kind();
    }
    if (setting.value.isInteger()) return kindOfNumber(setting);
    return setting.value.isString() && isColor(setting) ? Kind::Color : setting.value.kind();
}

QString textInKind(const QString& text, Kind before, Kind kind) {
    if (isValue(text, kind)) return text;
    switch (kind) {
        case Kind::Array:
            if (!isValue(text, before)) return QStringLiteral("[]");
            return fieldText(NSArray::arrayWithObject(valueOfFieldText(text, before, false)),
                             FieldLines::Several);
        case Kind::Dictionary:
            return QStringLiteral("{}");
        default:
            return text;
    }
}

}  // namespace QRVWindow

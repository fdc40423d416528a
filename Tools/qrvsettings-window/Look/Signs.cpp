// SPDX-License-Identifier: MIT
#include "Look/Signs.h"

#include <QCoreApplication>
#include <algorithm>
#include <cmath>

namespace QRVWindow {
namespace {

struct Signs {
    Q_DECLARE_TR_FUNCTIONS(Signs)
};

/// In which of its three numbers the eye sees most is what the factors say.
double luminanceOf(const QColor& color) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

QColor mixed(const QColor& one, const QColor& other, double share) {
    const auto part = [share](float from, float to) {
        return static_cast<float>(from + (to - from) * share);
    };
    return QColor::fromRgbF(part(one.redF(), other.redF()), part(one.greenF(), other.greenF()),
                            part(one.blueF(), other.blueF()));
}

/// Colours that people with each kind of colour blindness keep apart from one another.
QColor hueOf(RowState state) {
    switch (state) {
        case RowState::Warning:
        case RowState::Conflict:
            return {213, 94, 0};
        case RowState::Pending:
        case RowState::BackToDefault:
            return {0, 114, 178};
        case RowState::Live:
            return {230, 190, 0};
        case RowState::Differs:
        case RowState::Locked:
        case RowState::Record:
            break;
    }
    return {};
}

/// As much of the tint as lets the text be read.
QColor tinted(const QColor& base, const QColor& tint, const QColor& text, double share) {
    constexpr double step = 0.02;
    while (share > 0 && contrastOf(text, mixed(base, tint, share)) < minimumContrast) share -= step;
    return mixed(base, tint, std::max(share, 0.0));
}

}  // namespace

QString signOf(RowState state) {
    switch (state) {
        case RowState::Differs:
            return QStringLiteral("*");
        case RowState::Pending:
            return QStringLiteral(">");
        case RowState::BackToDefault:
            return QStringLiteral("=");
        case RowState::Warning:
        case RowState::Conflict:
            return QStringLiteral("!");
        case RowState::Live:
            return QStringLiteral("~");
        case RowState::Locked:
            return QStringLiteral("#");
        case RowState::Record:
            break;
    }
    return QStringLiteral("@");
}

QString wordOf(RowState state) {
    switch (state) {
        case RowState::Differs:
            return Signs::tr("differs from the default");
        case RowState::Pending:
            return Signs::tr("pending");
        case RowState::BackToDefault:
            return Signs::tr("back to the default, pending");
        case RowState::Warning:
            return Signs::tr("has a warning");
        case RowState::Conflict:
            return Signs::tr("conflict");
        case RowState::Live:
            return Signs::tr("changed a moment ago");
        case RowState::Locked:
            return Signs::tr("locked by the site");
        case RowState::Record:
            break;
    }
    return Signs::tr("record of the store");
}

QColor bandOf(RowState state, const QPalette& palette) {
    const QColor hue = hueOf(state);
    if (!hue.isValid()) return {};
    return tinted(palette.color(QPalette::Base), hue, palette.color(QPalette::Text),
                  isDark(palette) ? 0.4 : 0.25);
}

QColor markColor(RowState state, const QPalette& palette) {
    const QColor text = palette.color(QPalette::Text);
    const QColor base = palette.color(QPalette::Base);
    const QColor hue = hueOf(state);
    if (!hue.isValid()) return text;
    const QColor band = bandOf(state, palette);
    double share = 1;
    const auto isReadable = [&](const QColor& color) {
        return std::min(contrastOf(color, base), contrastOf(color, band)) >= minimumContrast;
    };
    while (share > 0 && !isReadable(mixed(text, hue, share))) share -= 0.05;
    return mixed(text, hue, std::max(share, 0.0));
}

QColor quietText(const QPalette& palette) {
    const QColor text = palette.color(QPalette::Text);
    const QColor base = palette.color(QPalette::Base);
    double share = 0.45;
    while (share > 0 && contrastOf(mixed(text, base, share), base) < minimumContrast) share -= 0.05;
    return mixed(text, base, std::max(share, 0.0));
}

double contrastOf(const QColor& one, const QColor& other) {
    const double first = luminanceOf(one);
    const double second = luminanceOf(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

bool isDark(const QPalette& palette) {
    return luminanceOf(palette.color(QPalette::Base)) < luminanceOf(palette.color(QPalette::Text));
}

}  // namespace QRVWindow

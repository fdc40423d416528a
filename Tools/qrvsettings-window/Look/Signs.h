// SPDX-License-Identifier: MIT
#pragma once

/// How the window marks what is special about a row: by a sign and a word, and by a band behind the
/// row in addition, never by a colour alone. Colours follow a palette, light or dark.

#include <QColor>
#include <QPalette>
#include <QString>
#include <array>

namespace QRVWindow {

enum class RowState {
    Differs,        ///< something is stored that differs from the default
    Pending,        ///< an edit that is not applied
    BackToDefault,  ///< such an edit after which nothing is stored
    Warning,        ///< the doctor has found something
    Conflict,       ///< another process has changed what a pending edit is about
    Live,           ///< another process has changed it a moment ago
    Locked,         ///< the site's value answers, whatever is stored
    Record,         ///< the store's own
};
inline constexpr std::array rowStates{
    RowState::Differs,  RowState::Pending, RowState::BackToDefault, RowState::Warning,
    RowState::Conflict, RowState::Live,    RowState::Locked,        RowState::Record};

/// One character. A warning and a conflict have the same one.
QString signOf(RowState state);
/// The same for people who hear it, and in legends: "differs from the default".
QString wordOf(RowState state);

/// What lies behind a row of this state; text of the palette keeps `minimumContrast` on it. Invalid
/// for a state without a band.
QColor bandOf(RowState state, const QPalette& palette);
/// For signs and other small marks of this state on the palette's base and on the band, with at
/// least `minimumContrast` on both.
QColor markColor(RowState state, const QPalette& palette);
/// For text that matters less than its neighbours, still with `minimumContrast` on the base.
QColor quietText(const QPalette& palette);

/// Of text and what is behind it, as the Web Content Accessibility Guidelines ask at their level
/// AA.
inline constexpr double minimumContrast = 4.5;
/// Of two opaque colours, from 1 to 21, as those guidelines compute it.
double contrastOf(const QColor& one, const QColor& other);
bool isDark(const QPalette& palette);

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#pragma once

/// What a window keeps between its runs, in a file of its own, never in the settings.

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace QRVWindow {

struct WindowState {
    QByteArray geometry;  ///< as `QWidget::saveGeometry` gives it; empty when nothing is kept
    QByteArray split;     ///< as `QSplitter::saveState`
    QByteArray columns;   ///< as `QHeaderView::saveState`
    bool isFlat = false;
    QStringList filters;  ///< the latest first

    bool operator==(const WindowState&) const = default;
};

/// How many filters are kept.
inline constexpr qsizetype maximumFilters = 20;

/// `window.ini` in the state folder of the application; empty when the user has no home folder.
QString windowStateFile();

/// Empty where there is no file. What cannot be read is left out, and said on standard error.
WindowState readWindowState();

/// Keeps `state`, of a window that began with `before`. Another window may have written meanwhile:
/// the filters that are new in either are kept. Does nothing when both are the same. A failure is
/// said on standard error.
void writeWindowState(const WindowState& state, const WindowState& before);

/// What the toolkit's dialogs keep, such as folders that were visited, goes to the same folder; it
/// would go beside the settings. To be called before the first dialog.
void keepStateOfDialogsThere();

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#pragma once

#include <QLocale>

class QCoreApplication;

namespace QRVWindow {

/// Gives the window the language of a locale, and its direction: those of the catalogues that are
/// compiled in, with English where there is none. Texts of the toolkit follow where its own
/// catalogues are installed. To be called before the first text is made.
void loadTranslations(QCoreApplication& application, const QLocale& locale = QLocale());

}  // namespace QRVWindow

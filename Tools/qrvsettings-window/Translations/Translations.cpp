// SPDX-License-Identifier: MIT
#include "Translations/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QString>
#include <QTranslator>

namespace QRVWindow {
namespace {

void load(QCoreApplication& application, const QLocale& locale, const QString& catalogue,
          const QString& folder) {
    auto* const translator = new QTranslator(&application);
    if (translator->load(locale, catalogue, QStringLiteral("_"), folder))
        QCoreApplication::installTranslator(translator);
    else
        delete translator;
}

}  // namespace

void loadTranslations(QCoreApplication& application, const QLocale& locale) {
    load(application, locale, QStringLiteral("qtbase"),
         QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    load(application, locale, QStringLiteral("qrvsettings-window"),
         QStringLiteral(":/translations"));
}

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#include "Main/WindowState.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSettings>
#include <iostream>

#include "Look/Text.h"
#include "Platform/Files/Files.h"
#include "QRVSettings/QRVSettings.h"

namespace QRVWindow {
namespace {

/// As they are named in the file.
constexpr QLatin1String geometryKey("geometry");
constexpr QLatin1String splitKey("split");
constexpr QLatin1String columnsKey("columns");
constexpr QLatin1String flatKey("flat");
constexpr QLatin1String filtersKey("filters");

void say(const QString& sentence) {
    std::cerr << "qrvsettings-window: " << sentence.toStdString() << '\n';
}

/// Empty when the user has no home folder.
QString stateFolder() {
    const std::string folder = QRVPlatform::userStateFolder();
    return folder.empty() ? QString() : fromText(folder + "/" QRV_APPLICATION_IDENTIFIER);
}

WindowState stateIn(const QSettings& file) {
    WindowState state;
    state.geometry = file.value(geometryKey).toByteArray();
    state.split = file.value(splitKey).toByteArray();
    state.columns = file.value(columnsKey).toByteArray();
    state.isFlat = file.value(flatKey).toBool();
    state.filters = file.value(filtersKey).toStringList().mid(0, maximumFilters);
    return state;
}

void put(const WindowState& state, QSettings& file) {
    file.setValue(geometryKey, state.geometry);
    file.setValue(splitKey, state.split);
    file.setValue(columnsKey, state.columns);
    file.setValue(flatKey, state.isFlat);
    file.setValue(filtersKey, state.filters);
}

/// Those that are new in this window, then those of the file, then the rest.
QStringList merged(const QStringList& own, const QStringList& before, const QStringList& inFile) {
    QStringList all;
    for (const QString& filter : own)
        if (!before.contains(filter)) all << filter;
    // What this window has used again is older than what is new in the file.
    all += inFile;
    all += own;
    all.removeDuplicates();
    return all.mid(0, maximumFilters);
}

}  // namespace

QString windowStateFile() {
    const QString folder = stateFolder();
    return folder.isEmpty() ? folder : folder + QStringLiteral("/window.ini");
}

WindowState readWindowState() {
    const QString path = windowStateFile();
    if (path.isEmpty() || !QFileInfo::exists(path)) return {};
    const QSettings file(path, QSettings::IniFormat);
    if (file.status() == QSettings::NoError) return stateIn(file);
    say(QCoreApplication::translate("WindowState", "The window's state cannot be read: %1")
            .arg(path));
    return {};
}

void writeWindowState(const WindowState& state, const WindowState& before) {
    const QString path = windowStateFile();
    if (path.isEmpty() || state == before) return;
    QSettings file(path, QSettings::IniFormat);
    WindowState kept = state;
    kept.filters = merged(state.filters, before.filters, stateIn(file).filters);
    put(kept, file);
    file.sync();
    if (file.status() != QSettings::NoError)
        say(QCoreApplication::translate("WindowState", "The window's state cannot be kept: %1")
                .arg(path));
}

void keepStateOfDialogsThere() {
    const QString folder = stateFolder();
    if (!folder.isEmpty())
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder);
}

}  // namespace QRVWindow

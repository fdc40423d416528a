// SPDX-License-Identifier: MIT
#include "Dialogs/SettingsFile.h"

#include <QCoreApplication>

#include "Look/Text.h"
#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Text/SettingsText.h"

namespace QRVWindow {
namespace {

QString errorText(const QString& sentence, const std::error_code& error, const QString& path) {
    return sentence.arg(leftToRight(path), fromText(error.message()));
}

bool isSameFile(const std::string& one, const std::string& other) {
    if (one == other) return true;
    const auto identity = QRVPlatform::identityOfFileAtPath(one);
    return !identity.isMissing() && identity == QRVPlatform::identityOfFileAtPath(other);
}

bool isOfSettings(const std::string& path) {
    const std::string target = QRVPlatform::resolvedPath(path).path;
    const std::string settings = QRVPlatform::resolvedPath(QRVSettingsLocation()).path;
    if (target.empty() || settings.empty()) return false;
    const QRVPlatform::FilesBeside beside = QRVPlatform::filesBeside(settings);
    return isSameFile(target, settings) || isSameFile(target, beside.lock) ||
           isSameFile(target, beside.temporary);
}

}  // namespace

SettingsFile readSettingsFile(const QString& path) {
    SettingsFile file;
    QRVPlatform::FileContents contents =
        QRVPlatform::contentsOfFile(toText(path), NSPropertyListSerialization::maximumSize);
    if (contents.error) {
        file.fault = errorText(
            QCoreApplication::translate("QRVWindow::SettingsFile", "%1 cannot be read: %2"),
            contents.error, path);
        return file;
    }
    file.bytes = std::move(contents.bytes);
    try {
        file.settings = Tool::settingsFromText(file.bytes);
    } catch (const Tool::Failure& failure) {
        file.fault =
            QCoreApplication::translate("QRVWindow::SettingsFile", "%1 holds no settings: %2")
                .arg(leftToRight(path), fromText(failure.what()));
    }
    return file;
}

QString writeFile(const QString& path, const std::string& bytes) {
    const std::string file = toText(path);
    if (isOfSettings(file))
        return QCoreApplication::translate("QRVWindow::SettingsFile",
                                           "%1 is the settings file itself. Choose another one.")
            .arg(leftToRight(path));
    if (const auto error = QRVPlatform::replaceFile(file, bytes))
        return errorText(
            QCoreApplication::translate("QRVWindow::SettingsFile", "%1 cannot be written: %2"),
            error, path);
    return {};
}

}  // namespace QRVWindow

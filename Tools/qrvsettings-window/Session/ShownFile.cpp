// SPDX-License-Identifier: MIT
#include "Session/ShownFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include "Reporting/Failure.h"

namespace QRVWindow {
namespace {

/// Of the folder for programs that run, which disappears with the user's last session.
QString nameOfPrivateFolder() {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const bool isUsable = QDir::isAbsolutePath(runtime) && QFileInfo(runtime).isWritable();
    return (isUsable ? runtime : QDir::tempPath()) + QStringLiteral("/qrvsettings-window-XXXXXX");
}

}  // namespace

ShownFile::ShownFile(const QString& file) : path_(QDir::current().absoluteFilePath(file)) {
    const QString folderName = QStringLiteral("Preferences");
    const QString fileName = QStringLiteral(QRV_APPLICATION_IDENTIFIER ".menubar.7.plist");
    const QFileInfo info(path_);
    QString configurationFolder;
    // Behind a link, ".." is not the folder that stands before it.
    const bool isClean = QDir::cleanPath(path_) == path_;
    if (isClean && info.fileName() == fileName && info.dir().dirName() == folderName) {
        configurationFolder = QDir::cleanPath(info.path() + QStringLiteral("/.."));
    } else {
        // The history knows a file by its path, and nobody looks for this one again: what it kept
        // of the file could neither be found nor cleared.
        qputenv("QRVSETTINGS_HISTORY", "0");
        privateFolder_ = std::make_unique<QTemporaryDir>(nameOfPrivateFolder());
        configurationFolder = privateFolder_->path();
        const QString preferences = configurationFolder + QLatin1Char('/') + folderName;
        if (!privateFolder_->isValid() || !QDir().mkdir(preferences) ||
            !QFile::link(path_, preferences + QLatin1Char('/') + fileName))
            throw Tool::Failure(Tool::Fault::WrongValue,
                                "there is no private folder to be had: " +
                                    privateFolder_->errorString().toStdString() + ", " +
                                    configurationFolder.toStdString());
    }
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(configurationFolder));
}

ShownFile::~ShownFile() = default;

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>
#include <vector>

#include "Session/FileState.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/Differences.h"

namespace QRVWindow {

/// Watches the settings file and reads it on another thread: at the start, after each change of the
/// file, and when it is asked to. Writes, creates and locks nothing.
class SettingsFileReader : public QObject {
    Q_OBJECT

  public:
    struct Reading {
        quint64 number = 0;  ///< counted from 1
        FileState state;
        /// What the file holds; null when nothing, or when it cannot be read.
        NSDictionary stored = nullptr;
        /// Against what it held when it could be read last; empty for the first reading and for a
        /// file that cannot be read.
        std::vector<Tool::Difference> differences;
    };

    explicit SettingsFileReader(QObject* parent = nullptr);
    SettingsFileReader(const SettingsFileReader&) = delete;
    SettingsFileReader& operator=(const SettingsFileReader&) = delete;
    /// Does not wait for a reading under way.
    ~SettingsFileReader() override;

    void start();
    /// Returns the number that the reading will have at least that begins after this call.
    quint64 read();

  Q_SIGNALS:
    void hasRead(const QRVWindow::SettingsFileReader::Reading& reading);
    /// What reading waits for, such as a lock; empty when it goes on.
    void waitsFor(const QString& description);

  private:
    class Inside;
    void take(const Reading& reading);
    void sayWhatItWaitsFor();

    std::shared_ptr<Inside> inside_;
    QTimer slow_;
    bool isSaidToWait_ = false;
};

}  // namespace QRVWindow

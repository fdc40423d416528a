// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <optional>

#include "Edits/ApplyEdits.h"

namespace QRVWindow {

/// Has edits applied by another process: this program with `--apply-edits`.
class Applier : public QObject {
    Q_OBJECT

  public:
    using QObject::QObject;
    Applier(const Applier&) = delete;
    Applier& operator=(const Applier&) = delete;
    /// Stops what still waits. Of what is applied, waits until it is in the history.
    ~Applier() override;

    /// The program that is started; empty, as at the start, for that of this process. For tests.
    static void setProgram(const QString& program);

    /// Not to be called while one is running. `finished` follows.
    void start(const Tool::ApplyRequest& request);
    [[nodiscard]] bool isRunning() const { return process_ != nullptr; }
    /// `finished` follows, and says that nothing is applied, unless that has just happened.
    void stop();

  Q_SIGNALS:
    /// Empty when it goes on.
    void waitsFor(const QString& description);
    /// `isComplete`: the process has told what became of the edits. Otherwise it has ended before,
    /// and what it did can be seen in the file only.
    void finished(const Tool::ApplyOutcome& outcome, bool isComplete);

  private:
    void readLines();
    void takeLine(const QByteArray& line);
    void end();
    void finish(const Tool::ApplyOutcome& outcome, bool isComplete);

    QProcess* process_ = nullptr;  ///< until the outcome is known
    bool isStopped_ = false;
};

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#include "Session/Applier.h"

#include <QCoreApplication>
#include <utility>

#include "Reporting/Failure.h"

namespace QRVWindow {
namespace {

/// Longer than the process waits for the history.
constexpr int millisecondsUntilEnd = 6000;

QString& chosenProgram() {
    static auto& program = *new QString;
    return program;
}

}  // namespace

void Applier::setProgram(const QString& program) {
    chosenProgram() = program;
}

Applier::~Applier() {
    if (process_ != nullptr) {
        process_->disconnect(this);
        process_->kill();
    }
    for (QProcess* const process : findChildren<QProcess*>())
        process->waitForFinished(millisecondsUntilEnd);
}

void Applier::start(const Tool::ApplyRequest& request) {
    isStopped_ = false;
    QProcess* const process = new QProcess(this);
    process_ = process;
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(process, &QProcess::readyReadStandardOutput, this, &Applier::readLines);
    // One whose outcome is known goes on for the history, while the next one may have begun.
    const auto endOf = [this, process] {
        if (process == process_) end();
        process->deleteLater();
    };
    connect(process, &QProcess::finished, this, endOf);
    connect(process, &QProcess::errorOccurred, this, [endOf](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) endOf();
    });
    process->start(
        chosenProgram().isEmpty() ? QCoreApplication::applicationFilePath() : chosenProgram(),
        {QStringLiteral("--apply-edits")});
    if (process_ == nullptr) return;  // It has failed to start.
    process_->write(QByteArray::fromStdString(Tool::lineOf(request) + "\n"));
    process_->closeWriteChannel();
}

void Applier::stop() {
    if (process_ == nullptr) return;
    isStopped_ = true;
    process_->kill();
}

void Applier::readLines() {
    while (process_ != nullptr && process_->canReadLine()) takeLine(process_->readLine().trimmed());
}

void Applier::takeLine(const QByteArray& line) {
    const std::string text = line.toStdString();
    const std::string waiting = Tool::waitingFromLine(text);
    if (!waiting.empty()) {
        Q_EMIT waitsFor(QString::fromStdString(waiting));
        return;
    }
    try {
        finish(Tool::outcomeFromLine(text), true);
    } catch (const Tool::Failure&) {  // A line of something else; the outcome is yet to come.
    }
}

void Applier::end() {
    readLines();
    if (process_ == nullptr) return;
    Tool::ApplyOutcome outcome;
    outcome.reason =
        (isStopped_ ? tr("stopped")
         : process_->error() == QProcess::FailedToStart
             ? tr("the process that applies edits cannot be started: %1")
                   .arg(process_->errorString())
         : process_->exitStatus() == QProcess::CrashExit
             ? tr("the process that applies edits was killed or crashed")
             : tr("the process that applies edits ended with exit code %1 and said nothing")
                   .arg(process_->exitCode()))
            .toStdString();
    finish(outcome, false);
}

void Applier::finish(const Tool::ApplyOutcome& outcome, bool isComplete) {
    process_ = nullptr;
    Q_EMIT waitsFor({});
    Q_EMIT finished(outcome, isComplete);
}

}  // namespace QRVWindow

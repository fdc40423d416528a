// SPDX-License-Identifier: MIT
#include "Panes/Findings.h"

#include <QCoreApplication>
#include <algorithm>
#include <exception>
#include <iostream>

#include "Platform/System/System.h"
#include "Reporting/Failure.h"

namespace QRVWindow {
namespace {

/// Changes often come in twos and threes, and the window has better things to do at its start.
constexpr int delayMilliseconds = 200;
constexpr int millisecondsUntilEnd = 5000;

QString& chosenProgram() {
    static auto& program = *new QString;
    return program;
}

bool isSame(const std::vector<Tool::Finding>& some, const std::vector<Tool::Finding>& others) {
    return Tool::lineOf(some) == Tool::lineOf(others);
}

}  // namespace

Findings::Findings(QObject* parent) : QObject(parent), process_(this), next_(this) {
    next_.setSingleShot(true);
    process_.setStandardErrorFile(QProcess::nullDevice());
    process_.setStandardInputFile(QProcess::nullDevice());
    connect(&next_, &QTimer::timeout, this, &Findings::start);
    connect(&process_, &QProcess::finished, this, &Findings::take);
}

Findings::~Findings() {
    process_.disconnect(this);
    if (!isExamining()) return;
    process_.kill();
    process_.waitForFinished(millisecondsUntilEnd);
}

void Findings::setProgram(const QString& program) {
    chosenProgram() = program;
}

void Findings::examineSoon() {
    if (isExamining()) {
        isDue_ = true;
        return;
    }
    if (next_.isActive()) return;
    const qint64 rest =
        sinceStart_.isValid() ? pauseMilliseconds - sinceStart_.elapsed() : delayMilliseconds;
    next_.start(static_cast<int>(std::max<qint64>(rest, delayMilliseconds)));
}

void Findings::start() {
    sinceStart_.start();
    process_.start(
        chosenProgram().isEmpty() ? QCoreApplication::applicationFilePath() : chosenProgram(),
        {QStringLiteral("--examine")}, QIODevice::ReadOnly);
}

void Findings::take() {
    try {
        replace(Tool::findingsFromLine(process_.readAllStandardOutput().trimmed().toStdString()));
    } catch (const Tool::Failure&) {
        // It was killed, or is of another version: the last findings are the best there are.
    }
    if (!isDue_) return;
    isDue_ = false;
    examineSoon();
}

void Findings::replace(std::vector<Tool::Finding> findings) {
    if (isSame(findings, all_)) return;
    all_ = std::move(findings);
    worst_.clear();
    for (std::size_t i = 0; i < all_.size(); ++i) {
        if (all_[i].keyPath.empty()) continue;
        const auto [entry, isNew] = worst_.emplace(all_[i].keyPath, i);
        if (!isNew && all_[entry->second].level < all_[i].level) entry->second = i;
    }
    Q_EMIT changed();
}

const Tool::Finding* Findings::at(const std::string& storedKeyPath) const {
    const auto found = worst_.find(storedKeyPath);
    return found == worst_.end() ? nullptr : &all_[found->second];
}

int examineProcess() {
    setNSLogSink([](const std::string&) {});
    try {
        std::cout << Tool::lineOf(Tool::diagnosisOfSettings().findings) << std::endl;
    } catch (const std::exception&) {
        // The system is out of memory or of another resource.
        return EXIT_FAILURE;
    }
    return std::cout ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace QRVWindow

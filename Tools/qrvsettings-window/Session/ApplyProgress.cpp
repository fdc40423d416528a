// SPDX-License-Identifier: MIT
#include "Session/ApplyProgress.h"

#include <QStringList>
#include <algorithm>

#include "Look/Text.h"

namespace QRVWindow {
namespace {

constexpr qsizetype shownOfValue = 60;

QString replacedText(const Tool::EditConflict& conflict) {
    const QString keyPath = keyPathInSentence(conflict.edit.place.keyPath);
    if (conflict.theirs.isNull())
        return ApplyProgress::tr(
                   "%1: another process had just reset it, and this save has stored it again.")
            .arg(keyPath);
    return ApplyProgress::tr("%1: another process had just saved %2, which this save has replaced.")
        .arg(keyPath, leftToRight(valueAsText(conflict.theirs, shownOfValue)));
}

QString stillPendingText(std::size_t count) {
    return count == 1 ? ApplyProgress::tr("Nothing is lost: 1 setting is still pending.")
                      : ApplyProgress::tr("Nothing is lost: %n settings are still pending.", "",
                                          static_cast<int>(count));
}

QString failureText(const Tool::ApplyOutcome& outcome) {
    if (outcome.state == Tool::ApplyOutcome::State::Conflict)
        return ApplyProgress::tr("Not applied: another process has changed what is edited here.");
    return ApplyProgress::tr("Not applied: %1").arg(fromText(outcome.reason));
}

}  // namespace

ApplyProgress::ApplyProgress(Session& session, QObject* parent)
    : QObject(parent), session_(session) {
    connect(&session_, &Session::applyingChanged, this, [this] {
        if (session_.isApplying()) begin();
    });
    connect(&session_, &Session::applyWaits, this, [this](const QString& description) {
        if (!session_.isApplying()) return;
        say(line_, {description.isEmpty() ? QString() : tr("It waits for %1.").arg(description)},
            false);
    });
    connect(&session_, &Session::applied, this,
            [this](const Tool::ApplyOutcome& outcome) { end(outcome); });
    // A new edit is a new matter; that edits go away because they were applied is not.
    connect(&session_, &Session::pendingChanged, this, [this] {
        if (!session_.isApplying() && !session_.pending().edits().empty()) clear();
    });
}

void ApplyProgress::say(const QString& line, const QStringList& details, bool hasFailed) {
    QStringList lines = details;
    lines.removeAll(QString());
    line_ = line;
    details_ = lines.join(QLatin1Char('\n'));
    hasFailed_ = hasFailed;
    Q_EMIT changed();
}

void ApplyProgress::clear() {
    if (!line_.isEmpty()) say({}, {}, false);
}

void ApplyProgress::begin() {
    places_.clear();
    for (const auto& [place, edit] : session_.pending().edits()) places_.insert(place);
    say(tr("Applying\u2026"), {}, false);
}

QString ApplyProgress::appliedText() const {
    const auto& edits = session_.pending().edits();
    const auto count = std::count_if(places_.begin(), places_.end(), [&edits](const auto& place) {
        return !edits.contains(place);
    });
    return count == 1 ? tr("Applied 1 setting.")
                      : tr("Applied %n settings.", "", static_cast<int>(count));
}

void ApplyProgress::end(const Tool::ApplyOutcome& outcome) {
    const bool hasFailed = outcome.state != Tool::ApplyOutcome::State::Applied;
    QStringList details;
    if (hasFailed) details.append(stillPendingText(session_.pending().edits().size()));
    for (const Tool::EditConflict& conflict : outcome.overwritten)
        details.append(replacedText(conflict));
    for (const std::string& notice : outcome.notices) details.append(fromText(notice));
    say(hasFailed ? failureText(outcome) : appliedText(), details, hasFailed);
    Q_EMIT ended();
}

}  // namespace QRVWindow

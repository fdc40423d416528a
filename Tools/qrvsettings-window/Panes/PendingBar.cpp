// SPDX-License-Identifier: MIT
#include "Panes/PendingBar.h"

#include <QAccessible>
#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

#include "Look/Text.h"

namespace QRVWindow {
namespace {

constexpr qsizetype shownOfValue = 60;

QString replacedText(const Tool::EditConflict& conflict) {
    const QString keyPath = keyPathInSentence(conflict.edit.place.keyPath);
    if (conflict.theirs.isNull())
        return PendingBar::tr(
                   "%1: another process had just reset it, and this save has stored it "
                   "again.")
            .arg(keyPath);
    return PendingBar::tr("%1: another process had just saved %2, which this save has replaced.")
        .arg(keyPath, leftToRight(valueAsText(conflict.theirs, shownOfValue)));
}

QString stillPendingText(qsizetype count) {
    return count == 1 ? PendingBar::tr("Nothing is lost: 1 setting is still pending.")
                      : PendingBar::tr("Nothing is lost: %n settings are still pending.", "",
                                       static_cast<int>(count));
}

QString appliedText(qsizetype count) {
    if (count == 0) return PendingBar::tr("Applied.");
    return count == 1 ? PendingBar::tr("Applied 1 setting.")
                      : PendingBar::tr("Applied %n settings.", "", static_cast<int>(count));
}

QLabel* makeLabel(QWidget* parent, const QString& name) {
    auto* const label = new QLabel(parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setObjectName(name);
    return label;
}

}  // namespace

PendingBar::PendingBar(Session& session, QWidget* parent) : QWidget(parent), session_(session) {
    setAccessibleName(tr("Pending edits"));
    makeActions();
    arrange();
    connect(&session_, &Session::pendingChanged, this, [this] { followEdits(); });
    connect(&session_, &Session::tableChanged, this, [this] { showState(); });
    connect(&session_, &Session::fileStateChanged, this, [this] { showState(); });
    connect(&session_, &Session::applyingChanged, this, [this] { followApplying(); });
    connect(&session_, &Session::applyWaits, this, [this](const QString& description) {
        waitsFor_ = description;
        showState();
    });
    connect(&session_, &Session::applied, this,
            [this](const Tool::ApplyOutcome& outcome) { showOutcome(outcome); });
    showState();
}

void PendingBar::makeActions() {
    apply_ = new QAction(tr("&Apply"), this);
    apply_->setShortcuts(
        {QKeySequence(Qt::CTRL | Qt::Key_Return), QKeySequence(Qt::CTRL | Qt::Key_Enter)});
    connect(apply_, &QAction::triggered, this, [this] { apply(); });
    review_ = new QAction(tr("&Review\u2026"), this);
    review_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Return));
    connect(review_, &QAction::triggered, this, [this] { Q_EMIT reviewWanted(); });
    discard_ = new QAction(tr("&Discard"), this);
    connect(discard_, &QAction::triggered, this, [this] { session_.discardAll(); });
    stop_ = new QAction(tr("&Stop"), this);
    connect(stop_, &QAction::triggered, this, [this] { session_.stopApplying(); });
    dismiss_ = new QAction(tr("&Close"), this);
    connect(dismiss_, &QAction::triggered, this, [this] { dismiss(); });
}

void PendingBar::addButton(QLayout* layout, QAction* action) {
    auto* const button = new QToolButton(this);
    button->setDefaultAction(action);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setFocusPolicy(Qt::StrongFocus);
    const auto follow = [button, action] {
        button->setVisible(action->isVisible());
        button->setAccessibleName(action->text().remove(QLatin1Char('&')));
    };
    connect(action, &QAction::changed, button, follow);
    follow();
    layout->addWidget(button);
}

void PendingBar::arrange() {
    auto* const row = new QHBoxLayout(this);
    auto* const texts = new QVBoxLayout;
    line_ = makeLabel(this, QStringLiteral("pendingLine"));
    details_ = makeLabel(this, QStringLiteral("pendingDetails"));
    texts->addWidget(line_);
    texts->addWidget(details_);
    row->addLayout(texts, 1);
    for (QAction* const action : {stop_, review_, discard_, apply_, dismiss_}) {
        addAction(action);
        addButton(row, action);
    }
}

void PendingBar::apply() {
    if (!session_.conflicts().empty()) {
        Q_EMIT reviewWanted();
        return;
    }
    session_.apply({});
}

void PendingBar::dismiss() {
    outcome_.clear();
    outcomeDetails_.clear();
    hasFailed_ = false;
    showState();
}

void PendingBar::followEdits() {
    // A new edit is a new matter; that edits go away because they were applied is not.
    if (!session_.isApplying() && !outcome_.isEmpty() && !session_.pending().edits().empty())
        dismiss();
    else
        showState();
}

void PendingBar::followApplying() {
    waitsFor_.clear();
    if (session_.isApplying()) {
        outcome_.clear();
        outcomeDetails_.clear();
        hasFailed_ = false;
        placesApplied_.clear();
        for (const auto& [place, edit] : session_.pending().edits()) placesApplied_.insert(place);
    }
    showState();
}

void PendingBar::showOutcome(const Tool::ApplyOutcome& outcome) {
    const auto& edits = session_.pending().edits();
    hasFailed_ = outcome.state != Tool::ApplyOutcome::State::Applied;
    QStringList details;
    if (hasFailed_) {
        outcome_ = outcome.state == Tool::ApplyOutcome::State::Conflict
                       ? tr("Not applied: another process has changed what is edited here.")
                       : tr("Not applied: %1").arg(fromText(outcome.reason));
        details.append(stillPendingText(static_cast<qsizetype>(edits.size())));
    } else {
        const auto gone =
            std::count_if(placesApplied_.begin(), placesApplied_.end(),
                          [&edits](const auto& place) { return !edits.count(place); });
        outcome_ = appliedText(gone);
    }
    for (const Tool::EditConflict& conflict : outcome.overwritten)
        details.append(replacedText(conflict));
    for (const std::string& notice : outcome.notices) details.append(fromText(notice));
    outcomeDetails_ = details.join(QLatin1Char('\n'));
    showState();
    QAccessibleEvent event(line_, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

QString PendingBar::pendingText() const {
    const auto count = static_cast<int>(session_.pending().edits().size());
    if (count == 0) return {};
    return count == 1 ? tr("1 setting is pending.") : tr("%n settings are pending.", "", count);
}

QString PendingBar::conflictText() const {
    const auto conflicts = session_.conflicts();
    if (conflicts.empty()) return {};
    const QString keyPath = keyPathInSentence(conflicts.front().edit.place.keyPath);
    if (conflicts.size() == 1)
        return tr("1 conflict: %1 was changed by another process since you edited it.")
            .arg(keyPath);
    return tr("%n conflicts: %1 and others were changed by another process since you edited them.",
              "", static_cast<int>(conflicts.size()))
        .arg(keyPath);
}

QString PendingBar::obstacleText() const {
    const FileState& state = session_.fileState();
    if (session_.pending().edits().empty() || state.isWritable()) return {};
    const QString reason = state.readOnly.isEmpty() ? state.fault : state.readOnly;
    return reason.isEmpty() ? QString() : tr("Cannot be applied: %1").arg(reason);
}

void PendingBar::updateTexts() {
    QStringList lines;
    if (session_.isApplying()) {
        lines.append(tr("Applying\u2026"));
        if (!waitsFor_.isEmpty()) lines.append(tr("It waits for %1.").arg(waitsFor_));
    } else {
        lines = {outcome_, outcomeDetails_};
        if (!hasFailed_) lines.append(pendingText());
        lines.append({conflictText(), obstacleText()});
        lines.removeAll(QString());
    }
    line_->setText(lines.value(0));
    details_->setText(lines.mid(1).join(QLatin1Char('\n')));
    details_->setVisible(lines.size() > 1);
    setVisible(!lines.isEmpty());
}

void PendingBar::updateActions() {
    const bool isApplying = session_.isApplying();
    const bool hasEdits = !session_.pending().edits().empty();
    const bool canEdit = hasEdits && !isApplying;
    apply_->setText(hasFailed_ ? tr("&Try again") : tr("&Apply"));
    apply_->setEnabled(canEdit && session_.fileState().isWritable());
    discard_->setEnabled(canEdit);
    review_->setEnabled(hasEdits);
    stop_->setEnabled(isApplying);
    stop_->setVisible(isApplying);
    for (QAction* const action : {apply_, discard_}) action->setVisible(hasEdits && !isApplying);
    review_->setVisible(hasEdits);
    dismiss_->setVisible(!isApplying && !outcome_.isEmpty() && !hasEdits);
}

void PendingBar::showState() {
    updateActions();
    updateTexts();
}

QString PendingBar::text() const {
    if (line_->text().isEmpty()) return {};
    return details_->text().isEmpty() ? line_->text()
                                      : line_->text() + QLatin1Char('\n') + details_->text();
}

}  // namespace QRVWindow

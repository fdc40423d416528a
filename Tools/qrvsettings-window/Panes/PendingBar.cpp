// SPDX-License-Identifier: MIT
#include "Panes/PendingBar.h"

#include <QAccessible>
#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

#include "Look/Text.h"
#include "Session/ApplyProgress.h"

namespace QRVWindow {
namespace {

QLabel* makeLabel(QWidget* parent, const QString& name) {
    auto* const label = new QLabel(parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setObjectName(name);
    return label;
}

}  // namespace

PendingBar::PendingBar(Session& session, QWidget* parent)
    : QWidget(parent), session_(session), progress_(new ApplyProgress(session, this)) {
    setAccessibleName(tr("Pending edits"));
    makeActions();
    arrange();
    connect(&session_, &Session::pendingChanged, this, [this] { showState(); });
    connect(&session_, &Session::tableChanged, this, [this] { showState(); });
    connect(&session_, &Session::changesChanged, this, [this] { showState(); });
    connect(&session_, &Session::fileStateChanged, this, [this] { showState(); });
    connect(&session_, &Session::applyingChanged, this, [this] { showState(); });
    connect(progress_, &ApplyProgress::changed, this, [this] { showState(); });
    connect(progress_, &ApplyProgress::ended, line_, [this] {
        QAccessibleEvent event(line_, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    });
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
    connect(dismiss_, &QAction::triggered, this, [this] { progress_->clear(); });
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

QStringList PendingBar::lines() const {
    QStringList lines = {progress_->line(), progress_->details()};
    // How an apply has failed says how many are still pending.
    if (!session_.isApplying()) {
        if (!progress_->hasFailed()) lines.append(pendingText());
        lines.append({conflictText(), obstacleText()});
    }
    lines.removeAll(QString());
    return lines;
}

void PendingBar::showActions() {
    const bool isApplying = session_.isApplying();
    const bool hasEdits = !session_.pending().edits().empty();
    apply_->setText(progress_->hasFailed() ? tr("&Try again") : tr("&Apply"));
    apply_->setEnabled(hasEdits && !isApplying && session_.fileState().isWritable());
    discard_->setEnabled(hasEdits && !isApplying);
    review_->setEnabled(hasEdits);
    stop_->setEnabled(isApplying);
    apply_->setVisible(hasEdits && !isApplying);
    discard_->setVisible(hasEdits && !isApplying);
    review_->setVisible(hasEdits);
    stop_->setVisible(isApplying);
    dismiss_->setVisible(!isApplying && !hasEdits && !progress_->line().isEmpty());
}

void PendingBar::showState() {
    showActions();
    const QStringList texts = lines();
    line_->setText(texts.value(0));
    details_->setText(texts.mid(1).join(QLatin1Char('\n')));
    details_->setVisible(texts.size() > 1);
    setVisible(!texts.isEmpty());
}

QString PendingBar::text() const {
    if (line_->text().isEmpty()) return {};
    return details_->text().isEmpty() ? line_->text()
                                      : line_->text() + QLatin1Char('\n') + details_->text();
}

}  // namespace QRVWindow

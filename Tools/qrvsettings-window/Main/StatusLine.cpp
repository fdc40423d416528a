// SPDX-License-Identifier: MIT
#include "Main/StatusLine.h"

#include <QAccessible>
#include <QAction>
#include <QLabel>
#include <QLocale>
#include <QToolButton>

namespace QRVWindow {

StatusLine::StatusLine(Session& session, QAction* keys, QWidget* parent)
    : QStatusBar(parent), session_(session) {
    file_ = new QLabel(this);
    watching_ = new QLabel(tr("Watching"), this);
    watching_->setToolTip(tr("What other processes change appears by itself."));
    steps_ = new QLabel(this);
    auto* const button = new QToolButton(this);
    button->setDefaultAction(keys);
    button->setText(tr("F1: keys"));
    button->setAccessibleName(tr("Keys"));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    constexpr int indent = 6;
    file_->setIndent(indent);
    addWidget(file_);
    for (QWidget* const part : std::initializer_list<QWidget*>{watching_, steps_, button})
        addPermanentWidget(part);
    connect(&session_, &Session::fileStateChanged, this, &StatusLine::showFile);
    connect(&session_, &Session::pendingChanged, this, &StatusLine::showSteps);
    connect(&session_, &Session::applied, this, &StatusLine::showSteps);
    showFile();
    showSteps();
}

QString StatusLine::fileText() const {
    const FileState& state = session_.fileState();
    const QString size = QLocale().formattedDataSize(static_cast<qint64>(state.size));
    const QString time = QLocale().toString(state.readAt.time(), QStringLiteral("HH:mm:ss"));
    switch (state.kind) {
        case FileState::Kind::NotRead:
            return tr("The file is being read.");
        case FileState::Kind::Present:
            return state.isWritable() ? tr("File: writable, %1, read at %2").arg(size, time)
                                      : tr("File: read-only, %1, read at %2").arg(size, time);
        case FileState::Kind::Missing:
            return tr("File: none yet, looked for at %1").arg(time);
        case FileState::Kind::Damaged:
            return tr("File: damaged, %1, read at %2").arg(size, time);
        case FileState::Kind::Unreadable:
            return tr("File: cannot be read");
        case FileState::Kind::NoPlace:
            return tr("File: there is no home folder");
    }
    return {};
}

void StatusLine::say(const QString& sentence) {
    constexpr int milliseconds = 8000;
    showMessage(sentence, milliseconds);
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void StatusLine::showFile() {
    const FileState& state = session_.fileState();
    file_->setText(fileText());
    file_->setToolTip(state.path);
    watching_->setVisible(state.kind != FileState::Kind::NoPlace &&
                          state.kind != FileState::Kind::NotRead);
}

void StatusLine::showSteps() {
    steps_->setText(tr("Undo steps: %1").arg(session_.pending().undoCount()));
}

}  // namespace QRVWindow

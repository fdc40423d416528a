// SPDX-License-Identifier: MIT
#include "Panes/TroubleLine.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include "Look/Signs.h"
#include "Look/Text.h"
#include "Panes/FactText.h"
#include "Panes/WrappingRow.h"

namespace QRVWindow {
namespace {

bool isNote(const Trouble& trouble) {
    return trouble.level == Tool::Finding::Level::Note;
}

QString headText(const Trouble& trouble) {
    const QString level = levelText(trouble.level);
    return isNote(trouble)
               ? TroubleLine::tr("%1:").arg(level)
               : TroubleLine::tr("%1 %2:").arg(leftToRight(signOf(RowState::Warning)), level);
}

}  // namespace

TroubleLine::TroubleLine(const Trouble& trouble, QWidget* parent)
    : QWidget(parent), trouble_(trouble), buttons_(new WrappingRow(this)) {
    auto* const column = new QVBoxLayout(this);
    auto* const row = new QHBoxLayout;
    column->addLayout(row);
    auto* const head = new QLabel(headText(trouble_), this);
    head->setTextFormat(Qt::PlainText);
    auto* const message = new FactText(this);
    message->setAccessibleName(levelText(trouble_.level));
    message->setFact(trouble_.message, false);
    row->addWidget(head, 0, Qt::AlignVCenter);
    row->addWidget(message, 1, Qt::AlignVCenter);
    addButtons();
    if (!trouble_.advice.isEmpty()) addAdvice();
    // Many leave no room for a message beside them.
    if (trouble_.kind == Trouble::Kind::Damaged)
        column->insertWidget(1, buttons_);
    else
        row->addWidget(buttons_, 0, Qt::AlignVCenter);
    // So that each line can be read as one thing.
    setAccessibleName(QStringLiteral("%1 %2").arg(headText(trouble_), trouble_.message));
}

QPushButton* TroubleLine::addButton(const QString& text) {
    auto* const button = new QPushButton(text, buttons_);
    buttons_->add(button);
    return button;
}

void TroubleLine::addButtons() {
    if (trouble_.kind == Trouble::Kind::Damaged) {
        connect(addButton(tr("Keep its bytes beside, start anew\u2026")), &QPushButton::clicked,
                this, &TroubleLine::startAnewWanted);
        connect(addButton(tr("Import a copy\u2026")), &QPushButton::clicked, this,
                &TroubleLine::importWanted);
    }
    if (trouble_.kind != Trouble::Kind::Other)
        connect(addButton(tr("Open folder")), &QPushButton::clicked, this,
                &TroubleLine::folderWanted);
    if (trouble_.place) {
        QPushButton* const show = addButton(tr("Show"));
        show->setAccessibleDescription(fromText(trouble_.place->keyPath));
        connect(show, &QPushButton::clicked, this, [this] { Q_EMIT placeWanted(*trouble_.place); });
    }
}

void TroubleLine::addAdvice() {
    QPushButton* const open = addButton(tr("How to\u2026"));
    open->setCheckable(true);
    auto* const box = new QWidget(this);
    auto* const boxRow = new QHBoxLayout(box);
    boxRow->setContentsMargins(0, 0, 0, 0);
    auto* const advice = new FactText(box);
    advice->setAccessibleName(tr("What to do"));
    advice->setFact(trouble_.advice, false);
    boxRow->addWidget(advice, 1);
    const bool hasCommand = !trouble_.command.isEmpty();
    auto* const copy = new QPushButton(hasCommand ? tr("Copy command") : tr("Copy"), box);
    boxRow->addWidget(copy, 0, Qt::AlignTop);
    connect(copy, &QPushButton::clicked, this, [this, hasCommand] {
        QApplication::clipboard()->setText(hasCommand ? trouble_.command : trouble_.advice);
    });
    box->hide();
    layout()->addWidget(box);
    connect(open, &QPushButton::toggled, box, &QWidget::setVisible);
}

void TroubleLine::paintEvent(QPaintEvent* /*event*/) {
    if (isNote(trouble_)) return;
    QPainter painter(this);
    painter.fillRect(rect(), bandOf(RowState::Warning, palette()));
}

}  // namespace QRVWindow

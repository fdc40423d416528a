// SPDX-License-Identifier: MIT
#include "Panes/TroubleBanner.h"

#include <QAccessible>
#include <QEvent>
#include <QFileInfo>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

#include "Panes/TroubleLine.h"

namespace QRVWindow {
namespace {

/// The table below needs its place.
constexpr int maximumTextLines = 14;

}  // namespace

TroubleBanner::TroubleBanner(Session& session, Findings& findings, QWidget* parent)
    : QWidget(parent), session_(session), findings_(findings) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    area_ = new QScrollArea(this);
    area_->setWidgetResizable(true);
    area_->setFrameStyle(QFrame::NoFrame);
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area_->setFocusPolicy(Qt::NoFocus);
    page_ = new QWidget;
    column_ = new QVBoxLayout(page_);
    column_->setContentsMargins(0, 0, 0, 0);
    column_->setSpacing(1);
    area_->setWidget(page_);
    page_->installEventFilter(this);
    column->addWidget(area_);
    more_ = new QPushButton(this);
    more_->setFlat(true);
    column->addWidget(more_, 0, Qt::AlignLeading);
    connect(more_, &QPushButton::clicked, this, [this] {
        areAllShown_ = !areAllShown_;
        showLines();
    });
    connect(&session_, &Session::fileStateChanged, this, [this] {
        follow();
        findings_.examineSoon();
    });
    connect(&session_, &Session::tableChanged, this, [this] {
        follow();
        findings_.examineSoon();
    });
    connect(&findings_, &Findings::changed, this, &TroubleBanner::follow);
    hide();
    follow();
    if (session_.fileState().kind != FileState::Kind::NotRead) findings_.examineSoon();
}

QStringList TroubleBanner::texts() const {
    QStringList texts;
    for (const Trouble& trouble : troubles_)
        texts.append(tr("%1: %2").arg(levelText(trouble.level), trouble.message));
    return texts;
}

void TroubleBanner::follow() {
    std::vector<Trouble> troubles = troublesOf(session_, findings_);
    if (troubles == troubles_) return;
    const bool isNew = std::any_of(troubles.begin(), troubles.end(), [this](const Trouble& one) {
        return std::find(troubles_.begin(), troubles_.end(), one) == troubles_.end();
    });
    troubles_ = std::move(troubles);
    showLines();
    if (isNew) announce();
}

void TroubleBanner::showLines() {
    while (QLayoutItem* const item = column_->takeAt(0)) {
        item->widget()->deleteLater();
        item->widget()->hide();
        delete item;
    }
    const std::size_t count =
        std::min(troubles_.size(), areAllShown_ ? maximumLines : linesAtFirst);
    for (std::size_t i = 0; i < count; ++i) addLine(troubles_[i]);
    const auto rest = static_cast<int>(troubles_.size() - std::min(troubles_.size(), linesAtFirst));
    more_->setVisible(rest > 0);
    more_->setText(areAllShown_ ? tr("Show fewer")
                   : rest == 1  ? tr("Show 1 more")
                                : tr("Show %n more", "", rest));
    setVisible(!troubles_.empty());
    fitHeight();
}

void TroubleBanner::addLine(const Trouble& trouble) {
    auto* const line = new TroubleLine(trouble, page_);
    column_->addWidget(line);
    connect(line, &TroubleLine::placeWanted, this, &TroubleBanner::placeWanted);
    connect(line, &TroubleLine::startAnewWanted, this, &TroubleBanner::startAnewWanted);
    connect(line, &TroubleLine::importWanted, this, &TroubleBanner::importWanted);
    connect(line, &TroubleLine::folderWanted, this,
            [this] { Q_EMIT folderWanted(QFileInfo(session_.fileState().path).path()); });
    line->show();
}

bool TroubleBanner::eventFilter(QObject* watched, QEvent* event) {
    if (watched == page_ && event->type() == QEvent::LayoutRequest) fitHeight();
    return QWidget::eventFilter(watched, event);
}

void TroubleBanner::fitHeight() {
    area_->setFixedHeight(
        std::min(page_->sizeHint().height(), maximumTextLines * fontMetrics().height()));
}

void TroubleBanner::announce() {
    setAccessibleName(texts().join(QLatin1Char('\n')));
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#include "Panes/ChangesPane.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTreeView>

namespace QRVWindow {
namespace {

/// Key paths and values read from left to right, whatever the direction of the window.
class LeftToRightDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        const Qt::LayoutDirection ofWindow = option->direction;
        option->direction = Qt::LeftToRight;
        option->displayAlignment =
            (ofWindow == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter;
        option->textElideMode = Qt::ElideMiddle;
    }
};

}  // namespace

ChangesPane::ChangesPane(Session& session, QWidget* parent)
    : QWidget(parent), session_(session), model_(session) {
    setAccessibleName(tr("Changes"));
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    makeBar();
    makeList();
    status_ = new QLabel(this);
    status_->setTextFormat(Qt::PlainText);
    column->addWidget(status_);
    connect(&model_, &ChangesModel::countsChanged, this, &ChangesPane::showCounts);
    showCounts();
}

void ChangesPane::makeBar() {
    auto* const bar = new QHBoxLayout;
    static_cast<QVBoxLayout*>(layout())->addLayout(bar);
    filter_ = new QLineEdit(this);
    filter_->setPlaceholderText(tr("Filter changes"));
    filter_->setAccessibleName(tr("Filter changes"));
    filter_->setClearButtonEnabled(true);
    records_ = new QCheckBox(tr("Store's &records"), this);
    pause_ = new QPushButton(tr("&Pause"), this);
    pause_->setCheckable(true);
    pause_->setToolTip(tr("Adds no lines until it is pressed again"));
    clear_ = new QPushButton(tr("C&lear"), this);
    clear_->setToolTip(tr("Empties this list; the settings stay as they are"));
    bar->addWidget(filter_, 1);
    for (QWidget* const widget : {static_cast<QWidget*>(records_), static_cast<QWidget*>(pause_),
                                  static_cast<QWidget*>(clear_)})
        bar->addWidget(widget);
    connect(filter_, &QLineEdit::textChanged, &model_, &ChangesModel::setFilter);
    connect(records_, &QCheckBox::toggled, &model_, &ChangesModel::setShowsRecords);
    connect(pause_, &QPushButton::toggled, &model_, &ChangesModel::setPaused);
    connect(clear_, &QPushButton::clicked, &session_, &Session::clearChanges);
}

void ChangesPane::makeList() {
    list_ = new QTreeView(this);
    list_->setAccessibleName(tr("Changes, the latest last"));
    list_->setModel(&model_);
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->setAllColumnsShowFocus(true);
    list_->setTabKeyNavigation(false);
    auto* const delegate = new LeftToRightDelegate(list_);
    for (const int column : {ChangesModel::Setting, ChangesModel::Before, ChangesModel::After})
        list_->setItemDelegateForColumn(column, delegate);
    const int character = list_->fontMetrics().averageCharWidth();
    list_->setColumnWidth(ChangesModel::Time, 12 * character);
    list_->setColumnWidth(ChangesModel::Setting, 44 * character);
    list_->setColumnWidth(ChangesModel::Before, 20 * character);
    list_->setColumnWidth(ChangesModel::After, 20 * character);
    layout()->addWidget(list_);
    const auto show = [this](const QModelIndex& index) {
        if (const LiveChange* const change = model_.changeAt(index.row()))
            Q_EMIT placeWanted(Tool::SettingPlace(change->place));
    };
    connect(list_, &QTreeView::clicked, this, show);
    connect(list_, &QTreeView::activated, this, show);
    connect(&model_, &QAbstractItemModel::rowsAboutToBeInserted, this, [this] {
        const QScrollBar* const bar = list_->verticalScrollBar();
        isAtEnd_ = bar->value() == bar->maximum();
    });
    connect(&model_, &QAbstractItemModel::rowsInserted, this, [this] {
        if (isAtEnd_) list_->scrollToBottom();
    });
}

QString ChangesPane::countText() const {
    const int count = model_.rowCount();
    if (count == 0)
        return session_.changes().empty() ? tr("No changes yet.")
                                          : tr("No change matches what is shown here.");
    return count == 1 ? tr("1 change.") : tr("%n changes.", "", count);
}

void ChangesPane::showCounts() {
    const int waiting = model_.newCount();
    QStringList sentences = {countText()};
    if (model_.isPaused())
        sentences.append(waiting == 1 ? tr("1 new while paused.")
                                      : tr("%n new while paused.", "", waiting));
    status_->setText(sentences.join(QLatin1Char(' ')));
    clear_->setEnabled(!session_.changes().empty());
}

QString ChangesPane::statusText() const {
    return status_->text();
}

}  // namespace QRVWindow

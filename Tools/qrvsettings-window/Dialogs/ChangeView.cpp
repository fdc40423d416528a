// SPDX-License-Identifier: MIT
#include "Dialogs/ChangeView.h"

#include <QApplication>
#include <QCheckBox>
#include <QCoreApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QSignalBlocker>
#include <algorithm>
#include <numeric>

namespace QRVWindow {
namespace {

/// Takes pixels from the widest columns, and from none what it needs at least.
void shrink(std::vector<int>& widths, const std::vector<int>& least, int excess) {
    for (; excess > 0; --excess) {
        int* widest = nullptr;
        for (std::size_t column = 0; column < widths.size(); ++column)
            if (widths[column] > least[column] && (widest == nullptr || widths[column] > *widest))
                widest = &widths[column];
        if (widest == nullptr) return;
        --*widest;
    }
}

}  // namespace

ChangeView::ChangeView(ChangeModel& model, QWidget* parent) : QTreeView(parent), model_(model) {
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setTabKeyNavigation(false);
    setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::DoubleClicked |
                    QAbstractItemView::SelectedClicked);
    setModel(&model);
    setTextElideMode(Qt::ElideMiddle);
    header()->setStretchLastSection(true);
    header()->setSectionsMovable(false);
    header()->setResizeContentsPrecision(0);
    connect(header(), &QHeaderView::sectionResized, this, [this] {
        if (QApplication::mouseButtons() != Qt::NoButton) isFittedByHand_ = true;
    });
    connect(&model, &QAbstractItemModel::dataChanged, this, [this] { fitColumns(); });
    connect(&model, &QAbstractItemModel::modelAboutToBeReset, this, [this] { remember(); });
    connect(&model, &QAbstractItemModel::modelReset, this, [this] { restore(); });
}

std::vector<Tool::SettingPlace> ChangeView::selectedPlaces() const {
    std::vector<Tool::SettingPlace> places;
    for (const QModelIndex& index : selectionModel()->selectedRows())
        places.push_back(model_.lineAt(index.row()).place);
    return places;
}

std::vector<int> ChangeView::wantedWidths() const {
    constexpr int mostCharacters = 48;
    const int widest = fontMetrics().averageCharWidth() * mostCharacters;
    std::vector<int> widths;
    for (int column = 0; column < model_.columnCount(); ++column) {
        const int contents = std::min(sizeHintForColumn(column), widest);
        widths.push_back(
            isColumnHidden(column) ? 0 : std::max(contents, header()->sectionSizeHint(column)));
    }
    return widths;
}

void ChangeView::fitColumns() {
    if (isFittedByHand_) return;
    constexpr int leastOfSetting = 24;  // characters
    std::vector<int> widths = wantedWidths();
    std::vector<int> least;
    for (int column = 0; column < model_.columnCount(); ++column)
        least.push_back(header()->sectionSizeHint(column));
    least.front() = std::max(least.front(), leastOfSetting * fontMetrics().averageCharWidth());
    shrink(widths, least, std::accumulate(widths.begin(), widths.end(), 0) - viewport()->width());
    for (int column = 0; column < model_.columnCount(); ++column)
        if (!isColumnHidden(column))
            setColumnWidth(column, widths[static_cast<std::size_t>(column)]);
}

void ChangeView::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    fitColumns();
}

void ChangeView::changeEvent(QEvent* event) {
    QTreeView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) fitColumns();
}

QSize ChangeView::sizeHint() const {
    constexpr int lineCount = 14;
    constexpr int characterCount = 110;  // lines may come later
    const std::vector<int> widths = wantedWidths();
    const int wanted = std::accumulate(widths.begin(), widths.end(), 2 * frameWidth()) +
                       verticalScrollBar()->sizeHint().width();
    return {std::max(wanted, fontMetrics().averageCharWidth() * characterCount),
            fontMetrics().height() * lineCount};
}

void ChangeView::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Space || event->modifiers() != Qt::NoModifier) {
        QTreeView::keyPressEvent(event);
        return;
    }
    const auto places = selectedPlaces();
    const bool areChecked = std::all_of(places.begin(), places.end(), [this](const auto& place) {
        return model_.isChecked(place);
    });
    model_.setChecked(places, !areChecked);
}

void ChangeView::selectionChanged(const QItemSelection& selected,
                                  const QItemSelection& deselected) {
    QTreeView::selectionChanged(selected, deselected);
    Q_EMIT selectionChangedByAnyone();
}

void ChangeView::remember() {
    current_.reset();
    if (currentIndex().isValid()) current_ = model_.lineAt(currentIndex().row()).place;
    selected_ = selectedPlaces();
    scrolled_ = verticalScrollBar()->value();
}

void ChangeView::restore() {
    QItemSelection selection;
    for (const Tool::SettingPlace& place : selected_)
        if (const int row = model_.rowOf(place); row >= 0)
            selection.select(model_.index(row, 0), model_.index(row, model_.columnCount() - 1));
    const int row = current_ ? model_.rowOf(*current_) : -1;
    if (model_.rowCount() > 0)
        selectionModel()->setCurrentIndex(model_.index(std::max(row, 0), 0),
                                          QItemSelectionModel::NoUpdate);
    selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    fitColumns();
    verticalScrollBar()->setValue(scrolled_);
}

QCheckBox* makeCheckBoxForAll(ChangeModel& model, QWidget* parent) {
    auto* const box =
        new QCheckBox(QCoreApplication::translate("QRVWindow::ChangeView", "All &lines"), parent);
    box->setTristate(true);
    const auto follow = [box, &model] {
        const std::size_t checked = model.checkedPlaces().size();
        const bool areAll = checked == model.lines().size();
        box->setEnabled(!model.lines().empty());
        const QSignalBlocker blocker(box);
        box->setCheckState(checked == 0 ? Qt::Unchecked
                                        : (areAll ? Qt::Checked : Qt::PartiallyChecked));
    };
    QObject::connect(&model, &ChangeModel::checkedChanged, box, follow);
    // A screen reader toggles a box without a click.
    QObject::connect(box, &QCheckBox::stateChanged, &model, [&model] {
        const bool areAll = model.checkedPlaces().size() == model.lines().size();
        std::vector<Tool::SettingPlace> places;
        for (const ChangeLine& line : model.lines()) places.push_back(line.place);
        model.setChecked(places, !areAll);
    });
    follow();
    return box;
}

}  // namespace QRVWindow

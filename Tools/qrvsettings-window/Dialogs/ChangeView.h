// SPDX-License-Identifier: MIT
#pragma once

/// The list of a `ChangeModel`. Space checks the selected lines or takes their check marks away.
/// What is current, selected and in sight stays so when the lines change. Columns are as wide as
/// their contents, within what the view has room for, until somebody drags one.

#include <QTreeView>
#include <optional>
#include <vector>

#include "Dialogs/ChangeModel.h"

class QCheckBox;

namespace QRVWindow {

class ChangeView : public QTreeView {
    Q_OBJECT

  public:
    /// `model` must outlive the view.
    explicit ChangeView(ChangeModel& model, QWidget* parent = nullptr);

    [[nodiscard]] std::vector<Tool::SettingPlace> selectedPlaces() const;

    [[nodiscard]] QSize sizeHint() const override;

  Q_SIGNALS:
    /// Other lines are selected.
    void selectionChangedByAnyone();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;

    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void remember();
    void restore();
    [[nodiscard]] std::vector<int> wantedWidths() const;
    void fitColumns();

    ChangeModel& model_;
    std::optional<Tool::SettingPlace> current_;
    std::vector<Tool::SettingPlace> selected_;
    int scrolled_ = 0;
    bool isFittedByHand_ = false;
};

/// A check box for all lines of a model: half checked where some are.
QCheckBox* makeCheckBoxForAll(ChangeModel& model, QWidget* parent);

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#pragma once

// The colours of a row of settings, computed once for a palette.

#include <QColor>
#include <QPalette>
#include <array>
#include <vector>

#include "Look/Signs.h"

namespace QRVWindow {

/// What is behind the text of a row, and its text: readable at all times (`minimumContrast`).
struct RowPaint {
    QColor ground;  ///< invalid: the base of the palette, which is there already
    QColor text;
    QColor quiet;  ///< for what matters less
};

class RowColors {
  public:
    /// Of a row with these states, the most urgent first.
    RowPaint paintOf(const std::vector<RowState>& states, bool isSelected, const QPalette& palette);

  private:
    void take(const QPalette& palette);

    qint64 palette_ = 0;
    QPalette::ColorGroup group_ = QPalette::NColorGroups;
    RowPaint plain_;
    RowPaint selected_;
    std::array<RowPaint, rowStates.size()> banded_;
};

}  // namespace QRVWindow

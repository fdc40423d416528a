// SPDX-License-Identifier: MIT
#pragma once

// A colour beside its text.

#include <QWidget>

#include "Platform/Values/NSColor.h"

namespace QRVWindow {

class SwatchLabel : public QWidget {
  public:
    explicit SwatchLabel(QWidget* parent = nullptr);
    void setColor(const NSColor& color);
    [[nodiscard]] QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    NSColor color_{};
};

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#pragma once

// Small parts of fields.

#include <QAbstractButton>
#include <QWidget>
#include <optional>

#include "Platform/Values/NSColor.h"

namespace QRVWindow {

/// A handle that is dragged up and down to step a number.
class DragHandle : public QWidget {
    Q_OBJECT

  public:
    explicit DragHandle(QWidget* parent);
    [[nodiscard]] QSize sizeHint() const override;

  Q_SIGNALS:
    void stepped(int steps);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

  private:
    int dragY_ = 0;
};

/// A button that is a swatch; crossed out where there is no colour.
class SwatchButton : public QAbstractButton {
    Q_OBJECT

  public:
    explicit SwatchButton(QWidget* parent);
    void setColor(const std::optional<NSColor>& color);
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }
    /// Of the swatch in the button.
    [[nodiscard]] QRect swatchRect() const;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    std::optional<NSColor> color_;
};

}  // namespace QRVWindow

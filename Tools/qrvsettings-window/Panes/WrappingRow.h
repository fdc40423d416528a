// SPDX-License-Identifier: MIT
#pragma once

// Widgets beside each other, on further lines where one is too short, as words of a text.

#include <QList>
#include <QWidget>

namespace QRVWindow {

class WrappingRow : public QWidget {
  public:
    using QWidget::QWidget;

    /// Takes the widget over.
    void add(QWidget* widget);

    [[nodiscard]] QSize minimumSizeHint() const override;
    [[nodiscard]] QSize sizeHint() const override;

  protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void arrange();

    QList<QWidget*> widgets_;
};

}  // namespace QRVWindow

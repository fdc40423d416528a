// SPDX-License-Identifier: MIT
#pragma once

/// Text to read and copy: as high as it needs to be, breaking anywhere where a word is too long,
/// selectable with mouse and keyboard.

#include <QTextEdit>

namespace QRVWindow {

class FactText : public QTextEdit {
    Q_OBJECT

  public:
    explicit FactText(QWidget* parent = nullptr);

    /// Text that is there already stays untouched, and so what is selected of it. Code runs from
    /// left to right in any window.
    void setFact(const QString& text, bool isCode);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

  protected:
    void changeEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    void follow(bool isCode);
    bool isCode_ = false;
};

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#pragma once

// What an editor says about the value that is typed.

#include <QFrame>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

namespace QRVWindow {

/// A line of a form. Or, beside an editor in a cell, a frame of the window below the editor, or
/// above it where there is no room: it takes no focus and covers nothing of the editor.
class EditorMessage : public QFrame {
    Q_OBJECT

  public:
    explicit EditorMessage(QWidget* parent);

    /// Hides it for an empty text.
    void show(const QString& text, bool canBeStoredAnyway);
    /// Keeps it beside a widget of the same window.
    void standBeside(QWidget* widget);
    [[nodiscard]] QString text() const { return text_->text(); }

    bool eventFilter(QObject* watched, QEvent* event) override;

  Q_SIGNALS:
    void storeAnyway();

  private:
    void place();
    QPointer<QWidget> beside_;
    QLabel* text_;
    QPushButton* storeAnyway_;
};

}  // namespace QRVWindow

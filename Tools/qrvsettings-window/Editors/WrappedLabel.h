// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

namespace QRVWindow {

/// Plain text of several lines that a person can select. It is never cut off: the window around it
/// grows, which a label alone does not ask for.
class WrappedLabel : public QLabel {
    Q_OBJECT

  public:
    explicit WrappedLabel(const QString& text = {}, QWidget* parent = nullptr);
    void setWrappedText(const QString& text);

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void keepHeight();
};

}  // namespace QRVWindow

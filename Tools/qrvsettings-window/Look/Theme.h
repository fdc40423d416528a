// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QPalette>
#include <memory>

#include "QRVSettings/Adapters/DesktopAppearance.h"

class QtDesktopAppearance;

namespace QRVWindow {

/// The application's style and colours. As long as it lives they follow the desktop's light or
/// dark; where the desktop has no preference, the platform's colours stay. Made after the
/// application object, on its thread, and destroyed before it.
class Theme : public QObject {
    Q_OBJECT

  public:
    explicit Theme(QObject* parent = nullptr);
    ~Theme() override;

    /// Whether the application's colours are light text on a dark ground.
    [[nodiscard]] static bool isDark();
    /// In these colours every text, also that of what is disabled, has a contrast of 4.5:1 or more.
    [[nodiscard]] static QPalette lightPalette();
    [[nodiscard]] static QPalette darkPalette();

    /// Does what the desktop asks for, until it asks for something else.
    static void show(DesktopAppearance appearance);

  Q_SIGNALS:
    /// The application has other colours.
    void changed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    std::unique_ptr<QtDesktopAppearance> desktop_;
};

}  // namespace QRVWindow

// SPDX-License-Identifier: MIT
#include "Look/Theme.h"

#include <QApplication>
#include <QEvent>
#include <QFontMetrics>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>
#include <algorithm>
#include <array>

#include "QRVSettings/Adapters/QtAppearance.h"

namespace QRVWindow {
namespace {

struct Shade {
    QPalette::ColorRole role;
    QRgb active;
    QRgb disabled;
};
using Shades = std::array<Shade, 20>;

constexpr Shades lightShades{{
    {QPalette::Window, 0xfff2f2f2, 0xfff2f2f2},
    {QPalette::WindowText, 0xff1c1c1c, 0xff606060},
    {QPalette::Base, 0xffffffff, 0xfff2f2f2},
    {QPalette::AlternateBase, 0xfff6f6f6, 0xffeeeeee},
    {QPalette::Text, 0xff1c1c1c, 0xff606060},
    {QPalette::PlaceholderText, 0xff606060, 0xff606060},
    {QPalette::Button, 0xffebebeb, 0xffebebeb},
    {QPalette::ButtonText, 0xff1c1c1c, 0xff606060},
    {QPalette::BrightText, 0xffa40000, 0xffa40000},
    {QPalette::ToolTipBase, 0xfffdf6dc, 0xfffdf6dc},
    {QPalette::ToolTipText, 0xff1c1c1c, 0xff1c1c1c},
    {QPalette::Highlight, 0xff1a5fb4, 0xffd0d0d0},
    {QPalette::HighlightedText, 0xffffffff, 0xff404040},
    {QPalette::Link, 0xff0b57b0, 0xff606060},
    {QPalette::LinkVisited, 0xff6a3ea1, 0xff606060},
    {QPalette::Light, 0xffffffff, 0xffffffff},
    {QPalette::Midlight, 0xfff6f6f6, 0xfff6f6f6},
    {QPalette::Mid, 0xffc0c0c0, 0xffc0c0c0},
    {QPalette::Dark, 0xff9a9a9a, 0xff9a9a9a},
    {QPalette::Shadow, 0xff606060, 0xff606060},
}};

constexpr Shades darkShades{{
    {QPalette::Window, 0xff2b2b2b, 0xff2b2b2b},
    {QPalette::WindowText, 0xfff0f0f0, 0xffa8a8a8},
    {QPalette::Base, 0xff1e1e1e, 0xff2b2b2b},
    {QPalette::AlternateBase, 0xff252525, 0xff2f2f2f},
    {QPalette::Text, 0xfff0f0f0, 0xffa8a8a8},
    {QPalette::PlaceholderText, 0xffa8a8a8, 0xffa8a8a8},
    {QPalette::Button, 0xff3a3a3a, 0xff343434},
    {QPalette::ButtonText, 0xfff0f0f0, 0xffa8a8a8},
    {QPalette::BrightText, 0xffff9d94, 0xffff9d94},
    {QPalette::ToolTipBase, 0xff3d3a2b, 0xff3d3a2b},
    {QPalette::ToolTipText, 0xfff0f0f0, 0xfff0f0f0},
    {QPalette::Highlight, 0xff275796, 0xff4a4a4a},
    {QPalette::HighlightedText, 0xffffffff, 0xffd0d0d0},
    {QPalette::Link, 0xff86b7f5, 0xffa8a8a8},
    {QPalette::LinkVisited, 0xffc9a6f0, 0xffa8a8a8},
    {QPalette::Light, 0xff505050, 0xff505050},
    {QPalette::Midlight, 0xff424242, 0xff424242},
    {QPalette::Mid, 0xff5c5c5c, 0xff5c5c5c},
    {QPalette::Dark, 0xff181818, 0xff181818},
    {QPalette::Shadow, 0xff0c0c0c, 0xff0c0c0c},
}};

QPalette paletteOf(const Shades& shades) {
    QPalette palette;
    for (const Shade& shade : shades) {
        palette.setColor(QPalette::Active, shade.role, QColor::fromRgb(shade.active));
        palette.setColor(QPalette::Inactive, shade.role, QColor::fromRgb(shade.active));
        palette.setColor(QPalette::Disabled, shade.role, QColor::fromRgb(shade.disabled));
    }
    return palette;
}

/// The style whose every part takes its colours from the palette, but for what cannot be seen or
/// read then: boxes without an edge on a dark ground, small boxes beside large text, and a focus
/// that is painted over text and swatches.
class ReadableStyle : public QProxyStyle {
  public:
    ReadableStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        if (element == PE_FrameFocusRect) return drawFocus(*option, *painter);
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        if (element != PE_IndicatorCheckBox && element != PE_IndicatorRadioButton) return;
        painter->save();
        painter->setPen(option->palette.color(QPalette::PlaceholderText));
        painter->setBrush(Qt::NoBrush);
        const QRect edge = option->rect.adjusted(0, 0, -1, -1);
        painter->setRenderHint(QPainter::Antialiasing, element == PE_IndicatorRadioButton);
        if (element == PE_IndicatorCheckBox)
            painter->drawRect(edge);
        else
            painter->drawEllipse(edge);
        painter->restore();
    }

    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override {
        const int pixels = QProxyStyle::pixelMetric(metric, option, widget);
        if (metric != PM_IndicatorWidth && metric != PM_IndicatorHeight &&
            metric != PM_ExclusiveIndicatorWidth && metric != PM_ExclusiveIndicatorHeight)
            return pixels;
        return std::max(pixels, QFontMetrics(QApplication::font()).height() * 3 / 4);
    }

  private:
    static void drawFocus(const QStyleOption& option, QPainter& painter) {
        const auto* const focus = qstyleoption_cast<const QStyleOptionFocusRect*>(&option);
        const QColor ground = focus != nullptr && focus->backgroundColor.isValid()
                                  ? focus->backgroundColor
                                  : option.palette.color(QPalette::Window);
        constexpr int middle = 128;
        painter.save();
        painter.setPen(QPen(ground.lightness() < middle ? Qt::white : Qt::black, 1, Qt::DotLine));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(option.rect.adjusted(0, 0, -1, -1));
        painter.restore();
    }
};

}  // namespace

Theme::Theme(QObject* parent) : QObject(parent) {
    QApplication::setStyle(new ReadableStyle);
    qApp->installEventFilter(this);
    desktop_ = std::make_unique<QtDesktopAppearance>(show);
}

Theme::~Theme() = default;

bool Theme::isDark() {
    const QPalette palette = QApplication::palette();
    return palette.color(QPalette::WindowText).lightness() >
           palette.color(QPalette::Window).lightness();
}

QPalette Theme::lightPalette() {
    return paletteOf(lightShades);
}

QPalette Theme::darkPalette() {
    return paletteOf(darkShades);
}

void Theme::show(DesktopAppearance appearance) {
    switch (appearance) {
        case DesktopAppearance::Dark:
            QApplication::setPalette(darkPalette());
            break;
        case DesktopAppearance::Light:
            QApplication::setPalette(lightPalette());
            break;
        case DesktopAppearance::NoPreference:
            QApplication::setPalette(QPalette());
            break;
    }
}

bool Theme::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) Q_EMIT changed();
    return QObject::eventFilter(watched, event);
}

}  // namespace QRVWindow

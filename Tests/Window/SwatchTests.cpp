// SPDX-License-Identifier: MIT
// Swatches judged by their pixels.
#include "Look/Swatch.h"

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <limits>
#include <set>

#include "Look/Signs.h"

using namespace QRVWindow;

namespace {

QPalette paletteOf(const QColor& ground, const QColor& text) {
    QPalette palette;
    palette.setColor(QPalette::Base, ground);
    palette.setColor(QPalette::Text, text);
    return palette;
}

const QPalette& light() {
    static const QPalette palette = paletteOf(Qt::white, Qt::black);
    return palette;
}
const QPalette& dark() {
    static const QPalette palette = paletteOf(QColor(0x1b, 0x1e, 0x20), QColor(0xfc, 0xfc, 0xfc));
    return palette;
}

const QRect place(10, 10, 40, 20);

QImage painted(const NSColor& color, const QPalette& palette, const QColor& ground) {
    QImage image(60, 40, QImage::Format_ARGB32);
    image.fill(ground);
    QPainter painter(&image);
    paintSwatch(painter, place, color, palette);
    return image;
}

std::set<QRgb> colorsIn(const QImage& image, const QRect& rect) {
    std::set<QRgb> colors;
    for (int y = rect.top(); y <= rect.bottom(); ++y)
        for (int x = rect.left(); x <= rect.right(); ++x) colors.insert(image.pixel(x, y));
    return colors;
}

NSColor opaque(const QColor& color) {
    return NSColor::colorWithSRGBRed(color.redF(), color.greenF(), color.blueF(), 1);
}

}  // namespace

TEST(Swatch, IsTheColourInEveryPixelOfItsArea) {
    for (const QPalette& palette : {light(), dark()})
        for (const QColor& color : {QColor(0, 0, 0), QColor(255, 255, 255), QColor(98, 186, 70)}) {
            const QImage image = painted(opaque(color), palette, palette.color(QPalette::Base));
            EXPECT_EQ(colorsIn(image, colorArea(place)), std::set{color.rgb()});
        }
}

TEST(Swatch, HasABorderThatDiffersFromEveryGroundWhateverTheColour) {
    constexpr double leastContrast = 3;
    const std::vector<QColor> colors{Qt::black, Qt::white, Qt::red, QColor(0x1b, 0x1e, 0x20)};
    for (const QPalette& palette : {light(), dark()}) {
        std::vector<QColor> grounds{palette.color(QPalette::Base), QColor(48, 140, 198),
                                    QColor(127, 127, 127)};
        for (const RowState state : rowStates)
            if (bandOf(state, palette).isValid()) grounds.push_back(bandOf(state, palette));
        for (const QColor& ground : grounds)
            for (const QColor& color : colors) {
                const QImage image = painted(opaque(color), palette, ground);
                double most = 0;
                for (const int inset : {0, 1})
                    most = std::max(most,
                                    contrastOf(image.pixelColor(place.left() + inset, 20), ground));
                EXPECT_GE(most, leastContrast)
                    << color.name().toStdString() << " on " << ground.name().toStdString();
            }
    }
}

TEST(Swatch, PaintsNothingOutsideOfItsPlace) {
    QImage image = painted(opaque(Qt::red), light(), Qt::green);
    QPainter painter(&image);
    painter.fillRect(place, Qt::green);
    EXPECT_EQ(colorsIn(image, image.rect()), std::set{QColor(Qt::green).rgb()});
}

TEST(Swatch, ShowsTheSameCheckerboardUnderATransparentColourInLightAndDark) {
    const NSColor clear = NSColor::colorWithSRGBRed(1, 0, 0, 0);
    const auto squares = colorsIn(painted(clear, light(), Qt::white), colorArea(place));
    EXPECT_EQ(squares.size(), 2U);
    EXPECT_EQ(colorsIn(painted(clear, dark(), Qt::black), colorArea(place)), squares);

    const NSColor half = NSColor::colorWithSRGBRed(1, 0, 0, 0.5);
    for (const QRgb pixel : colorsIn(painted(half, light(), Qt::white), colorArea(place))) {
        EXPECT_GT(qRed(pixel), qGreen(pixel));
        EXPECT_GT(qGreen(pixel), 0);
    }
}

TEST(Swatch, OfAColourOutOfRangeIsTheNearestOneThatAScreenShows) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(qColorOf(NSColor::colorWithSRGBRed(2, -1, nan, 7)), QColor(255, 0, 0, 255));
    EXPECT_EQ(qColorOf(NSColor::colorWithSRGBRed(0.5, 0.321, 0.341, 1)), QColor(128, 82, 87));
}

TEST(Swatch, KeepsABorderWhereThereIsRoomForLittle) {
    QImage image(6, 6, QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    paintSwatch(painter, image.rect(), opaque(Qt::white), light());
    EXPECT_GE(contrastOf(image.pixelColor(0, 3), Qt::white), 3);
    EXPECT_EQ(image.pixelColor(3, 3), QColor(Qt::white));
}

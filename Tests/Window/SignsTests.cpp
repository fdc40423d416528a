// SPDX-License-Identifier: MIT
// The signs of a row's states, and whether their colours let text be read.
#include "Look/Signs.h"

#include <gtest/gtest.h>

#include <QSet>
#include <vector>

namespace {

using QRVWindow::contrastOf;
using QRVWindow::minimumContrast;
using QRVWindow::RowState;
using QRVWindow::rowStates;

QPalette paletteOf(const QColor& base, const QColor& text) {
    QPalette palette;
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::Text, text);
    return palette;
}

const std::vector<QPalette>& palettes() {
    static const std::vector<QPalette> palettes{
        paletteOf(Qt::white, Qt::black),
        paletteOf(QColor(0x2b, 0x2b, 0x2b), QColor(0xee, 0xee, 0xee)),
        paletteOf(Qt::black, Qt::white),
        // Text that is just readable leaves hardly any room for a band.
        paletteOf(Qt::white, QColor(0x75, 0x75, 0x75)),
        paletteOf(QColor(0xfd, 0xf6, 0xe3), QColor(0x07, 0x36, 0x42)),
    };
    return palettes;
}

}  // namespace

TEST(WindowSigns, EachStateHasASignAndAWordOfItsOwn) {
    QSet<QString> words;
    QSet<QString> signs;
    for (const RowState state : rowStates) {
        EXPECT_EQ(QRVWindow::signOf(state).size(), 1);
        words.insert(QRVWindow::wordOf(state));
        signs.insert(QRVWindow::signOf(state));
    }
    EXPECT_EQ(words.size(), rowStates.size());
    EXPECT_FALSE(words.contains(QString()));
    EXPECT_EQ(signs.size(), rowStates.size() - 1) << "a warning and a conflict share one";
}

TEST(WindowSigns, ContrastIsThatOfTheGuidelines) {
    EXPECT_NEAR(contrastOf(Qt::black, Qt::white), 21, 1e-9);
    EXPECT_NEAR(contrastOf(Qt::white, Qt::black), 21, 1e-9);
    EXPECT_NEAR(contrastOf(Qt::red, Qt::red), 1, 1e-9);
    // Two greys and a blue whose contrast on white is often quoted.
    EXPECT_NEAR(contrastOf(QColor(0x76, 0x76, 0x76), Qt::white), 4.54, 0.005);
    EXPECT_NEAR(contrastOf(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.005);
    EXPECT_NEAR(contrastOf(QColor(0x00, 0x00, 0xff), Qt::white), 8.59, 0.005);
}

TEST(WindowSigns, TextCanBeReadOnEveryBandAndSignsBesideIt) {
    for (const QPalette& palette : palettes())
        for (const RowState state : rowStates) {
            const QColor base = palette.color(QPalette::Base);
            const QColor band = QRVWindow::bandOf(state, palette);
            const QColor mark = QRVWindow::markColor(state, palette);
            EXPECT_GE(contrastOf(mark, base), minimumContrast) << static_cast<int>(state);
            if (!band.isValid()) continue;
            EXPECT_GE(contrastOf(palette.color(QPalette::Text), band), minimumContrast)
                << static_cast<int>(state);
            EXPECT_GE(contrastOf(mark, band), minimumContrast) << static_cast<int>(state);
        }
}

TEST(WindowSigns, QuietTextIsStillReadable) {
    for (const QPalette& palette : palettes()) {
        const QColor base = palette.color(QPalette::Base);
        const QColor quiet = QRVWindow::quietText(palette);
        EXPECT_GE(contrastOf(quiet, base), minimumContrast);
        EXPECT_LE(contrastOf(quiet, base), contrastOf(palette.color(QPalette::Text), base));
    }
}

TEST(WindowSigns, BandsDifferFromTheBaseAndFromEachOther) {
    for (const QPalette& palette : {palettes()[0], palettes()[1]}) {
        QSet<QRgb> colors{palette.color(QPalette::Base).rgb()};
        for (const RowState state : {RowState::Pending, RowState::Conflict, RowState::Live})
            colors.insert(QRVWindow::bandOf(state, palette).rgb());
        EXPECT_EQ(colors.size(), 4);
    }
    EXPECT_FALSE(QRVWindow::isDark(palettes()[0]));
    EXPECT_TRUE(QRVWindow::isDark(palettes()[1]));
}

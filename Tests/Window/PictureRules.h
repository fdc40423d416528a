// SPDX-License-Identifier: MIT
#pragma once

/// What a picture of the window must keep to, for whoever sees it.

#include <QColor>
#include <QImage>
#include <QPalette>
#include <QStringList>
#include <QWidget>

namespace WindowSupport {

/// What text needs to be read.
constexpr double readableContrast = 4.5;

/// Of two colours that hide what is behind them: from 1 to 21.
double contrast(const QColor& one, const QColor& other);

/// A line for each pair of text and ground that cannot be read.
QStringList unreadableTexts(const QPalette& palette);

/// A line for each label, button, check box, tab and heading that is shown and has less space than
/// its text needs.
QStringList clippedTexts(QWidget& widget);

/// The contrast of the text in a part of a picture: of the colour that most pixels have, and the
/// one that differs most from it.
double contrastIn(const QImage& picture, const QRect& part);

}  // namespace WindowSupport

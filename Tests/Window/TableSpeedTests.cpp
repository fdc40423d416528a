// SPDX-License-Identifier: MIT
// Ten thousand rows: bounds as ratios to what the same run needs to paint the list once.
#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QLineEdit>
#include <QTest>
#include <algorithm>
#include <cstdio>

#include "Window/TableSupport.h"

namespace {

using Milliseconds = double;

// A sanitizer slows down the sources of the tree, but not the toolkit that paints.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool isSanitized = true;
#elif defined(__has_feature)
constexpr bool isSanitized = __has_feature(address_sanitizer);
#else
constexpr bool isSanitized = false;
#endif
constexpr double largestRatio = isSanitized ? 2000 : 100;

template <typename Work>
Milliseconds timeOf(const Work& work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

struct LargeWindow : TableWindow {
    LargeWindow() {
        model.setAllExpanded(true);
        show();
        paint();
    }
    void paint() { view.viewport()->repaint(); }
    /// The quickest of several: the machine does other things meanwhile.
    Milliseconds timeOfPaint() {
        Milliseconds best = 1e9;
        for (int i = 0; i < 9; ++i) best = std::min(best, timeOf([&] { paint(); }));
        return best;
    }
};

struct Letter {
    QString text;
    Milliseconds time = 1e9;
};

}  // namespace

TEST(TableSpeed, EachLetterOfAFilterIsPaintedAtOnceWithTenThousandRows) {
    ToolSupport::writeSettings(groupsOfIntegers(1000));
    LargeWindow window;
    ASSERT_GT(window.model.rowCount(), 10'000);
    auto* field = window.bar.findChild<QLineEdit*>();
    const Milliseconds paint = window.timeOfPaint();

    const QString words = QStringLiteral("network.width");
    std::vector<Letter> letters;
    for (qsizetype length = 1; length <= words.size(); ++length)
        letters.push_back({words.left(length)});
    for (qsizetype length = words.size() - 1; length >= 0; --length)
        letters.push_back({words.left(length)});
    for (int round = 0; round < 3; ++round)
        for (Letter& letter : letters)
            letter.time = std::min(letter.time, timeOf([&] {
                                       field->setText(letter.text);
                                       window.paint();
                                   }));
    const auto worst = std::ranges::max_element(letters, {}, &Letter::time);
    std::printf("paint %.1f ms, worst letter \"%s\" %.1f ms\n", paint,
                worst->text.toUtf8().constData(), worst->time);
    // A stock recursive filter proxy needs ten thousand times a paint here.
    EXPECT_LT(worst->time, largestRatio * paint) << worst->text.toStdString();
}

TEST(TableSpeed, OneAndAThousandChangedRowsArePaintedAtOnceWithTenThousandRows) {
    ToolSupport::writeSettings(groupsOfIntegers(1000));
    LargeWindow window;
    const Milliseconds paint = window.timeOfPaint();
    QStringList thousand;
    for (int group = 0; group < 1000; ++group)
        thousand << QStringLiteral("Group%1.Sub.width1").arg(group);
    // What follows a save of another process, too.
    const auto timeToFollow = [&](const QStringList& keyPaths) {
        Milliseconds best = 1e9;
        for (int round = 0; round < 5; ++round)
            best = std::min(best, timeOf([&] {
                                Q_EMIT window.session.marksChanged(keyPaths);
                                window.paint();
                            }));
        return best;
    };
    const Milliseconds one = timeToFollow(thousand.mid(500, 1));
    const Milliseconds many = timeToFollow(thousand);
    std::printf("paint %.1f ms, one row %.1f ms, a thousand %.1f ms\n", paint, one, many);
    EXPECT_LT(one, largestRatio * paint);
    EXPECT_LT(many, largestRatio / 4 * paint) << "what is not on show costs nothing";
}

// SPDX-License-Identifier: MIT
// What the list of settings looks like: everything can be read in every state.
#include <gtest/gtest.h>

#include <QHeaderView>
#include <QPalette>
#include <ostream>

#include "Look/Swatch.h"
#include "Look/Theme.h"
#include "Window/PictureRules.h"
#include "Window/TableSupport.h"

using QRVWindow::Theme;
using Tool::RowList;

namespace {

constexpr const char* width = "CPU.Menubar.Mode.HistoryGraph.Width";
constexpr const char* enabled = "CPU.Menubar.Enabled";
constexpr const char* live = "CPU.Menubar.Mode.Global.Graph.Breakdown";
constexpr const char* color = "Battery.Menubar.Mode.HorizontalGraph.Graph.Draining.Low.Light.Color";

struct Look {
    const char* name;
    bool isDark;
    RowList::Form form;
    Qt::LayoutDirection direction;
};

std::ostream& operator<<(std::ostream& stream, const Look& look) {
    return stream << look.name;
}

class TablePicture : public testing::TestWithParam<Look> {
  protected:
    TablePicture() {
        QApplication::setPalette(GetParam().isDark ? Theme::darkPalette() : Theme::lightPalette());
        QGuiApplication::setLayoutDirection(GetParam().direction);
    }
    ~TablePicture() override { QGuiApplication::setLayoutDirection(Qt::LeftToRight); }
};

/// A line for each cell that is shown whose text cannot be read.
QStringList unreadableCells(const TableWindow& window, const QImage& picture) {
    QStringList found;
    for (int line = 0; line < window.model.rowCount(); ++line)
        for (int column = 0; column < window.model.columnCount(); ++column) {
            const QModelIndex index = window.model.index(line, column);
            const QRect cell = window.view.visualRect(index);
            if (index.data().toString().isEmpty() || !window.view.viewport()->rect().contains(cell))
                continue;
            const QPoint start = window.view.viewport()->mapTo(&window.window, cell.topLeft());
            const double contrast = WindowSupport::contrastIn(
                picture, QRect(start, cell.size()).adjusted(2, 2, -2, -2));
            if (contrast < WindowSupport::readableContrast)
                found
                    << QStringLiteral("line %1, column %2: %3").arg(line).arg(column).arg(contrast);
        }
    return found;
}

}  // namespace

TEST_P(TablePicture, CanBeReadInEveryState) {
    WindowSupport::setByTool(enabled, "false");
    WindowSupport::runTool({"set", "--new", "--", "CPU.Menubar.Selected", "here"});
    WindowSupport::runTool(
        {"set", "--any-kind", "--", "CPU.Menubar.Mode.Global.Graph.Breakdown", "yes"});
    TableWindow window;
    window.model.setForm(GetParam().form);
    window.model.setAllExpanded(true);
    window.session.setOtherProfile(QStringLiteral("default"));
    window.session.edit(width, 80);
    window.session.reset({enabled});
    window.session.edit(color, PropertyListValue("0.2 0.5 0.9 0.5"));
    WindowSupport::setByTool(live, "1");
    ASSERT_TRUE(WindowSupport::waitUntil([&] { return window.model.counts().live > 0; }));
    constexpr QSize size(1300, 640);
    window.window.resize(size);
    window.show();
    window.bar.setText(QStringLiteral("is:pending"));
    window.bar.setText(QStringLiteral("cpu.menubar"));
    window.view.setCurrentIndex(
        window.model.index(*window.model.reveal("CPU.Menubar.Selected"), 0));
    const QString name = QStringLiteral("table-") + QLatin1String(GetParam().name);
    const QImage picture = WindowSupport::grab(window.window, name);
    EXPECT_EQ(lines(unreadableCells(window, picture)), "");
    EXPECT_EQ(lines(WindowSupport::clippedTexts(window.window)), "");

    window.bar.setText(QStringLiteral("kind:color graph"));
    const auto line = window.model.lineOf(color);
    ASSERT_TRUE(line);
    window.view.scrollTo(window.model.index(*line, RowModel::Value));
    const QImage colors = WindowSupport::grab(window.window, name + QStringLiteral("-colors"));
    EXPECT_EQ(lines(unreadableCells(window, colors)), "");

    window.bar.setText({});
    window.view.scrollToTop();
    const QImage all = WindowSupport::grab(window.window, name + QStringLiteral("-all"));
    EXPECT_EQ(lines(unreadableCells(window, all)), "");
}

INSTANTIATE_TEST_SUITE_P(
    Looks, TablePicture,
    testing::Values(Look{"light-tree", false, RowList::Form::Tree, Qt::LeftToRight},
                    Look{"dark-tree", true, RowList::Form::Tree, Qt::LeftToRight},
                    Look{"light-flat", false, RowList::Form::Flat, Qt::LeftToRight},
                    Look{"dark-flat", true, RowList::Form::Flat, Qt::LeftToRight},
                    Look{"right-to-left-tree", false, RowList::Form::Tree, Qt::RightToLeft},
                    Look{"right-to-left-flat", true, RowList::Form::Flat, Qt::RightToLeft}),
    [](const auto& about) {
        std::string name = about.param.name;
        std::erase(name, '-');
        return name;
    });

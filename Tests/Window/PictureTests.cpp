// SPDX-License-Identifier: MIT
// What the window looks like in its states, made from real settings: nothing is cut off, and
// everything can be read. `scripts/screenshots` keeps the pictures.
#include <gtest/gtest.h>

#include <QApplication>
#include <QFont>
#include <QHeaderView>
#include <QScrollBar>
#include <QTabWidget>
#include <filesystem>
#include <optional>
#include <ostream>

#include "Dialogs/ReviewDialog.h"
#include "Look/Swatch.h"
#include "Look/Theme.h"
#include "Main/MainWindow.h"
#include "Panes/ChangesPane.h"
#include "Panes/PendingBar.h"
#include "Panes/TroubleBanner.h"
#include "Table/FilterBar.h"
#include "Table/RowView.h"
#include "Tool/ToolSupport.h"
#include "Window/PictureRules.h"
#include "Window/WindowSupport.h"

using QRVWindow::FilterBar;
using QRVWindow::MainWindow;
using QRVWindow::RowModel;
using QRVWindow::RowView;
using QRVWindow::Session;
using QRVWindow::Theme;
using WindowSupport::runTool;
using WindowSupport::setByTool;
using WindowSupport::waitUntil;

namespace {

constexpr const char* connected = "Network.Menubar.Mode.Status.Connected.Color";
constexpr const char* noIP = "Network.Menubar.Mode.Status.NoIP.Color";
constexpr const char* noInternet = "Network.Menubar.Mode.Status.NoInternet.Color";
constexpr const char* width = "CPU.Menubar.Mode.HistoryGraph.Width";

struct Look {
    const char* name;
    bool isDark;
    int points;  ///< of the font
};

std::ostream& operator<<(std::ostream& stream, const Look& look) {
    return stream << look.name;
}

/// A window over the settings of the test, which the tool has made.
class WindowPicture : public testing::TestWithParam<Look> {
  protected:
    WindowPicture() {
        QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), GetParam().points));
        Theme::show(GetParam().isDark ? DesktopAppearance::Dark : DesktopAppearance::Light);
    }

    void open() {
        session.emplace();
        window.emplace(*session);
        constexpr int smallFont = 10;
        const QSize size(1120, 820);
        window->resize(GetParam().points > smallFont ? size * 1.7 : size);
        WindowSupport::show(*window);
        session->start();
        ASSERT_TRUE(waitUntil(
            [&] { return session->fileState().kind != QRVWindow::FileState::Kind::NotRead; }));
        WindowSupport::spin(std::chrono::milliseconds(50));
    }
    template <typename Part>
    Part& part() {
        return *window->findChild<Part*>();
    }
    void filter(const char* words) { part<FilterBar>().setText(QString::fromUtf8(words)); }

    /// Grabs a window, and judges it.
    QImage take(QWidget& widget, const char* name) {
        const QString picture =
            QStringLiteral("%1-%2").arg(QLatin1String(name), QLatin1String(GetParam().name));
        QImage image = WindowSupport::grab(widget, picture);
        EXPECT_EQ(lines(WindowSupport::clippedTexts(widget)), "");
        EXPECT_EQ(lines(WindowSupport::unreadableTexts(widget.palette())), "");
        return image;
    }
    QImage take(const char* name) {
        QImage image = take(*window, name);
        EXPECT_EQ(lines(unreadableCells(image)), "");
        return image;
    }

    QRect onWindow(const QModelIndex& index) {
        const QRect cell = part<RowView>().visualRect(index);
        return {part<RowView>().viewport()->mapTo(&*window, cell.topLeft()), cell.size()};
    }

  public:
    const Theme theme;
    std::optional<Session> session;
    std::optional<MainWindow> window;

  private:
    static std::string lines(const QStringList& all) {
        return all.join(QLatin1Char('\n')).toStdString();
    }
    QStringList unreadableCells(const QImage& picture) {
        const RowView& view = part<RowView>();
        QStringList found;
        for (int row = 0; row < view.model()->rowCount(); ++row) {
            for (int column = 0; column < view.model()->columnCount(); ++column) {
                const QModelIndex index = view.model()->index(row, column);
                const bool isWhole = view.viewport()->rect().contains(view.visualRect(index));
                if (!isWhole || index.data().toString().isEmpty()) continue;
                const double contrast =
                    WindowSupport::contrastIn(picture, onWindow(index).adjusted(2, 2, -2, -2));
                if (contrast < WindowSupport::readableContrast)
                    found << QStringLiteral("%1: %2").arg(index.data().toString()).arg(contrast);
            }
        }
        return found;
    }
};

/// Three settings that differ, one edit, and one that another process changes now.
void makeSettings() {
    runTool({"set", "CPU.Menubar.Mode.HistoryGraph.Width", "60"});
    setByTool(noIP, "1 0.5 0 1");
    setByTool("Network.Menu.Bandwidth.Mode", "1");
}

}  // namespace

TEST_P(WindowPicture, Overview) {
    makeSettings();
    open();
    filter("menubar.mode.status");
    session->edit(noInternet, PropertyListValue("0.2 0.5 0.9 1"));
    session->reset({noIP});
    setByTool("Network.Menubar.Mode.Status.NotConnected.Color", "0.8 0.2 0.9 0.6");
    ASSERT_TRUE(waitUntil([&] { return !session->changes().empty(); }));
    part<RowView>().reveal(noInternet);
    part<RowView>().setFocus();
    take("overview");
}

TEST_P(WindowPicture, ListOfChanges) {
    makeSettings();
    open();
    for (const char* const value : {"70", "75", "80"}) {
        const std::size_t before = session->changes().size();
        setByTool(width, value);
        ASSERT_TRUE(waitUntil([&] { return session->changes().size() > before; }));
    }
    window->findChild<QTabWidget*>()->setCurrentWidget(&part<QRVWindow::ChangesPane>());
    part<RowView>().reveal(width);
    take("changes");
}

TEST_P(WindowPicture, Conflict) {
    makeSettings();
    open();
    session->edit(width, 90);
    session->edit(noIP, PropertyListValue("1 0.2 0 1"));
    setByTool(width, "100");
    ASSERT_TRUE(waitUntil([&] { return !session->conflicts().empty(); }));
    part<RowView>().reveal(width);
    take("conflict");
}

TEST_P(WindowPicture, Review) {
    makeSettings();
    open();
    session->edit(width, 90);
    session->edit(noIP, PropertyListValue("1 0.2 0 1"));
    session->reset({"Network.Menu.Bandwidth.Mode"});
    setByTool(width, "100");
    ASSERT_TRUE(waitUntil([&] { return !session->conflicts().empty(); }));
    Q_EMIT part<QRVWindow::PendingBar>().reviewWanted();
    auto& review = part<QRVWindow::ReviewDialog>();
    ASSERT_TRUE(waitUntil([&] { return review.isVisible(); }));
    WindowSupport::spin(std::chrono::milliseconds(50));
    take(review, "review");
}

TEST_P(WindowPicture, DamagedFile) {
    ToolSupport::writeSettings("<?xml version=\"1.0\"?>\n<plist><dict><key>broken");
    open();
    ASSERT_TRUE(waitUntil([&] { return !part<QRVWindow::TroubleBanner>().troubles().empty(); }));
    WindowSupport::spin(std::chrono::milliseconds(50));
    part<RowView>().reveal(width);
    take("damaged");
}

TEST_P(WindowPicture, ReadOnlyFile) {
    makeSettings();
    std::filesystem::permissions(ToolSupport::settingsFile(), std::filesystem::perms::owner_read);
    open();
    ASSERT_TRUE(waitUntil([&] { return !part<QRVWindow::TroubleBanner>().troubles().empty(); }));
    WindowSupport::spin(std::chrono::milliseconds(50));
    part<RowView>().reveal(width);
    take("readonly");
}

TEST_P(WindowPicture, ManyRows) {
    std::string entries;
    constexpr int count = 10'000;
    for (int number = 0; number < count; ++number)
        entries += "<key>Row" + std::to_string(number) + "</key><integer>" +
                   std::to_string(number) + "</integer>";
    ToolSupport::writeSettings(
        ToolSupport::propertyList("<key>Own</key><dict>" + entries + "</dict>"));
    open();
    filter("own.row99");
    part<RowView>().reveal("Own.Row9900");
    take("many");
}

TEST_P(WindowPicture, RightToLeft) {
    makeSettings();
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    open();
    filter("network.menubar");
    session->edit("Network.Menubar.Mode.HistoryGraph.Width", 80);
    part<RowView>().reveal(noIP);
    take("right-to-left");
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
}

TEST_P(WindowPicture, SwitchWhileRunning) {
    makeSettings();
    open();
    filter("network.menubar");
    part<RowView>().reveal(connected);
    Theme::show(GetParam().isDark ? DesktopAppearance::Light : DesktopAppearance::Dark);
    WindowSupport::spin(std::chrono::milliseconds(50));
    take("switched");
}

TEST_P(WindowPicture, SwatchesHaveTheColourAndAnEdge) {
    open();
    filter("is:known kind:color");
    RowView& view = part<RowView>();
    view.reveal(noIP);
    view.setFocus();
    const QImage picture = take("swatches");
    const NSColor color{1, 0.776, 0, 1};
    const QColor wanted = QRVWindow::qColorOf(color);
    const auto* const model = view.model();
    int seen = 0;
    for (int row = 0; row < model->rowCount(); ++row) {
        const QModelIndex cell = model->index(row, RowModel::Value);
        if (cell.siblingAtColumn(0).data(RowModel::KeyPathRole).toString() !=
            QString::fromLatin1(noIP))
            continue;
        const QRect place = onWindow(cell);
        for (int y = place.top(); y <= place.bottom(); ++y)
            for (int x = place.left(); x <= place.right(); ++x)
                seen += picture.pixelColor(x, y) == wanted ? 1 : 0;
    }
    EXPECT_GT(seen, 50);
}

INSTANTIATE_TEST_SUITE_P(, WindowPicture,
                         testing::Values(Look{"light", false, 10}, Look{"dark", true, 10},
                                         Look{"light200", false, 20}, Look{"dark200", true, 20}),
                         [](const auto& one) { return std::string(one.param.name); });

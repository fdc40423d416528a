// SPDX-License-Identifier: MIT
// The list of changes: what others save appears in it, all of a delivery at once.
#include "Panes/ChangesPane.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTreeView>

#include "Tool/ToolSupport.h"
#include "Window/WindowSupport.h"

namespace {

using QRVWindow::ChangesModel;
using QRVWindow::ChangesPane;
using QRVWindow::Session;
using WindowSupport::setByTool;
using WindowSupport::waitUntil;

class ChangesPaneTests : public testing::Test {
  protected:
    void SetUp() override {
        setByTool("UpdateFrequency", "2");
        start();
    }
    void start() {
        session_ = std::make_unique<Session>();
        session_->start();
        ASSERT_TRUE(waitUntil(
            [&] { return session_->fileState().kind == QRVWindow::FileState::Kind::Present; }));
        pane_ = std::make_unique<ChangesPane>(*session_);
        WindowSupport::show(*pane_);
    }
    [[nodiscard]] ChangesModel& model() { return pane_->model(); }
    [[nodiscard]] QString text(int row, int column) {
        return model().index(row, column).data().toString();
    }
    [[nodiscard]] bool waitForRows(int count) {
        return waitUntil([&] { return model().rowCount() == count; });
    }
    template <class Widget>
    [[nodiscard]] Widget* child(const QString& text) {
        for (Widget* const widget : pane_->findChildren<Widget*>())
            if (widget->text().remove(QLatin1Char('&')) == text) return widget;
        ADD_FAILURE() << "there is no " << text.toStdString();
        return nullptr;
    }

    std::unique_ptr<Session> session_;
    std::unique_ptr<ChangesPane> pane_;
};

std::string manySettings(int count, int value) {
    std::string entries;
    for (int i = 0; i < count; ++i)
        entries += "<key>Setting" + std::to_string(i) + "</key><integer>" + std::to_string(value) +
                   "</integer>";
    return ToolSupport::propertyList("<key>Many</key><dict>" + entries + "</dict>");
}

}  // namespace

TEST_F(ChangesPaneTests, AChangeOfAnotherProcessIsALineWithItsProgram) {
    EXPECT_EQ(pane_->statusText(), QStringLiteral("No changes yet."));
    setByTool("UpdateFrequency", "3");
    ASSERT_TRUE(waitForRows(1));
    EXPECT_EQ(text(0, ChangesModel::Setting), QStringLiteral("UpdateFrequency"));
    EXPECT_EQ(text(0, ChangesModel::Before), QStringLiteral("2"));
    EXPECT_EQ(text(0, ChangesModel::After), QStringLiteral("3"));
    EXPECT_EQ(text(0, ChangesModel::Time).size(), 8);
    EXPECT_TRUE(waitUntil([&] {
        return text(0, ChangesModel::Who).startsWith(QStringLiteral("qrvsettings"));
    })) << text(0, ChangesModel::Who).toStdString();
    EXPECT_EQ(pane_->statusText(), QStringLiteral("1 change."));
    const QString heard = model().index(0, 0).data(Qt::AccessibleTextRole).toString();
    EXPECT_TRUE(heard.contains(QStringLiteral("UpdateFrequency was 2 and is 3")))
        << heard.toStdString();
}

TEST_F(ChangesPaneTests, WhatIsRemovedWasStoredAndIsNotAnyMore) {
    WindowSupport::runTool({"unset", "UpdateFrequency"});
    ASSERT_TRUE(waitForRows(1));
    EXPECT_EQ(text(0, ChangesModel::Before), QStringLiteral("2"));
    EXPECT_EQ(text(0, ChangesModel::After), QStringLiteral("not stored"));
}

TEST_F(ChangesPaneTests, APauseCountsWhatIsNew) {
    setByTool("UpdateFrequency", "3");
    ASSERT_TRUE(waitForRows(1));
    child<QPushButton>(QStringLiteral("Pause"))->click();
    setByTool("UpdateFrequency", "4");
    setByTool("CPU.Menubar.Enabled", "false");
    EXPECT_TRUE(waitUntil([&] { return model().newCount() == 2; }));
    EXPECT_EQ(model().rowCount(), 1);
    EXPECT_TRUE(pane_->statusText().endsWith(QStringLiteral("2 new while paused.")))
        << pane_->statusText().toStdString();
    child<QPushButton>(QStringLiteral("Pause"))->click();
    EXPECT_EQ(model().rowCount(), 3);
    EXPECT_EQ(model().newCount(), 0);
}

TEST_F(ChangesPaneTests, AFilterFindsSettingValueAndProgram) {
    setByTool("UpdateFrequency", "3");
    setByTool("CPU.Menubar.Enabled", "false");
    ASSERT_TRUE(waitForRows(2));
    auto* const filter = pane_->findChild<QLineEdit*>();
    filter->setText(QStringLiteral("cpu"));
    ASSERT_EQ(model().rowCount(), 1);
    EXPECT_EQ(text(0, ChangesModel::Setting), QStringLiteral("CPU.Menubar.Enabled"));
    filter->setText(QStringLiteral("menubar FALSE"));
    EXPECT_EQ(model().rowCount(), 1);
    filter->setText(QStringLiteral("menubar 3"));
    EXPECT_EQ(model().rowCount(), 0);
    EXPECT_EQ(pane_->statusText(), QStringLiteral("No change matches what is shown here."));
    filter->clear();
    EXPECT_EQ(model().rowCount(), 2);
}

TEST_F(ChangesPaneTests, ClearingEmptiesTheListAndGoesOn) {
    setByTool("UpdateFrequency", "3");
    ASSERT_TRUE(waitForRows(1));
    child<QPushButton>(QStringLiteral("Clear"))->click();
    EXPECT_EQ(model().rowCount(), 0);
    setByTool("UpdateFrequency", "4");
    ASSERT_TRUE(waitForRows(1));
    EXPECT_EQ(text(0, ChangesModel::After), QStringLiteral("4"));
}

TEST_F(ChangesPaneTests, RecordsAreHiddenUntilTheyAreAskedFor) {
    setByTool("Device.Model", "another");
    setByTool("UpdateFrequency", "3");
    ASSERT_TRUE(waitUntil([&] { return session_->changes().size() >= 2; }));
    ASSERT_TRUE(waitForRows(1));
    EXPECT_EQ(text(0, ChangesModel::Setting), QStringLiteral("UpdateFrequency"));
    child<QCheckBox>(QStringLiteral("Store's records"))->click();
    EXPECT_EQ(static_cast<std::size_t>(model().rowCount()), session_->changes().size());
}

TEST_F(ChangesPaneTests, ALineThatIsClickedNamesItsPlace) {
    WindowSupport::runTool({"set", "UpdateFrequency", "3", "--profile", "travel", "--new"});
    ASSERT_TRUE(waitUntil([&] { return model().rowCount() > 0; }));
    Tool::SettingPlace wanted;
    QObject::connect(pane_.get(), &ChangesPane::placeWanted, pane_.get(),
                     [&](const Tool::SettingPlace& place) { wanted = place; });
    auto* const list = pane_->findChild<QTreeView*>();
    Q_EMIT list->clicked(model().index(0, ChangesModel::Setting));
    EXPECT_EQ(wanted, (Tool::SettingPlace{"UpdateFrequency", "travel"}));
}

TEST_F(ChangesPaneTests, TenThousandChangesAreOneInsertionAndNotSlow) {
    constexpr int many = 10'000;
    QElapsedTimer timer;
    QImage empty = WindowSupport::grab(*pane_);
    timer.start();
    WindowSupport::grab(*pane_);
    const qint64 emptyPaint = timer.nsecsElapsed();

    // With what it removes this is a little more, of which the earliest are forgotten.
    ToolSupport::writeSettings(manySettings(many, 1));
    ASSERT_TRUE(waitUntil([&] { return session_->changes().size() == Session::maximumChanges; }));
    child<QPushButton>(QStringLiteral("Clear"))->click();

    // The first to hear of a delivery is the pane; its model is asked right after.
    qint64 handling = 0;
    int insertions = 0;
    QObject::connect(&model(), &QAbstractItemModel::rowsAboutToBeInserted, pane_.get(), [&] {
        ++insertions;
        timer.start();
    });
    QObject::connect(session_.get(), &Session::changesChanged, pane_.get(), [&] {
        if (handling == 0 && insertions > 0) handling = timer.nsecsElapsed();
    });
    ToolSupport::writeSettings(manySettings(many, 2));
    ASSERT_TRUE(waitUntil([&] { return model().rowCount() == many; }));
    EXPECT_EQ(insertions, 1);
    timer.start();
    WindowSupport::grab(*pane_, QStringLiteral("changes-10000"));
    const qint64 paint = timer.nsecsElapsed();
    RecordProperty("emptyPaintMicroseconds", static_cast<int>(emptyPaint / 1000));
    RecordProperty("handlingMicroseconds", static_cast<int>(handling / 1000));
    RecordProperty("paintMicroseconds", static_cast<int>(paint / 1000));
    // Row by row it would be some thousands.
    EXPECT_LT(handling + paint, 60 * emptyPaint)
        << handling / 1000 << " and " << paint / 1000 << " us, empty " << emptyPaint / 1000;
}

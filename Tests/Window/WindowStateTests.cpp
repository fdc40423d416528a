// SPDX-License-Identifier: MIT
// What a window keeps between its runs.
#include "Main/WindowState.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFileDialog>
#include <QFileInfo>
#include <filesystem>

#include "Tool/ToolSupport.h"

using QRVWindow::readWindowState;
using QRVWindow::WindowState;
using QRVWindow::windowStateFile;
using QRVWindow::writeWindowState;

namespace {

std::filesystem::path file() {
    return windowStateFile().toStdString();
}

WindowState someState() {
    WindowState state;
    state.geometry = QByteArray("\0\1\xff geometry", 12);
    state.split = "split";
    state.columns = "columns";
    state.isFlat = true;
    state.filters = {QStringLiteral("is:modified"), QStringLiteral("\"a b\", c=;%\\ \u00e4")};
    return state;
}

WindowState withFilters(const QStringList& filters) {
    WindowState state;
    state.filters = filters;
    return state;
}

}  // namespace

TEST(WindowState, LiesInTheStateFolder) {
    EXPECT_EQ(file(), std::filesystem::path(std::getenv("XDG_STATE_HOME")) /
                          QRV_APPLICATION_IDENTIFIER / "window.ini");
}

TEST(WindowState, IsEmptyAtFirstAndMakesNoFile) {
    EXPECT_EQ(readWindowState(), WindowState());
    writeWindowState(WindowState(), WindowState());
    EXPECT_FALSE(std::filesystem::exists(std::getenv("XDG_STATE_HOME")));
}

TEST(WindowState, ComesBackAsItWas) {
    writeWindowState(someState(), WindowState());
    EXPECT_EQ(readWindowState(), someState());
}

TEST(WindowState, WhatIsTheSameIsNotWrittenAgain) {
    writeWindowState(someState(), WindowState());
    const auto before = ToolSupport::snapshot(file().parent_path());
    const WindowState state = readWindowState();
    writeWindowState(state, state);
    EXPECT_EQ(ToolSupport::snapshot(file().parent_path()), before);
}

TEST(WindowState, TwoWindowsKeepTheFiltersOfBoth) {
    const QString old = QStringLiteral("old");
    writeWindowState(withFilters({old}), WindowState());
    const WindowState before = readWindowState();
    writeWindowState(withFilters({QStringLiteral("one"), old}), before);
    writeWindowState(withFilters({QStringLiteral("two"), old}), before);
    EXPECT_EQ(readWindowState().filters,
              QStringList({QStringLiteral("two"), QStringLiteral("one"), old}));
}

TEST(WindowState, TheEarliestFiltersAreForgotten) {
    QStringList many;
    for (int number = 0; number < 2 * QRVWindow::maximumFilters; ++number)
        many << QString::number(number);
    writeWindowState(withFilters(many), WindowState());
    EXPECT_EQ(readWindowState().filters, many.mid(0, QRVWindow::maximumFilters));
}

TEST(WindowState, WhatCannotBeReadIsIgnoredAndSaid) {
    std::filesystem::create_directories(file());  // a folder, which is no file even for root
    testing::internal::CaptureStderr();
    EXPECT_EQ(readWindowState(), WindowState());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "qrvsettings-window: The window's state cannot be read: " + file().string() + "\n");
    testing::internal::CaptureStderr();
    writeWindowState(someState(), WindowState());
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("The window's state cannot be kept: " + file().string()));
}

TEST(WindowState, ADamagedFileIsReplaced) {
    ToolSupport::writeFile(file(), std::string("\0\xff[[[\n=====", 11));
    testing::internal::CaptureStderr();
    const WindowState before = readWindowState();
    testing::internal::GetCapturedStderr();
    writeWindowState(someState(), before);
    EXPECT_EQ(readWindowState(), someState());
}

TEST(WindowState, WhatDialogsKeepLiesBesideIt) {
    QRVWindow::keepStateOfDialogsThere();
    { const QFileDialog dialog; }
    EXPECT_TRUE(std::filesystem::exists(file().parent_path() / "QtProject.conf"));
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(std::getenv("XDG_CONFIG_HOME")) /
                                         "QtProject.conf"));
}

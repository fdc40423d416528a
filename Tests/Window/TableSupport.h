// SPDX-License-Identifier: MIT
#pragma once

// The list of settings of a test, over the real session and a real file.

#include <gtest/gtest.h>

#include <QString>
#include <QVBoxLayout>
#include <QWidget>
#include <string>

#include "Session/Session.h"
#include "Table/FilterBar.h"
#include "Table/RowModel.h"
#include "Table/RowView.h"
#include "Tool/ToolSupport.h"
#include "Window/WindowSupport.h"

using QRVWindow::RowModel;
using QRVWindow::RowView;
using QRVWindow::Session;

/// The file as it is is read; no test begins before.
struct StartedSession : Session {
    StartedSession() {
        start();
        EXPECT_TRUE(WindowSupport::waitUntil(
            [this] { return fileState().kind != QRVWindow::FileState::Kind::NotRead; }));
    }
};

/// Property-list entries of `groups` levels with ten integers each: "Group0.Sub.network.width3".
inline std::string groupsOfIntegers(int groups, int value = 40) {
    std::string text;
    for (int group = 0; group < groups; ++group) {
        text += "<key>Group" + std::to_string(group) + "</key><dict><key>Sub</key><dict>";
        for (int leaf = 0; leaf < 10; ++leaf)
            text += "<key>" + std::string(leaf % 2 == 0 ? "network" : "width") +
                    std::to_string(leaf) + "</key><integer>" + std::to_string(value) + "</integer>";
        text += "</dict></dict>";
    }
    return ToolSupport::propertyList(text);
}

/// As a failed test shows them.
inline std::string lines(const QStringList& texts) {
    return texts.join(QLatin1Char('\n')).toStdString();
}

/// A window with filter and list, as tests see it.
struct TableWindow {
    StartedSession session;
    RowModel model{session};
    QWidget window;
    QRVWindow::FilterBar bar{model, &window};
    RowView view{model, &window};

    TableWindow() {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(&bar);
        layout->addWidget(&view);
        QObject::connect(&bar, &QRVWindow::FilterBar::tableWanted, &view, &RowView::enter);
        constexpr QSize size(1200, 500);
        window.resize(size);
    }
    void show() {
        WindowSupport::show(window);
        window.activateWindow();
        EXPECT_TRUE(WindowSupport::waitUntil([this] { return window.isActiveWindow(); }));
    }
    [[nodiscard]] QString cell(const std::string& keyPath, int column) {
        const auto line = model.reveal(keyPath);
        return line ? model.index(*line, column).data().toString() : QStringLiteral("(no line)");
    }
    [[nodiscard]] QStringList column(int column) {
        QStringList texts;
        for (int line = 0; line < model.rowCount(); ++line)
            texts << model.index(line, column).data().toString();
        return texts;
    }
    bool showsSoon(const std::string& keyPath, int column, const QString& text) {
        return WindowSupport::waitUntil([&] { return cell(keyPath, column) == text; });
    }
};

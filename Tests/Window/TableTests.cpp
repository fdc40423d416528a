// SPDX-License-Identifier: MIT
// What the list of settings says, and how it follows changes.
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QFont>
#include <QSignalSpy>

#include "Reporting/PrintableText.h"
#include "Table/Variants.h"
#include "Text/ValueText.h"
#include "Window/TableSupport.h"

using Tool::RowList;

namespace {

constexpr const char* width = "CPU.Menubar.Mode.HistoryGraph.Width";
constexpr const char* enabled = "CPU.Menubar.Enabled";

QString shown(const PropertyListValue& value) {
    if (value.isNull()) return {};
    const std::string text = Tool::bareText(value);
    return text.empty() ? QStringLiteral("\"\"")
                        : QString::fromStdString(Tool::printable(text)).left(150);
}

QString layerWord(const Tool::SettingRow& row) {
    return QString::fromStdString(Tool::layerWord(row.layer));
}

/// Of each row in each cell what the table of the session holds.
void expectAllRowsShown(TableWindow& window) {
    for (const Tool::SettingRow& row : window.session.table().rows()) {
        SCOPED_TRACE(row.keyPath);
        const QString value = window.cell(row.keyPath, RowModel::Value);
        EXPECT_EQ(value.left(shown(row.effective).size()), shown(row.effective));
        if (!row.isOfOtherKind) {
            EXPECT_EQ(value.left(150), shown(row.effective));
        }
        EXPECT_EQ(window.cell(row.keyPath, RowModel::Layer), layerWord(row));
        EXPECT_EQ(window.cell(row.keyPath, RowModel::Default).left(150), shown(row.byDefault));
        EXPECT_EQ(window.cell(row.keyPath, RowModel::Sign).contains(QLatin1Char('*')),
                  row.isModified);
        EXPECT_EQ(window.cell(row.keyPath, RowModel::Setting),
                  QString::fromStdString(Tool::printable(row.keyPath)));
    }
}

}  // namespace

TEST(Table, ShowsOfEveryRowWhatTheSessionHolds) {
    ToolSupport::writeSettings(groupsOfIntegers(100));
    TableWindow window;
    window.model.setForm(RowList::Form::Flat);
    window.model.setShowsRecords(true);
    ASSERT_GT(window.model.rowCount(), 1000);
    EXPECT_EQ(window.model.rowCount(), static_cast<int>(window.session.table().rows().size()));
    expectAllRowsShown(window);
}

TEST(Table, ShowsOfEveryRowOfAProfileWhatTheSessionHolds) {
    WindowSupport::runTool({"set", "--profile", "travel", "--", width, "77"});
    TableWindow window;
    window.model.setForm(RowList::Form::Flat);
    window.model.setShowsRecords(true);
    window.session.setProfile(QStringLiteral("travel"));
    EXPECT_EQ(window.cell(width, RowModel::Value), QStringLiteral("77"));
    expectAllRowsShown(window);
}

TEST(Table, SaysWhatAnEditWillDo) {
    WindowSupport::setByTool(width, "60");
    TableWindow window;
    window.session.edit(width, 80);
    EXPECT_EQ(window.cell(width, RowModel::Value), QStringLiteral("60 \u2192 80"));
    EXPECT_EQ(window.cell(width, RowModel::Layer), QStringLiteral("pending"));
    EXPECT_EQ(window.cell(width, RowModel::Seen), QStringLiteral("will store"));
    EXPECT_TRUE(window.cell(width, RowModel::Sign).contains(QLatin1Char('>')));

    window.session.reset({width});
    EXPECT_EQ(window.cell(width, RowModel::Value), QStringLiteral("60 \u2192 not stored"));
    EXPECT_EQ(window.cell(width, RowModel::Seen), QStringLiteral("back to default"));
    EXPECT_TRUE(window.cell(width, RowModel::Sign).contains(QLatin1Char('=')));
}

TEST(Table, SaysWhoHasChangedASettingAMomentAgo) {
    TableWindow window;
    WindowSupport::setByTool(width, "60");
    ASSERT_TRUE(window.showsSoon(width, RowModel::Value, QStringLiteral("60")));
    EXPECT_TRUE(window.cell(width, RowModel::Sign).contains(QLatin1Char('~')));
    EXPECT_TRUE(window.cell(width, RowModel::Seen).contains(QStringLiteral(" by ")));
    const auto line = window.model.lineOf(width);
    ASSERT_TRUE(line);
    const QString spoken = window.model.index(*line, 0).data(Qt::AccessibleTextRole).toString();
    EXPECT_TRUE(spoken.contains(QStringLiteral("changed a moment ago by ")))
        << spoken.toStdString();
    EXPECT_EQ(window.model.counts().live, 1);
    EXPECT_TRUE(WindowSupport::waitUntil([&] { return window.model.counts().live == 0; }));
    EXPECT_EQ(window.cell(width, RowModel::Seen), QString());
}

TEST(Table, ARowHasOneNameThatSaysAllOfIt) {
    WindowSupport::setByTool(width, "60");
    TableWindow window;
    window.session.edit(width, 80);
    const auto line = window.model.reveal(width);
    ASSERT_TRUE(line);
    const QModelIndex row = window.model.index(*line, RowModel::Setting);
    EXPECT_EQ(
        row.data(Qt::AccessibleTextRole).toString(),
        QStringLiteral("CPU.Menubar.Mode.HistoryGraph.Width, 60 \u2192 80, modified, pending"));
    EXPECT_FALSE(row.data(Qt::AccessibleDescriptionRole).toString().isEmpty());
    EXPECT_TRUE(row.data(Qt::FontRole).value<QFont>().bold());
}

TEST(Table, ALevelSaysHowManySettingsItHas) {
    ToolSupport::writeSettings(groupsOfIntegers(2));
    TableWindow window;
    window.model.setFilter(QStringLiteral("group1"));
    ASSERT_EQ(window.model.rowCount(), 11);
    EXPECT_EQ(window.model.index(0, 0).data().toString(),
              QStringLiteral("Group1.Sub, 10 settings"));
    EXPECT_TRUE(window.model.index(0, 0).data(RowModel::IsLevelRole).toBool());
    EXPECT_EQ(window.model.index(1, 0).data(RowModel::KeyPathRole).toString(),
              QStringLiteral("Group1.Sub.network0"));
}

TEST(Table, ShowsLongAndStrangeValuesOnOneLine) {
    const std::string longText(5000, 'x');
    ToolSupport::writeSettings(ToolSupport::propertyList(
        "<key>A</key><string>one\ntwo\tthree</string><key>B</key><string>" + longText +
        "</string><key>C</key><string></string><key>D</key><string>&lt;b>bold&lt;/b></string>"));
    TableWindow window;
    EXPECT_EQ(window.cell("A", RowModel::Value), QStringLiteral("one\\x0atwo\\x09three"));
    const QString shortened = window.cell("B", RowModel::Value);
    EXPECT_LT(shortened.size(), 300);
    EXPECT_TRUE(shortened.endsWith(QChar(0x2026)));
    EXPECT_EQ(window.cell("C", RowModel::Value), QStringLiteral("\"\""));
    const auto line = window.model.lineOf("D");
    ASSERT_TRUE(line);
    EXPECT_TRUE(window.model.index(*line, RowModel::Value)
                    .data(Qt::ToolTipRole)
                    .toString()
                    .contains(QStringLiteral("&lt;b&gt;bold")));
}

TEST(Table, SaysThatTheFileIsDamaged) {
    WindowSupport::setByTool(width, "60");
    TableWindow window;
    ToolSupport::writeSettings("<plist><dict><key>");
    ASSERT_TRUE(window.showsSoon(width, RowModel::Layer, QStringLiteral("file damaged")));
    const auto line = window.model.lineOf(width);
    ASSERT_TRUE(line);
    EXPECT_FALSE(window.model.flags(window.model.index(*line, RowModel::Value)) &
                 Qt::ItemIsEditable);
}

TEST(Table, HasTheValuesOfAnotherProfileInAColumnOfTheirOwn) {
    WindowSupport::runTool({"set", "--profile", "travel", "--", width, "77"});
    TableWindow window;
    EXPECT_EQ(window.model.columnCount(), RowModel::Other);
    window.session.setOtherProfile(QStringLiteral("travel"));
    ASSERT_EQ(window.model.columnCount(), RowModel::Other + 1);
    EXPECT_EQ(window.cell(width, RowModel::Other), QStringLiteral("77"));
    EXPECT_EQ(window.model.headerData(RowModel::Other, Qt::Horizontal, Qt::DisplayRole).toString(),
              QStringLiteral("In profile travel"));
    window.session.setOtherProfile({});
    EXPECT_EQ(window.model.columnCount(), RowModel::Other);
}

TEST(Table, AThousandChangesInOneSaveAreAFewSignals) {
    ToolSupport::writeSettings(groupsOfIntegers(100, 1));
    TableWindow window;
    window.model.setAllExpanded(true);
    const QSignalSpy resets(&window.model, &RowModel::modelReset);
    const QSignalSpy layouts(&window.model, &RowModel::layoutChanged);
    const QSignalSpy changes(&window.model, &RowModel::dataChanged);
    ToolSupport::writeSettings(groupsOfIntegers(100, 2));
    ASSERT_TRUE(window.showsSoon("Group99.Sub.width9", RowModel::Value, QStringLiteral("2")));
    EXPECT_EQ(window.cell("Group0.Sub.network0", RowModel::Value), QStringLiteral("2"));
    EXPECT_EQ(resets.count(), 0);
    EXPECT_EQ(layouts.count(), 0);
    EXPECT_LT(changes.count(), 20);
}

TEST(Table, ASettingThatAppearsIsAnInsertion) {
    ToolSupport::writeSettings(groupsOfIntegers(3));
    TableWindow window;
    const QAbstractItemModelTester tester(&window.model);
    window.model.setAllExpanded(true);
    const QSignalSpy insertions(&window.model, &RowModel::rowsInserted);
    const QSignalSpy resets(&window.model, &RowModel::modelReset);
    WindowSupport::setByTool("Group1.Sub.another", "5");
    ASSERT_TRUE(window.showsSoon("Group1.Sub.another", RowModel::Value, QStringLiteral("5")));
    EXPECT_EQ(insertions.count(), 1);
    EXPECT_EQ(resets.count(), 0);
}

TEST(Table, IsASoundModelThroughFiltersLevelsAndChanges) {
    ToolSupport::writeSettings(groupsOfIntegers(20));
    TableWindow window;
    const QAbstractItemModelTester tester(&window.model);
    window.model.setFilter(QStringLiteral("group1"));
    window.model.setExpanded(0, false);
    window.model.setForm(RowList::Form::Flat);
    window.model.setFilter({});
    window.model.setShowsRecords(true);
    window.model.setForm(RowList::Form::Tree);
    window.model.setAllExpanded(true);
    ToolSupport::writeSettings(groupsOfIntegers(5, 7));
    ASSERT_TRUE(window.showsSoon("Group1.Sub.network0", RowModel::Value, QStringLiteral("7")));
    EXPECT_FALSE(window.model.lineOf("Group17.Sub.network0"));
    ToolSupport::writeSettings(groupsOfIntegers(9, 8));
    ASSERT_TRUE(window.showsSoon("Group8.Sub.network0", RowModel::Value, QStringLiteral("8")));
    window.session.setProfile(QStringLiteral("default"));
    window.session.setProfile({});
    EXPECT_EQ(window.cell("Group8.Sub.network0", RowModel::Value), QStringLiteral("8"));
}

TEST(Table, TheModifiedFilterShowsWhatAPersonHasChanged) {
    WindowSupport::setByTool(width, "60");
    WindowSupport::setByTool(enabled, "false");
    TableWindow window;
    window.model.setForm(RowList::Form::Flat);
    window.model.setFilter(QStringLiteral("is:modified"));
    EXPECT_EQ(lines(window.column(RowModel::Setting)), std::string(enabled) + '\n' + width);
    EXPECT_EQ(window.model.counts().matches, 2);

    window.model.setShowsRecords(true);
    const QString diff = QString::fromStdString(ToolSupport::run({"diff", "--records"}).output);
    QStringList keyPaths;
    for (const QString& line : diff.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        keyPaths << line.section(QLatin1Char('\t'), 0, 0);
    QStringList rows = window.column(RowModel::Setting);
    keyPaths.sort();
    rows.sort();
    EXPECT_EQ(lines(rows), lines(keyPaths));
}

TEST(Variants, AreTheLightAndTheDarkOne) {
    const auto dark = QRVWindow::otherVariant("A.Low.Light.Color");
    ASSERT_TRUE(dark);
    EXPECT_EQ(dark->keyPath, "A.Low.Dark.Color");
    EXPECT_TRUE(dark->isDark);
    EXPECT_EQ(QRVWindow::otherVariant("Theme.Dark")->keyPath, "Theme.Light");
    EXPECT_EQ(QRVWindow::otherVariant("Dark")->keyPath, "Light");
    EXPECT_FALSE(QRVWindow::otherVariant("A.Light.B.Color"));
    EXPECT_FALSE(QRVWindow::otherVariant("Lightness.Color"));
    EXPECT_FALSE(QRVWindow::otherVariant(""));
}

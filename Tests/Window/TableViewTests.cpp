// SPDX-License-Identifier: MIT
// How a person moves and edits in the list of settings, and what stays where it is meanwhile.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include "Editors/ValueEditor.h"
#include "Window/TableSupport.h"

using QRVWindow::ValueEditor;
using Tool::RowList;

namespace {

constexpr const char* width = "CPU.Menubar.Mode.HistoryGraph.Width";

ValueEditor* editorIn(const RowView& view) {
    return view.findChild<ValueEditor*>();
}

/// The row at the top, and how far it is scrolled.
QString topOf(const RowView& view) {
    return view.indexAt(QPoint(5, 5)).siblingAtColumn(0).data(RowModel::KeyPathRole).toString();
}

bool hasFocusWithin(const QWidget& widget) {
    const QWidget* focus = QApplication::focusWidget();
    return focus != nullptr && (focus == &widget || widget.isAncestorOf(focus));
}

/// Collects what the toolkit complains of.
class Warnings {
  public:
    Warnings() : before_(qInstallMessageHandler(collect)) { said().clear(); }
    Warnings(const Warnings&) = delete;
    Warnings& operator=(const Warnings&) = delete;
    ~Warnings() { qInstallMessageHandler(before_); }
    static QStringList& said() {
        static QStringList sentences;
        return sentences;
    }

  private:
    static void collect(QtMsgType type, const QMessageLogContext& context, const QString& text) {
        Q_UNUSED(context)
        if (type != QtDebugMsg && type != QtInfoMsg) said().append(text);
    }
    QtMessageHandler before_;
};

}  // namespace

TEST(TableView, KeepsPlaceFocusAndHalfTypedTextWhileOthersChangeTheFile) {
    ToolSupport::writeSettings(groupsOfIntegers(40));
    TableWindow window;
    window.model.setAllExpanded(true);
    window.show();
    ASSERT_TRUE(window.view.reveal("Group20.Sub.network4"));
    window.view.verticalScrollBar()->setValue(window.view.currentIndex().row() - 3);
    window.view.setFocus();
    QTest::keyClick(&window.view, Qt::Key_Return);
    ValueEditor* const editor = editorIn(window.view);
    ASSERT_NE(editor, nullptr);
    ASSERT_TRUE(hasFocusWithin(*editor));
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("12"));
    const QString typed = editor->text();
    const QString top = topOf(window.view);

    WindowSupport::setByTool("Group3.Sub.network0", "1");    // another row
    WindowSupport::setByTool("Group20.Sub.network4", "99");  // this one
    WindowSupport::setByTool("Group10.Sub.added", "5");      // a line above
    ASSERT_TRUE(WindowSupport::waitUntil(
        [&] { return window.model.lineOf("Group10.Sub.added").has_value(); }));
    WindowSupport::runTool({"unset", "--", "Group5.Sub.network0"});
    ASSERT_TRUE(
        WindowSupport::waitUntil([&] { return !window.model.lineOf("Group5.Sub.network0"); }));
    ASSERT_TRUE(window.showsSoon("Group20.Sub.network4", RowModel::Value, QStringLiteral("99")));

    EXPECT_EQ(editorIn(window.view), editor);
    EXPECT_TRUE(hasFocusWithin(*editor));
    EXPECT_EQ(editor->text(), typed);
    EXPECT_EQ(topOf(window.view), top);
    EXPECT_EQ(window.view.currentKeyPath(), "Group20.Sub.network4");
    EXPECT_TRUE(window.session.pending().edits().empty());
    EXPECT_EQ(
        window.view.visualRect(window.view.currentIndex().siblingAtColumn(RowModel::Value)).top(),
        editor->geometry().top());

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    ASSERT_EQ(window.session.conflicts().size(), 1U) << "nobody has typed this over 99";
    EXPECT_EQ(window.session.conflicts().front().theirs, 99);
}

TEST(TableView, KeepsTheSelectionWhileLinesComeAndGo) {
    ToolSupport::writeSettings(groupsOfIntegers(20));
    TableWindow window;
    window.model.setAllExpanded(true);
    window.show();
    window.view.selectAll();
    const std::vector<std::string> all = window.view.selectedKeyPaths();
    EXPECT_EQ(all.size(), static_cast<std::size_t>(window.model.counts().all));
    window.model.setForm(RowList::Form::Flat);
    EXPECT_EQ(window.view.selectedKeyPaths(), all);

    window.bar.setText(QStringLiteral("group7"));
    EXPECT_EQ(window.view.selectedKeyPaths().size(), 10U);
    window.bar.setText({});
    EXPECT_EQ(window.view.selectedKeyPaths().size(), 10U) << "what was hidden is not selected";
}

TEST(TableView, ALevelThatIsSelectedMeansAllBelowIt) {
    ToolSupport::writeSettings(groupsOfIntegers(3));
    TableWindow window;
    window.model.setFilter(QStringLiteral("group"));
    window.show();
    window.view.setCurrentIndex(window.model.index(*window.model.lineOf("Group1.Sub"), 0));
    EXPECT_EQ(window.view.selectedKeyPaths().size(), 10U);
    EXPECT_EQ(window.view.selectedKeyPaths().front(), "Group1.Sub.network0");
}

TEST(TableView, TheCurrentRowComesBackWhenTheFilterShowsItAgain) {
    ToolSupport::writeSettings(groupsOfIntegers(20));
    TableWindow window;
    window.model.setAllExpanded(true);
    window.show();
    ASSERT_TRUE(window.view.reveal("Group7.Sub.network2"));
    const QSignalSpy moves(&window.view, &RowView::currentKeyPathChanged);
    window.bar.setText(QStringLiteral("network2"));
    EXPECT_EQ(window.view.currentKeyPath(), "Group7.Sub.network2");
    EXPECT_EQ(moves.count(), 0);
    window.bar.setText(QStringLiteral("width"));
    EXPECT_EQ(window.view.currentKeyPath(), "");
    window.bar.setText({});
    EXPECT_EQ(window.view.currentKeyPath(), "Group7.Sub.network2");
    EXPECT_EQ(moves.count(), 2);
}

TEST(TableView, LevelsOpenAndCloseByKeys) {
    ToolSupport::writeSettings(groupsOfIntegers(3));
    TableWindow window;
    window.show();
    window.view.setFocus();
    ASSERT_TRUE(window.view.reveal("Group1.Sub"));
    const int closed = window.model.rowCount();
    const auto press = [&](Qt::Key key) { QTest::keyClick(&window.view, key); };
    press(Qt::Key_Right);
    EXPECT_EQ(window.model.rowCount(), closed + 10);
    press(Qt::Key_Right);
    EXPECT_EQ(window.view.currentKeyPath(), "Group1.Sub.network0");
    press(Qt::Key_Down);
    press(Qt::Key_Left);
    EXPECT_EQ(window.view.currentKeyPath(), "Group1.Sub");
    press(Qt::Key_Left);
    EXPECT_EQ(window.model.rowCount(), closed);
    for (const Qt::Key key : {Qt::Key_Plus, Qt::Key_Minus, Qt::Key_Asterisk, Qt::Key_Return}) {
        const int before = window.model.rowCount();
        press(key);
        EXPECT_NE(window.model.rowCount(), before) << key;
    }
    EXPECT_EQ(window.view.currentKeyPath(), "Group1.Sub");
    press(Qt::Key_Home);
    EXPECT_EQ(window.view.currentIndex().row(), 0);
    press(Qt::Key_End);
    EXPECT_EQ(window.view.currentIndex().row(), window.model.rowCount() - 1);
}

TEST(TableView, RightToLeftMirrorsKeysAndArrows) {
    ToolSupport::writeSettings(groupsOfIntegers(3));
    TableWindow window;
    window.window.setLayoutDirection(Qt::RightToLeft);
    window.show();
    window.view.setFocus();
    ASSERT_TRUE(window.view.reveal("Group1.Sub"));
    const int closed = window.model.rowCount();
    QTest::keyClick(&window.view, Qt::Key_Left);
    EXPECT_EQ(window.model.rowCount(), closed + 10);
    QTest::keyClick(&window.view, Qt::Key_Right);
    EXPECT_EQ(window.model.rowCount(), closed);
    const QRect cell = window.view.visualRect(window.view.currentIndex());
    QTest::mouseClick(window.view.viewport(), Qt::LeftButton, {},
                      QPoint(cell.right() - 8, cell.center().y()));
    EXPECT_EQ(window.model.rowCount(), closed + 10);
}

TEST(TableView, AClickOnTheArrowOpensALevelAndSelectsNothing) {
    ToolSupport::writeSettings(groupsOfIntegers(3));
    TableWindow window;
    window.show();
    const int closed = window.model.rowCount();
    const QRect cell =
        window.view.visualRect(window.model.index(*window.model.lineOf("Group1.Sub"), 0));
    window.view.scrollTo(window.model.index(*window.model.lineOf("Group1.Sub"), 0));
    QTest::mouseClick(window.view.viewport(), Qt::LeftButton, {},
                      QPoint(cell.left() + 8, cell.center().y()));
    EXPECT_EQ(window.model.rowCount(), closed + 10);
    EXPECT_TRUE(window.view.selectedKeyPaths().empty());
}

TEST(TableView, EnterEditsTheValueOnce) {
    TableWindow window;
    window.show();
    ASSERT_TRUE(window.view.reveal(width));
    window.view.setFocus();
    const QSignalSpy edits(&window.session, &Session::pendingChanged);
    const Warnings warnings;
    QTest::keyClick(&window.view, Qt::Key_F2);
    ASSERT_NE(editorIn(window.view), nullptr);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("61"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    ASSERT_NE(window.session.pendingAt(width), nullptr);
    EXPECT_EQ(window.session.pendingAt(width)->value, PropertyListValue(61));
    EXPECT_EQ(edits.count(), 1);
    EXPECT_EQ(window.session.pending().undoCount(), 1U);
    EXPECT_EQ(QApplication::focusWidget(), &window.view);
    EXPECT_EQ(Warnings::said().join(QLatin1Char('\n')).toStdString(), "");
}

TEST(TableView, EscapeGoesFromTheEditorToTheRowAndIsThenPassedOn) {
    TableWindow window;
    window.show();
    ASSERT_TRUE(window.view.reveal(width));
    window.view.setFocus();
    const Warnings warnings;
    QTest::keyClick(&window.view, Qt::Key_Return);
    ASSERT_TRUE(window.view.isEditing());
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("9"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    EXPECT_TRUE(WindowSupport::waitUntil([&] { return !window.view.isEditing(); }));
    EXPECT_EQ(QApplication::focusWidget(), &window.view);
    EXPECT_TRUE(window.session.pending().edits().empty());
    EXPECT_EQ(window.view.currentKeyPath(), width);
    EXPECT_EQ(Warnings::said().join(QLatin1Char('\n')).toStdString(), "");

    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
    QApplication::sendEvent(&window.view, &escape);
    EXPECT_FALSE(escape.isAccepted());
}

TEST(TableView, AWrongValueIsNotLostWhenSomebodyClicksElsewhere) {
    TableWindow window;
    window.show();
    ASSERT_TRUE(window.view.reveal(width));
    window.view.setFocus();
    QTest::keyClick(&window.view, Qt::Key_Return);
    ValueEditor* const editor = editorIn(window.view);
    ASSERT_NE(editor, nullptr);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("abc"));
    const QString typed = editor->text();
    const QRect first = window.view.visualRect(window.model.index(0, 0));
    QTest::mouseClick(window.view.viewport(), Qt::LeftButton, {}, first.center());
    EXPECT_EQ(editorIn(window.view), editor);
    EXPECT_EQ(editor->text(), typed);
    EXPECT_TRUE(hasFocusWithin(*editor));
    EXPECT_EQ(window.view.currentKeyPath(), width);
}

TEST(TableView, AWholeValueIsTakenWhenSomebodyGoesElsewhere) {
    TableWindow window;
    window.show();
    ASSERT_TRUE(window.view.reveal(width));
    window.view.setFocus();
    QTest::keyClick(&window.view, Qt::Key_Return);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("61"));
    window.bar.focusField();
    ASSERT_NE(window.session.pendingAt(width), nullptr);
    EXPECT_EQ(window.session.pending().undoCount(), 1U);
    EXPECT_TRUE(hasFocusWithin(window.bar));
}

TEST(TableView, AnEditorThatIsOnlyOpenedChangesNothing) {
    ToolSupport::writeSettings(ToolSupport::propertyList(
        "<key>Kinds</key><dict>"
        "<key>A</key><integer>9007199254740993</integer><key>B</key><integer>1234567</integer>"
        "<key>C</key><real>0.1</real><key>D</key><real>1e300</real>"
        "<key>Text.Color</key><string>1 0.321 0.341 1</string>"
        "<key>E</key><date>2020-01-01T00:00:00Z</date><key>F</key><string>true</string>"
        "<key>G</key><true/><key>H</key><data>AQI=</data><key>I</key><array/>"
        "<key>J</key><string></string><key>K</key><integer>18446744073709551615</integer>"
        "</dict>"));
    TableWindow window;
    window.model.setForm(RowList::Form::Flat);
    window.show();
    window.view.setFocus();
    int opened = 0;
    for (const Tool::SettingRow& row : window.session.table().rows()) {
        if (!window.view.reveal(row.keyPath)) continue;
        QTest::keyClick(&window.view, Qt::Key_Return);
        if (!window.view.isEditing()) continue;  // a dialog's matter
        ++opened;
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        EXPECT_TRUE(WindowSupport::waitUntil([&] { return !window.view.isEditing(); }))
            << row.keyPath;
        EXPECT_TRUE(window.session.pending().edits().empty()) << row.keyPath;
    }
    EXPECT_GT(opened, 50);
    EXPECT_FALSE(window.session.pending().canUndo());
}

TEST(TableView, AScreenReaderFindsATableOfAllRows) {
    ToolSupport::writeSettings(groupsOfIntegers(3));
    TableWindow window;
    window.model.setAllExpanded(true);
    window.show();
    QAccessibleInterface* view = QAccessible::queryAccessibleInterface(&window.view);
    ASSERT_NE(view, nullptr);
    QAccessibleTableInterface* table = view->tableInterface();
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->rowCount(), window.model.rowCount());
    EXPECT_EQ(table->columnCount(), window.model.columnCount());
    const int line = *window.model.lineOf("Group1.Sub.network0");
    EXPECT_EQ(table->cellAt(line, RowModel::Setting)->text(QAccessible::Name),
              QStringLiteral("Group1.Sub.network0, 40, stored, modified"));
    window.bar.setText(QStringLiteral("group1"));
    EXPECT_EQ(table->rowCount(), 11);
}

// SPDX-License-Identifier: MIT
// The filter of the list of settings, as a person uses it.
#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QCheckBox>
#include <QCompleter>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include "Table/FilterWords.h"
#include "Window/TableSupport.h"

namespace {

struct FilterWindow : TableWindow {
    QLineEdit* field = bar.findChild<QLineEdit*>();
    FilterWindow() { show(); }
    /// By its text without the count.
    [[nodiscard]] QCheckBox* box(const char* text) {
        for (QCheckBox* box : bar.findChildren<QCheckBox*>())
            if (box->text().remove(QLatin1Char('&')).startsWith(QString::fromLatin1(text)))
                return box;
        return nullptr;
    }
    [[nodiscard]] bool says(const QString& text) {
        for (const QLabel* label : bar.findChildren<QLabel*>())
            if (label->isVisible() && label->text().contains(text)) return true;
        return false;
    }
};

QString q(const char* text) {
    return QString::fromLatin1(text);
}

}  // namespace

TEST(FilterWords, AreFoundAddedAndRemoved) {
    using namespace QRVWindow;
    EXPECT_TRUE(holdsWord(q("a IS:modified b"), q("is:modified")));
    EXPECT_FALSE(holdsWord(q("\"is:modified\" -is:modified"), q("is:modified")));
    EXPECT_EQ(withWord(q("net "), q("is:live")), q("net is:live"));
    EXPECT_EQ(withWord(q(""), q("is:live")), q("is:live"));
    EXPECT_EQ(withoutWord(q("net is:live \"two words\""), q("is:live")), q("net \"two words\""));
    EXPECT_EQ(withoutWord(q("is:live"), q("is:live")), q(""));
    const WordPlace word = wordBefore(q("net -is:m rest"), 9);
    EXPECT_EQ(word.start, 5);
    EXPECT_EQ(word.length, 4);
    EXPECT_EQ(wordBefore(q("\"is:m"), 5).length, 0);
    EXPECT_EQ(wordBefore(q("net "), 4).length, 0);
}

TEST(FilterBar, FiltersAtEachLetter) {
    ToolSupport::writeSettings(groupsOfIntegers(20));
    FilterWindow window;
    const QSignalSpy changes(&window.bar, &QRVWindow::FilterBar::filterChanged);
    window.bar.focusField();
    QTest::keyClicks(window.field, q("group7"));
    EXPECT_EQ(changes.count(), 6);
    EXPECT_EQ(window.model.counts().matches, 10);
    EXPECT_TRUE(window.says(q("10 of "))) << "the count";
}

TEST(FilterBar, TheCountReachesAScreenReaderOncePerPause) {
    ToolSupport::writeSettings(groupsOfIntegers(20));
    FilterWindow window;
    QTest::keyClicks(window.field, q("group7"));
    EXPECT_TRUE(WindowSupport::waitUntil([&] {
        for (const QLabel* label : window.bar.findChildren<QLabel*>())
            if (label->accessibleName().startsWith(q("10 of "))) return true;
        return false;
    }));
}

TEST(FilterBar, SaysWhatIsWrongWithAWord) {
    FilterWindow window;
    window.bar.setText(q("is:modifed"));
    EXPECT_TRUE(window.says(q("is:modified"))) << "what was meant";
    EXPECT_FALSE(window.field->accessibleDescription().isEmpty());
    window.bar.setText(q("is:modified"));
    EXPECT_TRUE(window.field->accessibleDescription().isEmpty());
}

TEST(FilterBar, CheckBoxesPutWordsIntoTheTextAndRemoveThem) {
    WindowSupport::setByTool("CPU.Menubar.Mode.HistoryGraph.Width", "60");
    FilterWindow window;
    window.bar.setText(q("cpu"));
    QCheckBox* modified = window.box("Modified");
    ASSERT_NE(modified, nullptr);
    EXPECT_EQ(modified->text(), q("&Modified 1"));
    modified->click();
    EXPECT_EQ(window.bar.text(), q("cpu is:modified"));
    EXPECT_EQ(window.model.counts().matches, 1);
    modified->click();
    EXPECT_EQ(window.bar.text(), q("cpu"));
    window.bar.setText(q("is:live is:modified"));
    EXPECT_TRUE(modified->isChecked());
    EXPECT_TRUE(window.box("Live")->isChecked());
    window.box("Live")->click();
    EXPECT_EQ(window.bar.text(), q("is:modified"));
}

TEST(FilterBar, TheStoresRecordsComeInAddition) {
    WindowSupport::setByTool("CPU.Menubar.Mode.HistoryGraph.Width", "60");
    FilterWindow window;
    ASSERT_GT(window.model.counts().records, 0);
    EXPECT_LT(window.model.counts().all, static_cast<int>(window.session.table().rows().size()));
    window.box("Store's records")->click();
    EXPECT_EQ(window.model.counts().all, static_cast<int>(window.session.table().rows().size()));
    EXPECT_TRUE(window.model.lineOf("CPU.Menubar.Mode.HistoryGraph.Width") ||
                window.model.reveal("CPU.Menubar.Mode.HistoryGraph.Width"));
}

TEST(FilterBar, CompletesWordsWithAMeaning) {
    FilterWindow window;
    window.bar.focusField();
    QTest::keyClicks(window.field, q("cpu is:mo"));
    auto* completer = window.bar.findChild<QCompleter*>();
    ASSERT_NE(completer, nullptr);
    ASSERT_TRUE(completer->popup()->isVisible());
    QTest::keyClick(completer->popup(), Qt::Key_Down);
    QTest::keyClick(completer->popup(), Qt::Key_Return);
    EXPECT_EQ(window.bar.text(), q("cpu is:modified"));
    QTest::keyClick(window.field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(window.field, q("network"));
    EXPECT_FALSE(completer->popup()->isVisible());
}

TEST(FilterBar, KeysLeadFromTheTableToTheFieldAndBack) {
    FilterWindow window;
    window.view.setFocus();
    for (const auto& [key, modifier] :
         {std::pair{Qt::Key_Slash, Qt::NoModifier}, {Qt::Key_F, Qt::ControlModifier}}) {
        QTest::keyClick(&window.view, key, modifier);
        EXPECT_TRUE(window.field->hasFocus());
        QTest::keyClick(window.field, Qt::Key_Down);
        EXPECT_TRUE(window.view.hasFocus());
        EXPECT_TRUE(window.view.currentIndex().isValid());
    }
    EXPECT_EQ(window.bar.text(), QString());
    window.bar.focusField();
    QTest::keyClicks(window.field, q("cpu/"));
    EXPECT_EQ(window.bar.text(), q("cpu/")) << "a slash is a letter in the field";
    QTest::keyClick(window.field, Qt::Key_Escape);
    EXPECT_EQ(window.bar.text(), QString());
    EXPECT_TRUE(window.field->hasFocus());
    QTest::keyClick(window.field, Qt::Key_Escape);
    EXPECT_TRUE(window.view.hasFocus());
}

TEST(FilterBar, RemembersFiltersOfBefore) {
    FilterWindow window;
    const QSignalSpy changes(&window.bar, &QRVWindow::FilterBar::historyChanged);
    window.bar.setHistory({q("old")});
    window.bar.focusField();
    QTest::keyClicks(window.field, q("cpu"));
    QTest::keyClick(window.field, Qt::Key_Return);
    EXPECT_EQ(window.bar.history(), (QStringList{q("cpu"), q("old")}));
    window.bar.setText(q("old"));
    window.bar.focusField();
    QTest::keyClick(window.field, Qt::Key_Down);
    EXPECT_EQ(window.bar.history(), (QStringList{q("old"), q("cpu")}));
    EXPECT_EQ(changes.count(), 2);
}

TEST(FilterBar, TabReachesEveryControlAndTheTable) {
    FilterWindow window;
    window.window.show();
    window.bar.setHistory({q("old")});
    window.bar.focusField();
    QSet<QWidget*> reached;
    for (int i = 0; i < 12; ++i) {
        reached.insert(QApplication::focusWidget());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    EXPECT_TRUE(reached.contains(&window.view));
    EXPECT_TRUE(reached.contains(window.field));
    for (const char* box : {"Modified", "Store's records", "Live"})
        EXPECT_TRUE(reached.contains(window.box(box))) << box;
    EXPECT_EQ(reached.size(), 6) << "the history, too, and nothing else";
}

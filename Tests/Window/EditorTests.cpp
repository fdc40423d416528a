// SPDX-License-Identifier: MIT
// How editors of values behave: what is wrong or unusual is said, by keys and by the mouse, and the
// kind stays until a person changes it.
#include "Editors/ValueEditor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QColorDialog>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QToolButton>
#include <QWheelEvent>
#include <cstdint>
#include <limits>

#include "Editors/EditorMessage.h"
#include "Editors/FieldParts.h"
#include "Look/Swatch.h"
#include "Window/EditorSupport.h"

using namespace QRVWindow;
using namespace EditorSupport;

using Kind = PropertyListValue::Kind;
using testing::HasSubstr;

namespace {

const Tool::KnownSetting& knownNumber() {
    static const Tool::KnownSetting setting = [] {
        Tool::KnownSetting known;
        known.keyPath = "A.B";
        known.kind = Kind::Integer;
        known.minimum = 1;
        known.maximum = 9;
        known.unit = "points";
        return known;
    }();
    return setting;
}

const Tool::KnownSetting& knownChoices() {
    static const Tool::KnownSetting setting = [] {
        Tool::KnownSetting known;
        known.keyPath = "A.B";
        known.kind = Kind::Integer;
        known.choices = {{0, "nothing is shown"}, {1, "a graph"}, {2, ""}};
        return known;
    }();
    return setting;
}

EditedSetting knownAs(const Tool::KnownSetting& known, const PropertyListValue& value) {
    return {.known = &known, .keyPath = known.keyPath, .value = value, .byDefault = nullptr};
}

/// A judge that finds everything above 9 too large.
QString judgeSmall(const PropertyListValue& value) {
    return value.isInteger() && value.integerValue() <= 9 ? QString()
                                                          : QStringLiteral("it is too large");
}

void chooseKind(const Desk& desk, const char* name) {
    auto* const menu = desk.part<QMenu>();
    Q_EMIT menu->aboutToShow();
    for (QAction* const action : menu->actions())
        if (action->text() == QLatin1String(name)) return action->trigger();
    FAIL() << name;
}

}  // namespace

TEST(ValueEditor, WithAFaultStaysOpenOnEnterAndSaysWhy) {
    const Desk desk(settingOf(1));
    desk.type("twelve");
    const QSignalSpy committed(desk.editor, &ValueEditor::committed);
    desk.press(Qt::Key_Return);
    desk.press(Qt::Key_Return);
    EXPECT_EQ(committed.count(), 0);
    EXPECT_THAT(desk.message(), HasSubstr("not a decimal integer: twelve"));
    EXPECT_THAT(desk.description(), HasSubstr("not a decimal integer: twelve"));
    desk.type("12");
    EXPECT_EQ(desk.message(), "");
    EXPECT_EQ(desk.description(), "");
    desk.press(Qt::Key_Return);
    EXPECT_EQ(committed.count(), 1);
}

TEST(ValueEditor, SaysWhereItsJSONIsWrongWhileItIsTyped) {
    const Desk desk(settingOf(NSArray{1}), Place::Form);
    desk.type("[1,\n 2,\n  x]");
    EXPECT_THAT(desk.message(), HasSubstr("line 3, column 3"));
}

TEST(ValueEditor, StoresAnUnusualValueOnlyWhenAPersonSaysSo) {
    const Desk desk(settingOf(1));
    desk.editor->setJudge(judgeSmall);
    desk.type("12");
    EXPECT_EQ(desk.editor->objection(), QStringLiteral("it is too large"));
    EXPECT_THAT(desk.message(), HasSubstr("it is too large"));
    const QSignalSpy committed(desk.editor, &ValueEditor::committed);
    desk.press(Qt::Key_Return);
    EXPECT_EQ(committed.count(), 0);
    EXPECT_THAT(desk.description(), HasSubstr("Enter again"));
    QTest::keyClicks(desk.input(), QStringLiteral("3"));
    desk.press(Qt::Key_Return);
    EXPECT_EQ(committed.count(), 0) << "another value is another question";
    desk.press(Qt::Key_Return);
    EXPECT_EQ(committed.count(), 1);
    EXPECT_EQ(jsonOf(*desk.editor), "123");
}

TEST(ValueEditor, StoresAnUnusualValueByItsButton) {
    const Desk desk(settingOf(1));
    desk.editor->setJudge(judgeSmall);
    desk.type("12");
    const QSignalSpy committed(desk.editor, &ValueEditor::committed);
    auto* const button = desk.window.findChild<EditorMessage*>()->findChild<QAbstractButton*>();
    ASSERT_TRUE(button->isVisible());
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(committed.count(), 1);
    EXPECT_TRUE(desk.input()->hasFocus());
}

TEST(ValueEditor, SaysAsTheToolDoesWhatIsUnusual) {
    const Desk desk(settingOf(true, "CPU.Menubar.Enabled"));
    chooseKind(desk, "string");
    EXPECT_EQ(jsonOf(*desk.editor), "\"true\"");
    EXPECT_THAT(desk.message(), HasSubstr("CPU.Menubar.Enabled is a boolean, not a string"));
}

TEST(ValueEditor, StepsIntegersByKeysWithinTheirRangeAndShowsIt) {
    const Desk desk(knownAs(knownNumber(), 8), Place::Form);
    EXPECT_EQ(desk.description(), "from 1 to 9 points");
    bool isShown = false;
    for (const QLabel* const label : desk.editor->findChildren<QLabel*>())
        isShown |= label->isVisible() && label->text() == QLatin1String("from 1 to 9 points");
    EXPECT_TRUE(isShown);
    desk.press(Qt::Key_Up);
    EXPECT_EQ(jsonOf(*desk.editor), "9");
    desk.press(Qt::Key_Up);
    EXPECT_EQ(jsonOf(*desk.editor), "9");
    desk.press(Qt::Key_PageDown);
    EXPECT_EQ(jsonOf(*desk.editor), "1");
}

TEST(ValueEditor, StepsIntegersToTheEndsOfWhatAnIntegerHolds) {
    using Integers = std::numeric_limits<std::int64_t>;
    const Desk atMiddle(settingOf(Integers::max()));
    atMiddle.press(Qt::Key_Up);
    EXPECT_EQ(jsonOf(*atMiddle.editor), "9223372036854775808");
    atMiddle.press(Qt::Key_Down);
    EXPECT_EQ(jsonOf(*atMiddle.editor), "9223372036854775807");
    EXPECT_FALSE(atMiddle.editor->isChanged());
    const Desk atTop(settingOf(std::uint64_t{18446744073709551614U}));
    atTop.press(Qt::Key_PageUp);
    EXPECT_EQ(jsonOf(*atTop.editor), "18446744073709551615");
    const Desk atBottom(settingOf(Integers::min() + 1));
    atBottom.press(Qt::Key_PageDown);
    EXPECT_EQ(jsonOf(*atBottom.editor), "-9223372036854775808");
}

TEST(ValueEditor, DragsIntegersAndCommitsOnce) {
    const Desk desk(settingOf(40));
    auto* const handle = desk.part<DragHandle>();
    const QSignalSpy committed(desk.editor, &ValueEditor::committed);
    const QPoint start = handle->rect().center();
    QTest::mousePress(handle, Qt::LeftButton, {}, start);
    for (int y = 1; y <= 40; ++y) QTest::mouseMove(handle, start - QPoint(0, y));
    QTest::mouseRelease(handle, Qt::LeftButton, {}, start - QPoint(0, 40));
    EXPECT_EQ(jsonOf(*desk.editor), "50");
    EXPECT_EQ(committed.count(), 0);
    desk.press(Qt::Key_Return);
    EXPECT_EQ(committed.count(), 1);
}

TEST(ValueEditor, OffersTheChoicesWithTheirSentences) {
    const Desk desk(knownAs(knownChoices(), 1));
    auto* const box = qobject_cast<QComboBox*>(desk.input());
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->currentText(), QStringLiteral("1 – a graph"));
    desk.press(Qt::Key_Up);
    EXPECT_EQ(jsonOf(*desk.editor), "0");
    desk.press(Qt::Key_Down);
    EXPECT_FALSE(desk.editor->isChanged());
    desk.press(Qt::Key_Down);
    EXPECT_EQ(jsonOf(*desk.editor), "2");
}

TEST(ValueEditor, KeepsAValueThatIsNoneOfTheChoices) {
    for (const PropertyListValue& value :
         {PropertyListValue(7), PropertyListValue("1"), PropertyListValue(true)}) {
        const Desk desk(knownAs(knownChoices(), value));
        EXPECT_TRUE(isSame(*desk.editor->value(), value)) << value;
        desk.press(Qt::Key_Home);
        EXPECT_EQ(jsonOf(*desk.editor), "0");
        auto* const box = qobject_cast<QComboBox*>(desk.input());
        box->setCurrentIndex(3);
        EXPECT_TRUE(isSame(*desk.editor->value(), value)) << value;
    }
}

TEST(ValueEditor, LetsAnotherValueThanTheChoicesBeTyped) {
    const Desk desk(knownAs(knownChoices(), 1));
    desk.press(Qt::Key_End);
    ASSERT_TRUE(WindowSupport::waitUntil(
        [&] { return qobject_cast<QLineEdit*>(desk.input()) != nullptr; }));
    EXPECT_TRUE(desk.input()->hasFocus());
    EXPECT_TRUE(isSame(*desk.editor->value(), 1));
    EXPECT_FALSE(desk.editor->isChanged());
    desk.type("7");
    EXPECT_EQ(jsonOf(*desk.editor), "7");
}

TEST(ValueEditor, IsNotChangedByTheWheelOfAMouse) {
    const Desk desk(knownAs(knownChoices(), 1));
    const QPointF middle(desk.input()->rect().center());
    QWheelEvent event(middle, desk.input()->mapToGlobal(middle), {}, QPoint(0, -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(desk.input(), &event);
    EXPECT_FALSE(desk.editor->isChanged());
}

TEST(ValueEditor, ChoosesBooleans) {
    const Desk desk(settingOf(true));
    desk.press(Qt::Key_Down);
    EXPECT_EQ(jsonOf(*desk.editor), "false");
    desk.press(Qt::Key_Up);
    EXPECT_FALSE(desk.editor->isChanged());
    const Desk unset(EditedSetting{nullptr, "A.B", nullptr, true});
    EXPECT_EQ(jsonOf(*unset.editor), "null");
    unset.press(Qt::Key_Down);
    EXPECT_EQ(jsonOf(*unset.editor), "true");
}

TEST(ValueEditor, ChangesTheKindOnlyWhenAPersonChoosesIt) {
    const Desk desk(settingOf(7));
    chooseKind(desk, "string");
    EXPECT_EQ(jsonOf(*desk.editor), "\"7\"");
    EXPECT_TRUE(desk.editor->isChanged());
    chooseKind(desk, "real");
    EXPECT_EQ(jsonOf(*desk.editor), "7.0");
    chooseKind(desk, "array");
    EXPECT_EQ(jsonOf(*desk.editor), "[7.0]");
    chooseKind(desk, "dictionary");
    EXPECT_EQ(jsonOf(*desk.editor), "{}");
    chooseKind(desk, "boolean");
    EXPECT_EQ(jsonOf(*desk.editor), "none");
    chooseKind(desk, "integer");
    desk.type("7");
    EXPECT_EQ(jsonOf(*desk.editor), "7");
}

TEST(ValueEditor, GivesTheValueItselfAfterAKindThatWasOnlyTried) {
    const PropertyListValue value = std::int64_t{9007199254740993};
    const Desk desk(settingOf(value));
    chooseKind(desk, "string");
    chooseKind(desk, "integer");
    EXPECT_FALSE(desk.editor->isChanged());
    EXPECT_TRUE(isSame(*desk.editor->value(), value));
}

TEST(ValueEditor, TakesFractionsWhereASettingOfRealsHoldsAnInteger) {
    const Desk desk(EditedSetting{nullptr, "A.B", 1, 0.5});
    EXPECT_TRUE(isSame(*desk.editor->value(), 1));
    desk.type("0.25");
    EXPECT_EQ(jsonOf(*desk.editor), "0.25");
}

TEST(ValueEditor, HoldsAValueThatIsSetInItsPlace) {
    const Desk desk(settingOf(7), Place::Form);
    desk.editor->setValue(1.0);
    EXPECT_EQ(jsonOf(*desk.editor), "1.0");
    EXPECT_EQ(desk.editor->kind(), Kind::Real);
    desk.editor->setValue(7);
    EXPECT_FALSE(desk.editor->isChanged());
}

TEST(ValueEditor, ShowsTheColourThatIsTypedAndNoneForOther) {
    const Desk desk(settingOf("1 0.321 0.341 1", "A.Color"));
    auto* const button = desk.part<SwatchButton>();
    const auto pixel = [&] {
        return WindowSupport::grab(*button).pixelColor(colorArea(button->swatchRect()).center());
    };
    EXPECT_EQ(pixel(), QColor(255, 82, 87));
    desk.type("#336699");
    EXPECT_EQ(pixel(), QColor(0x33, 0x66, 0x99));
    EXPECT_THAT(button->accessibleName().toStdString(), HasSubstr("#336699ff"));
    desk.type("blue");
    EXPECT_THAT(button->accessibleName().toStdString(), HasSubstr("no colour"));
}

TEST(ValueEditor, SaysThatAColourIsOutsideOfWhatAScreenShows) {
    const Desk desk(settingOf("0.2 0.4 2 1", "A.Color"), Place::Form);
    const auto isSaid = [&] {
        for (const QLabel* const label : desk.editor->findChildren<QLabel*>())
            if (label->isVisible() && label->text() == QLatin1String("outside of 0 to 1"))
                return true;
        return false;
    };
    EXPECT_TRUE(isSaid());
    desk.type("0.2 0.4 1 1");
    EXPECT_FALSE(isSaid());
}

TEST(ValueEditor, GoesThroughItsControlsByTab) {
    const Desk desk(settingOf("1 0 0 1", "A.Color"));
    desk.press(Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), desk.part<QToolButton>());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(QApplication::focusWidget(), desk.part<SwatchButton>());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_NE(desk.part<QColorDialog>(), nullptr);
}

TEST(ValueEditor, KeepsTheDigitsOfAColourThatTheColourDialogDoesNotChange) {
    const Desk desk(settingOf("1 0.321 2 1", "A.Color"));
    auto* const button = desk.part<SwatchButton>();
    QTest::mouseClick(button, Qt::LeftButton);
    auto* dialog = desk.part<QColorDialog>();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->currentColor(), QColor(255, 82, 255));
    dialog->accept();
    EXPECT_FALSE(desk.editor->isChanged());
    ASSERT_TRUE(WindowSupport::waitUntil([&] { return desk.part<QColorDialog>() == nullptr; }));
    QTest::mouseClick(button, Qt::LeftButton);
    dialog = desk.part<QColorDialog>();
    dialog->setCurrentColor(QColor(0, 82, 255, 51));
    dialog->accept();
    EXPECT_EQ(jsonOf(*desk.editor), "\"0 0.321 2 0.2\"");
}

TEST(ValueEditor, ShowsDataAsBase64OrHexadecimalWithItsSize) {
    const Desk desk(settingOf(NSData("ab")), Place::Form);
    auto* const forms = desk.part<QComboBox>();
    forms->setCurrentIndex(1);
    EXPECT_FALSE(desk.editor->isChanged());
    EXPECT_EQ(qobject_cast<QPlainTextEdit*>(desk.input())->toPlainText(), QStringLiteral("61 62"));
    desk.type("00 ff1");
    EXPECT_EQ(jsonOf(*desk.editor), "none");
    desk.type("00 fF 10");
    EXPECT_EQ(jsonOf(*desk.editor), R"({"$data":"AP8Q"})");
    forms->setCurrentIndex(0);
    EXPECT_EQ(qobject_cast<QPlainTextEdit*>(desk.input())->toPlainText(), QStringLiteral("AP8Q"));
    EXPECT_EQ(jsonOf(*desk.editor), R"({"$data":"AP8Q"})");
}

TEST(ValueEditor, EditsTextOfSeveralLinesWithTabsAndNoBreakSpaces) {
    const Desk desk(settingOf("a\nb\tc\xc2\xa0"
                              "d"),
                    Place::Form);
    QTest::keyClick(desk.input(), Qt::Key_End, Qt::ControlModifier);
    QTest::keyClick(desk.input(), Qt::Key_Return);
    QTest::keyClicks(desk.input(), QStringLiteral("e"));
    EXPECT_EQ(desk.editor->value()->stringView(),
              "a\nb\tc\xc2\xa0"
              "d\ne");
}

TEST(ValueEditor, EditsTextThatAFieldWouldChangeAsJSON) {
    const Desk desk(settingOf("a\r\nb"));
    EXPECT_EQ(desk.editor->text(), QStringLiteral("\"a\\r\\nb\""));
    desk.type("\"a\\rc\"");
    EXPECT_EQ(desk.editor->value()->stringView(), "a\rc");
    desk.type("plain");
    EXPECT_EQ(jsonOf(*desk.editor), "none");
}

TEST(ValueEditor, KeepsItsNumbersFromLeftToRight) {
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    const Desk desk(settingOf(7));
    EXPECT_EQ(desk.input()->layoutDirection(), Qt::LeftToRight);
    EXPECT_EQ(desk.editor->layoutDirection(), Qt::RightToLeft);
}

TEST(ValueEditor, LeavesTheShortcutsOfTheWindowAlone) {
    const Desk desk(settingOf(7));
    QAction escape;
    escape.setShortcut(Qt::Key_Escape);
    desk.editor->window()->addAction(&escape);
    const QSignalSpy triggered(&escape, &QAction::triggered);
    const QSignalSpy cancelled(desk.editor, &ValueEditor::cancelled);
    desk.press(Qt::Key_Escape);
    EXPECT_EQ(triggered.count(), 0);
    EXPECT_EQ(cancelled.count(), 1);
}

TEST(ValueEditor, SaysWhichValuesNeedADialog) {
    for (const PropertyListValue& value :
         {PropertyListValue(1), PropertyListValue("a"), PropertyListValue(NSArray())})
        EXPECT_FALSE(needsDialog(settingOf(value))) << value;
    for (const PropertyListValue& value :
         {PropertyListValue("a\nb"), PropertyListValue(NSArray{1}),
          PropertyListValue(NSDictionary{{"a", 1}}), PropertyListValue(std::string(1000, 'x'))})
        EXPECT_TRUE(needsDialog(settingOf(value))) << value;
}

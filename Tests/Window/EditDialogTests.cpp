// SPDX-License-Identifier: MIT
// The forms for one setting, for several, and for a new one.
#include "Editors/EditDialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include "Editors/EditorMessage.h"
#include "Editors/NewSettingDialog.h"
#include "Settings/KnownLists.h"
#include "Text/JSON.h"
#include "Window/WindowSupport.h"

using namespace QRVWindow;

using testing::HasSubstr;

namespace {

EditedSetting settingOf(const std::string& keyPath, const PropertyListValue& value,
                        const PropertyListValue& byDefault = nullptr) {
    static const Tool::KnownLists lists = Tool::KnownLists::read();
    return {.known = lists.at(keyPath), .keyPath = keyPath, .value = value, .byDefault = byDefault};
}

std::string jsonOf(const std::optional<PropertyListValue>& value) {
    return value ? Tool::jsonText(*value) : "none";
}

QPushButton* buttonOf(const QDialog& dialog, const QString& text) {
    for (QPushButton* const button : dialog.findChildren<QPushButton*>())
        if (button->text().remove(QLatin1Char('&')) == text) return button;
    return nullptr;
}

void press(const QDialog& dialog, QDialogButtonBox::StandardButton button) {
    QTest::mouseClick(dialog.findChild<QDialogButtonBox*>()->button(button), Qt::LeftButton);
}

std::string commandIn(const QDialog& dialog) {
    for (const QPlainTextEdit* const lines : dialog.findChildren<QPlainTextEdit*>())
        if (lines->accessibleName() == QLatin1String("Command that sets the same"))
            return lines->toPlainText().toStdString();
    return "none";
}

std::string textsIn(const QDialog& dialog) {
    std::string texts;
    for (const QLabel* const label : dialog.findChildren<QLabel*>())
        if (label->isVisible()) texts += label->text().toStdString() + "\n";
    return texts;
}

void type(QWidget* input, const char* text) {
    if (auto* const line = qobject_cast<QLineEdit*>(input)) line->selectAll();
    QTest::keyClicks(input, QString::fromUtf8(text));
}

/// Key paths below "A" can be typed; "Taken" has a value.
class NewSettings : public testing::Test {
  protected:
    NewSettings()
        : dialog({.settingAt =
                      [](const std::string& keyPath) {
                          return settingOf(keyPath, keyPath == "Taken" ? PropertyListValue(40)
                                                                       : PropertyListValue());
                      },
                  .obstacleAt =
                      [](const std::string& keyPath) {
                          return keyPath.starts_with("Taken.") ? QStringLiteral("Taken has a value")
                                                               : QString();
                      },
                  .keyPaths = {}}) {
        WindowSupport::show(dialog);
    }
    [[nodiscard]] bool isAccepted() const { return dialog.result() == QDialog::Accepted; }
    NewSettingDialog dialog;
};

}  // namespace

TEST(EditDialog, ShowsWhatIsKnownOfTheSetting) {
    EditDialog dialog({.settings = {settingOf("CPU.Menubar.Enabled", true, false)},
                       .profile = QStringLiteral("travel")});
    WindowSupport::show(dialog);
    const std::string texts = textsIn(dialog);
    for (const char* const text : {"CPU.Menubar.Enabled", "boolean", "false", "travel"})
        EXPECT_THAT(texts, HasSubstr(text));
    EXPECT_THAT(texts, HasSubstr(dialog.editor() != nullptr
                                     ? settingOf("CPU.Menubar.Enabled", true).known->sentence
                                     : "none"));
    EXPECT_THAT(commandIn(dialog), HasSubstr("CPU.Menubar.Enabled"));
    EXPECT_THAT(commandIn(dialog), HasSubstr("travel"));
}

TEST(EditDialog, GivesNothingWhenNothingIsChanged) {
    for (const auto button : {QDialogButtonBox::Ok, QDialogButtonBox::Cancel}) {
        EditDialog dialog({.settings = {settingOf("A.B", 1234567)}, .profile = {}});
        WindowSupport::show(dialog);
        press(dialog, button);
        EXPECT_FALSE(dialog.isVisible());
        EXPECT_EQ(jsonOf(dialog.value()), "none");
    }
}

TEST(EditDialog, GivesWhatIsTypedOnEnter) {
    EditDialog dialog({.settings = {settingOf("A.B", 1)}, .profile = {}});
    WindowSupport::show(dialog);
    type(dialog.editor()->focusProxy(), "9007199254740993");
    EXPECT_TRUE(WindowSupport::waitUntil(
        [&] { return commandIn(dialog).find("9007199254740993") != std::string::npos; }));
    QTest::keyClick(dialog.editor()->focusProxy(), Qt::Key_Return);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(jsonOf(dialog.value()), "9007199254740993");
}

TEST(EditDialog, StaysOpenWithAFaultAndClosesOnEscape) {
    EditDialog dialog({.settings = {settingOf("A.B", NSArray{1})}, .profile = {}});
    WindowSupport::show(dialog);
    QWidget* const input = dialog.editor()->focusProxy();
    QTest::keyClicks(input, QStringLiteral("x"));
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_TRUE(input->hasFocus());
    EXPECT_THAT(textsIn(dialog), HasSubstr("line 1, column 1"));
    QTest::keyClick(input, Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
}

TEST(EditDialog, UsesTheDefault) {
    EditDialog dialog({.settings = {settingOf("A.B", 7, 40)}, .profile = {}});
    WindowSupport::show(dialog);
    QTest::mouseClick(buttonOf(dialog, QStringLiteral("Use the default")), Qt::LeftButton);
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_EQ(jsonOf(dialog.value()), "40");
}

TEST(EditDialog, CopiesTheCommandOfWhatIsTyped) {
    EditDialog dialog({.settings = {settingOf("A.B", "text")}, .profile = {}});
    WindowSupport::show(dialog);
    type(dialog.editor()->focusProxy(), "it's 007");
    QTest::mouseClick(buttonOf(dialog, QStringLiteral("Copy")), Qt::LeftButton);
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), commandIn(dialog));
    EXPECT_THAT(commandIn(dialog), HasSubstr("007"));
}

TEST(EditDialog, SetsSeveralSettingsOfOneKind) {
    EditDialog dialog({.settings = {settingOf("A.B", 1), settingOf("A.C", 2)}, .profile = {}});
    WindowSupport::show(dialog);
    EXPECT_THAT(textsIn(dialog), HasSubstr("2 settings get this value"));
    EXPECT_THAT(textsIn(dialog), HasSubstr("different values"));
    EXPECT_EQ(jsonOf(dialog.value()), "none");
    EXPECT_EQ(dialog.editor()->kind(), PropertyListValue::Kind::Integer);
    type(dialog.editor()->focusProxy(), "5");
    EXPECT_TRUE(WindowSupport::waitUntil([&] { return !commandIn(dialog).empty(); }));
    EXPECT_THAT(commandIn(dialog), HasSubstr("A.B"));
    EXPECT_THAT(commandIn(dialog), HasSubstr("A.C"));
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_EQ(jsonOf(dialog.value()), "5");
}

TEST(EditDialog, SaysWhySettingsOfDifferentKindsHaveNoCommonForm) {
    EXPECT_EQ(EditDialog::objectionToTogether({settingOf("A.B", 1), settingOf("A.C", 2)}),
              QString());
    const std::string why =
        EditDialog::objectionToTogether({settingOf("A.B", 1), settingOf("A.C", "2")}).toStdString();
    for (const char* const text : {"A.B", "integer", "A.C", "string"})
        EXPECT_THAT(why, HasSubstr(text));
}

TEST(EditDialog, JudgesTheValueForEachSetting) {
    EditDialog dialog({.settings = {settingOf("A.B", "a"),
                                    settingOf("Network.Menubar.Mode.Status.NoIP.Color", "b")},
                       .profile = {}});
    WindowSupport::show(dialog);
    if (!EditDialog::objectionToTogether({settingOf("A.B", "a")}).isEmpty()) GTEST_FAIL();
    dialog.editor()->setValue("no colour");
    EXPECT_THAT(dialog.editor()->objection().toStdString(), HasSubstr("NoIP.Color is a colour"));
}

TEST(EditDialog, ReachesEveryControlByTabAndNamesIt) {
    EditDialog dialog({.settings = {settingOf("A.B", 7, 40)}, .profile = {}});
    WindowSupport::show(dialog);
    dialog.activateWindow();
    QSet<QWidget*> reached;
    for (int count = 0; count < 30; ++count) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        reached.insert(QApplication::focusWidget());
    }
    EXPECT_TRUE(reached.contains(dialog.editor()->focusProxy()));
    for (const QPushButton* const button : dialog.findChildren<QPushButton*>())
        if (button->isVisible()) {
            EXPECT_TRUE(reached.contains(const_cast<QPushButton*>(button)));
        }
}

TEST_F(NewSettings, GiveAKeyPathAndAValueOfTheKindThatIsTyped) {
    dialog.setKeyPath("A.New");
    type(dialog.editor()->focusProxy(), "12");
    QTest::keyClick(dialog.editor()->focusProxy(), Qt::Key_Return);
    EXPECT_TRUE(isAccepted());
    EXPECT_EQ(dialog.keyPath(), "A.New");
    EXPECT_EQ(jsonOf(dialog.value()), "12");
}

TEST_F(NewSettings, AskForBothKeyPathAndValue) {
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_THAT(dialog.keyPathMessage().toStdString(), HasSubstr("key path is missing"));
    dialog.setKeyPath("A.New");
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_THAT(dialog.keyPathMessage().toStdString(), HasSubstr("value is missing"));
    EXPECT_TRUE(dialog.isVisible());
}

TEST_F(NewSettings, AreAskedAboutATypoAndStoredWhenAPersonSaysSo) {
    dialog.setKeyPath("CPU.Menubar.Enabld");
    EXPECT_THAT(dialog.keyPathMessage().toStdString(),
                HasSubstr("did you mean CPU.Menubar.Enabled?"));
    type(dialog.editor()->focusProxy(), "true");
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_TRUE(dialog.isVisible());
    auto* const button = dialog.findChild<EditorMessage*>()->findChild<QPushButton*>();
    ASSERT_TRUE(button->isVisible());
    QTest::mouseClick(button, Qt::LeftButton);
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_TRUE(isAccepted());
    EXPECT_EQ(jsonOf(dialog.value()), "true");
}

TEST_F(NewSettings, AreEditedAsWhatIsKnownOfThem) {
    dialog.setKeyPath("CPU.Menubar.Enabled");
    EXPECT_EQ(dialog.editor()->kind(), PropertyListValue::Kind::Boolean);
    dialog.setKeyPath("Taken");
    EXPECT_EQ(jsonOf(dialog.value()), "40");
}

TEST_F(NewSettings, KeepAValueThatIsTypedBeforeTheKeyPath) {
    type(dialog.editor()->focusProxy(), "half");
    dialog.setKeyPath("A");
    dialog.setKeyPath("A.New");
    EXPECT_EQ(jsonOf(dialog.value()), "\"half\"");
}

TEST_F(NewSettings, AreNotStoredBelowAValue) {
    dialog.setKeyPath("Taken.Below");
    type(dialog.editor()->focusProxy(), "1");
    press(dialog, QDialogButtonBox::Ok);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(dialog.keyPathMessage(), QStringLiteral("! Taken has a value"));
}

TEST_F(NewSettings, CloseOnEscape) {
    dialog.setKeyPath("A.New");
    QTest::keyClick(dialog.editor()->focusProxy(), Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_FALSE(isAccepted());
}

// SPDX-License-Identifier: MIT
// The forms on a session with real files: what becomes of what is typed in them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>

#include "Editors/EditDialog.h"
#include "Editors/NewSettingDialog.h"
#include "Session/Session.h"
#include "Text/JSON.h"
#include "Window/PictureRules.h"
#include "Window/WindowSupport.h"

using namespace QRVWindow;

using testing::HasSubstr;
using WindowSupport::setByTool;
using WindowSupport::waitUntil;

namespace {

class EditsInDialogs : public testing::Test {
  protected:
    void start() {
        session.start();
        ASSERT_TRUE(waitUntil([this] { return !session.table().rows().empty(); }));
        WindowSupport::show(window);
    }
    EditDialog& open(const std::vector<std::string>& keyPaths) {
        EditDialog* const dialog = editInDialog(session, keyPaths, &window);
        EXPECT_NE(dialog, nullptr);
        return *dialog;
    }
    static void type(const ValueEditor& editor, const char* text) {
        if (auto* const line = qobject_cast<QLineEdit*>(editor.focusProxy())) line->selectAll();
        QTest::keyClicks(editor.focusProxy(), QString::fromUtf8(text));
    }
    static void pressOK(const QDialog& dialog) {
        QTest::mouseClick(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok),
                          Qt::LeftButton);
    }
    [[nodiscard]] std::string pendingAt(const std::string& keyPath) const {
        const Tool::PendingEdit* const edit = session.pendingAt(keyPath);
        if (edit == nullptr) return "none";
        return edit->value.isNull() ? "null" : Tool::jsonText(edit->value);
    }

    Session session;
    QWidget window;
};

}  // namespace

TEST_F(EditsInDialogs, ChangeNothingByALookAtEachKindOfValue) {
    const std::vector<std::string> values{
        "true",
        "9007199254740993",
        "18446744073709551615",
        "-9223372036854775808",
        "1234567",
        "0.1",
        "1e300",
        "-0.0",
        R"({"$real":"nan"})",
        R"("1 0.321 0.341 1")",
        R"("0.2 0.4 2 1")",
        R"({"$date":"2020-01-01T00:00:00Z"})",
        R"("true")",
        R"("007")",
        R"("a\n\tb")",
        R"("")",
        R"({"$data":"AQI="})",
        R"([1,1.0,{"$date":"2020-01-01T00:00:00Z"},{"$data":"AQI="}])"};
    for (std::size_t index = 0; index < values.size(); ++index)
        WindowSupport::runTool(
            {"set", "--type", "json", "Own.V" + std::to_string(index) + ".Color", values[index]});
    start();
    for (std::size_t index = 0; index < values.size(); ++index) {
        const std::string keyPath = "Own.V" + std::to_string(index) + ".Color";
        ASSERT_NE(session.table().at(keyPath), nullptr);
        EditDialog& dialog = open({keyPath});
        pressOK(dialog);
        EXPECT_FALSE(dialog.isVisible()) << values[index];
    }
    EXPECT_TRUE(session.pending().edits().empty());
    EXPECT_EQ(session.pending().undoCount(), 0U);
}

TEST_F(EditsInDialogs, ArePendingOnceTheFormIsAccepted) {
    setByTool("Own.Number", "1");
    start();
    EditDialog& dialog = open({"Own.Number"});
    type(*dialog.editor(), "9007199254740993");
    EXPECT_EQ(pendingAt("Own.Number"), "none");
    QTest::keyClick(dialog.editor()->focusProxy(), Qt::Key_Return);
    EXPECT_EQ(pendingAt("Own.Number"), "9007199254740993");
    EXPECT_EQ(session.pending().undoCount(), 1U);
    EXPECT_THAT(session.pending().undoName(), HasSubstr("Own.Number"));
}

TEST_F(EditsInDialogs, AreOfTheProfileThatIsShown) {
    start();
    session.setProfile(QStringLiteral("travel"));
    EditDialog& dialog = open({"CPU.Menubar.Enabled"});
    QTest::keyClick(dialog.editor()->focusProxy(), Qt::Key_Down);
    QTest::keyClick(dialog.editor()->focusProxy(), Qt::Key_Up);
    const bool isOn = session.valueWithEdits("CPU.Menubar.Enabled").boolValue();
    QTest::keyClick(dialog.editor()->focusProxy(), isOn ? Qt::Key_Down : Qt::Key_Up);
    pressOK(dialog);
    ASSERT_EQ(session.pending().edits().size(), 1U);
    EXPECT_EQ(session.pending().edits().begin()->first.profile, "travel");
    EXPECT_EQ(session.valueWithEdits("CPU.Menubar.Enabled").boolValue(), !isOn);
}

TEST_F(EditsInDialogs, StoreNothingForTheDefault) {
    setByTool("UpdateFrequency", "2");
    start();
    EditDialog& dialog = open({"UpdateFrequency"});
    for (QPushButton* const button : dialog.findChildren<QPushButton*>())
        if (button->text().contains(QLatin1String("default")))
            QTest::mouseClick(button, Qt::LeftButton);
    pressOK(dialog);
    EXPECT_EQ(pendingAt("UpdateFrequency"), "null");
}

TEST_F(EditsInDialogs, OfSeveralSettingsAreOneStep) {
    setByTool("Own.One", "1");
    setByTool("Own.Two", "2");
    start();
    EditDialog& dialog = open({"Own.One", "Own.Two"});
    type(*dialog.editor(), "3");
    pressOK(dialog);
    EXPECT_EQ(pendingAt("Own.One"), "3");
    EXPECT_EQ(pendingAt("Own.Two"), "3");
    EXPECT_EQ(session.pending().undoCount(), 1U);
}

TEST_F(EditsInDialogs, OfDifferentKindsAreRefusedWithTheReason) {
    setByTool("Own.One", "1");
    setByTool("Own.Two", "two");
    start();
    EXPECT_EQ(editInDialog(session, {"Own.One", "Own.Two"}, &window), nullptr);
    const auto* const box = window.findChild<QMessageBox*>();
    ASSERT_NE(box, nullptr);
    EXPECT_THAT(box->text().toStdString(), HasSubstr("different kinds"));
}

TEST_F(EditsInDialogs, TellOfAChangeOfAnotherProcessAndKeepWhatIsTyped) {
    setByTool("Own.Number", "1");
    start();
    EditDialog& dialog = open({"Own.Number"});
    type(*dialog.editor(), "12");
    setByTool("Own.Number", "77");
    const auto isTold = [&dialog] {
        for (const QLabel* const label : dialog.findChildren<QLabel*>())
            if (label->isVisible() && label->text().contains(QLatin1String("77"))) return true;
        return false;
    };
    EXPECT_TRUE(waitUntil(isTold));
    EXPECT_EQ(dialog.editor()->text(), QStringLiteral("12"));
    EXPECT_TRUE(dialog.editor()->focusProxy()->hasFocus());
}

TEST_F(EditsInDialogs, AddASetting) {
    start();
    NewSettingDialog* const dialog = newSettingInDialog(session, &window);
    dialog->setKeyPath("Own.New");
    type(*dialog->editor(), "12");
    pressOK(*dialog);
    EXPECT_EQ(pendingAt("Own.New"), "12");
    EXPECT_NE(session.table().at("Own.New"), nullptr);
}

TEST_F(EditsInDialogs, AddNothingBelowAValue) {
    setByTool("Own.Number", "1");
    start();
    NewSettingDialog* const dialog = newSettingInDialog(session, &window);
    dialog->setKeyPath("Own.Number.Below");
    type(*dialog->editor(), "12");
    pressOK(*dialog);
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_THAT(dialog->keyPathMessage().toStdString(), HasSubstr("nothing can be below it"));
    EXPECT_TRUE(session.pending().edits().empty());
}

TEST_F(EditsInDialogs, AreNotCutOffAtTwiceTheFontSize) {
    setByTool("Own.List", "[1, 2]");
    start();
    QFont font = QApplication::font();
    font.setPointSize(2 * font.pointSize());
    QApplication::setFont(font);
    EditDialog& dialog = open({"Own.List"});
    QTest::keyClicks(dialog.editor()->focusProxy(), QStringLiteral("x"));
    dialog.setNews(QStringLiteral("The value has changed in the file meanwhile. ").repeated(4));
    QTest::qWait(0);
    WindowSupport::grab(dialog, QStringLiteral("edit-large"));
    EXPECT_EQ(WindowSupport::clippedTexts(dialog).join(QLatin1Char('\n')).toStdString(), "");
    for (const QPlainTextEdit* const lines : dialog.findChildren<QPlainTextEdit*>())
        EXPECT_EQ(QFontInfo(lines->font()).pixelSize(), QFontInfo(font).pixelSize());
    NewSettingDialog* const other = newSettingInDialog(session, &window);
    other->setKeyPath("CPU.Menubar.Enabld");
    QTest::qWait(0);
    WindowSupport::grab(*other, QStringLiteral("new-large"));
    EXPECT_EQ(WindowSupport::clippedTexts(*other).join(QLatin1Char('\n')).toStdString(), "");
}

// SPDX-License-Identifier: MIT
// The details of a setting: what `qrvsettings explain` says of it, the history, and the command.
#include "Panes/DetailsPane.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QPushButton>
#include <QScrollBar>
#include <QTextEdit>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "Edits/EditTable.h"
#include "Look/Theme.h"
#include "Tool/ToolSupport.h"
#include "Window/PictureRules.h"
#include "Window/WindowSupport.h"

namespace {

using nlohmann::json;
using QRVWindow::DetailsPane;
using QRVWindow::Session;
using QRVWindow::SettingFact;
using WindowSupport::runTool;
using WindowSupport::setByTool;
using WindowSupport::waitUntil;
using About = SettingFact::About;

constexpr const char* enabled = "CPU.Menubar.Enabled";
constexpr const char* color = "Network.Menubar.Mode.Status.NoIP.Color";

std::string siteList() {
    return std::string(std::getenv("XDG_CONFIG_DIRS")) + "/Preferences/" +
           ToolSupport::settingsFile().filename().string();
}

class DetailsPaneTests : public testing::Test {
  protected:
    void start(const QString& profile = {}) {
        session_.setProfile(profile);
        session_.start();
        ASSERT_TRUE(waitUntil(
            [&] { return session_.fileState().kind != QRVWindow::FileState::Kind::NotRead; }));
        pane_.resize(500, 700);
        WindowSupport::show(pane_);
    }
    [[nodiscard]] QString text(About about) const { return pane_.textAbout(about); }
    [[nodiscard]] std::string nameOf(const std::string& keyPath, About about) const {
        for (const SettingFact& fact : QRVWindow::factsOfSetting(session_, keyPath))
            if (fact.about == about) return fact.name.toStdString();
        return {};
    }
    [[nodiscard]] QPushButton* button(const QString& text, bool isShown = true) {
        for (auto* const one : pane_.findChildren<QPushButton*>())
            if ((one->text() == text || one->accessibleName() == text) &&
                one->isVisible() == isShown)
                return one;
        ADD_FAILURE() << "there is no " << text.toStdString();
        return nullptr;
    }

    /// The value that is shown, and its kind, are those of `explain`.
    void expectValue(const json& explanation, const std::string& keyPath, About about,
                     const char* name, const char* kindName) {
        const json& value = explanation[name];
        if (value.is_null()) {
            EXPECT_EQ(text(about).toStdString(), "not set") << keyPath << " " << name;
            return;
        }
        EXPECT_EQ(json::parse(text(about).toStdString()), value) << keyPath << " " << name;
        std::string kind = explanation[kindName];
        if (nameOf(keyPath, about).ends_with("(colour)")) {
            EXPECT_TRUE(keyPath.ends_with("Color"));
            kind = "colour";
        }
        EXPECT_TRUE(nameOf(keyPath, about).ends_with("(" + kind + ")"))
            << nameOf(keyPath, about) << ", " << kind;
    }
    void expectAsExplained(const std::string& keyPath, const std::string& profile = "");

    Session session_;
    DetailsPane pane_{session_};
};

void DetailsPaneTests::expectAsExplained(const std::string& keyPath, const std::string& profile) {
    std::vector<std::string> arguments{"explain", "--json", keyPath};
    if (!profile.empty()) arguments.insert(arguments.end(), {"--profile", profile});
    const json explanation = json::parse(ToolSupport::run(arguments).output);
    pane_.setKeyPath(keyPath);
    expectValue(explanation, keyPath, About::Effective, "effective", "effectiveKind");
    expectValue(explanation, keyPath, About::Stored, "stored", "storedKind");
    expectValue(explanation, keyPath, About::Default, "default", "defaultKind");
    if (!text(About::InProfile).isEmpty())
        expectValue(explanation, keyPath, About::InProfile, "profileValue", "profileKind");
    const std::map<std::string, QString> layers{
        {"none", QStringLiteral("nothing")},
        {"default", QStringLiteral("the built-in")},
        {"site", QStringLiteral("the ")},
        {"stored", QStringLiteral("the settings file")},
        {"profile", QStringLiteral("the profile ")},
    };
    EXPECT_TRUE(text(About::Layer).startsWith(layers.at(explanation["layer"])))
        << keyPath << ": " << text(About::Layer).toStdString();
    const auto orEmpty = [&explanation](const char* name) {
        return explanation[name].is_null() ? std::string() : std::string(explanation[name]);
    };
    EXPECT_EQ(text(About::LockedBy).toStdString(), orEmpty("lockFile"));
    EXPECT_EQ(text(About::SiteFile).toStdString(), orEmpty("siteFile"));
    EXPECT_EQ(text(About::Site).isEmpty(), explanation["site"].is_null());
    EXPECT_EQ(!text(About::KindsDiffer).isEmpty(), explanation["kindDiffers"] == json(true));
    EXPECT_EQ(text(About::Scope).startsWith(QStringLiteral("of each profile")),
              explanation["scope"] == "profile");
}

}  // namespace

TEST_F(DetailsPaneTests, SaysWhatExplainSays) {
    ToolSupport::writeFile(
        siteList(), ToolSupport::propertyList("<key>UpdateFrequency</key><integer>4</integer>"
                                              "<key>Memory</key><dict><key>Menubar</key><dict>"
                                              "<key>Enabled</key><false/></dict></dict>"));
    ToolSupport::writeFile(siteList() + ".locks", "Memory.Menubar.Enabled\n");
    runTool({"set", enabled, "yes", "--any-kind"});
    setByTool(color, "1 0.5 0 1");
    setByTool("Unknown.Setting", "9007199254740993");
    runTool({"set", "CPU.Menubar.Mode.HistoryGraph.Width", "60", "--profile", "travel", "--new"});
    start();
    for (const char* const keyPath :
         {enabled, color, "Unknown.Setting", "UpdateFrequency", "Memory.Menubar.Enabled",
          "CPU.Menubar.Mode.HistoryGraph.Width", "Device.Device", "Nothing.At.All"})
        expectAsExplained(keyPath);
}

TEST_F(DetailsPaneTests, SaysWhatExplainSaysOfAProfile) {
    setByTool(enabled, "false");
    runTool({"set", enabled, "true", "--profile", "travel", "--new"});
    runTool({"set", "CPU.Menubar.Mode.HistoryGraph.Width", "60", "--profile", "travel"});
    start(QStringLiteral("travel"));
    for (const char* const keyPath : {enabled, "CPU.Menubar.Mode.HistoryGraph.Width", color})
        expectAsExplained(keyPath, "travel");
    EXPECT_TRUE(text(About::Layer).startsWith(QStringLiteral("the built-in")));
}

TEST_F(DetailsPaneTests, FollowsTheFileAndKeepsWhatIsSelected) {
    setByTool("UpdateFrequency", "2");
    start();
    pane_.setKeyPath("UpdateFrequency");
    ASSERT_EQ(text(About::Stored), QStringLiteral("2"));
    QTextEdit* layer = nullptr;
    for (auto* const one : pane_.findChildren<QTextEdit*>())
        if (one->accessibleName() == QStringLiteral("Answered by")) layer = one;
    ASSERT_NE(layer, nullptr);
    layer->selectAll();
    setByTool("UpdateFrequency", "3");
    ASSERT_TRUE(waitUntil([&] { return text(About::Stored) == QStringLiteral("3"); }));
    EXPECT_EQ(layer->textCursor().selectedText(), QStringLiteral("the settings file"));
    EXPECT_TRUE(text(About::Marks).contains(QStringLiteral("changed a moment ago")));
}

TEST_F(DetailsPaneTests, ShowsTheLastChangesAndTakesThemBack) {
    setByTool("UpdateFrequency", "2");
    setByTool("UpdateFrequency", "3");
    start();
    pane_.setKeyPath("UpdateFrequency");
    ASSERT_TRUE(waitUntil([&] { return pane_.historyLines().size() == 2; }));
    EXPECT_TRUE(pane_.historyLines().front().contains(QStringLiteral("qrvsettings[")))
        << pane_.historyLines().front().toStdString();
    Tool::SettingPlace place;
    PropertyListValue value = "untouched";
    QObject::connect(&pane_, &DetailsPane::takeBackWanted, &pane_,
                     [&](const Tool::SettingPlace& thePlace, const PropertyListValue& theValue) {
                         place = thePlace;
                         value = theValue;
                     });
    button(QStringLiteral("Take back"))->click();
    EXPECT_EQ(place, (Tool::SettingPlace{"UpdateFrequency", ""}));
    EXPECT_EQ(value, PropertyListValue(2));

    setByTool("UpdateFrequency", "4");
    EXPECT_TRUE(waitUntil([&] { return pane_.historyLines().size() == 3; }))
        << pane_.historyLines().join(QLatin1Char('\n')).toStdString();
    pane_.setKeyPath(enabled);
    EXPECT_TRUE(waitUntil([&] {
        return pane_.historyLines() ==
               QStringList{QStringLiteral("The history has no change of this setting.")};
    }));
}

TEST_F(DetailsPaneTests, SaysWhyThereIsNoHistory) {
    setenv("QRVSETTINGS_HISTORY", "0", 1);
    start();
    pane_.setKeyPath(enabled);
    EXPECT_TRUE(waitUntil([&] {
        return pane_.historyLines().join(QString()).contains(
            QStringLiteral("QRVSETTINGS_HISTORY=0"));
    }));
}

TEST_F(DetailsPaneTests, ShowsThePendingValueAndTheCommandThatSetsIt) {
    start();
    pane_.setKeyPath("UpdateFrequency");
    session_.edit("UpdateFrequency", 7);
    EXPECT_EQ(text(About::Pending), QStringLiteral("7"));
    EXPECT_EQ(text(About::Stored), QStringLiteral("not set"));
    EXPECT_TRUE(text(About::Marks).contains(QStringLiteral("pending")));
    button(QStringLiteral("Copy the command"))->click();
    const QString command = QApplication::clipboard()->text();
    EXPECT_EQ(command, pane_.command());
    ASSERT_EQ(ToolSupport::runShell(command.toStdString()).exitCode, 0) << command.toStdString();
    EXPECT_EQ(runTool({"get", "UpdateFrequency"}), "7\n");
    button(QStringLiteral("Copy the key path"))->click();
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("UpdateFrequency"));
}

TEST_F(DetailsPaneTests, ALevelCountsItsSettingsAndOffersActions) {
    setByTool(enabled, "false");
    start();
    pane_.setKeyPath("CPU.Menubar");
    const QStringList below = [&] {
        QStringList texts;
        for (const std::string& one : QRVWindow::keyPathsBelow(session_, "CPU.Menubar"))
            texts.append(QString::fromStdString(one));
        return texts;
    }();
    ASSERT_GT(below.size(), 1);
    EXPECT_EQ(text(About::Count), QString::number(below.size()));
    EXPECT_EQ(text(About::Modified), QStringLiteral("1"));
    EXPECT_EQ(text(About::CommonValue), QStringLiteral("various"));
    EXPECT_EQ(pane_.command(), QString());
    QStringList reset;
    QObject::connect(&pane_, &DetailsPane::resetWanted, &pane_,
                     [&](const QStringList& keyPaths) { reset = keyPaths; });
    button(QStringLiteral("Back to defaults"))->click();
    EXPECT_EQ(reset, below);
}

TEST_F(DetailsPaneTests, SeveralSettingsHaveACommonValueOrVarious) {
    setByTool("A.X", "true");
    setByTool("A.Y", "true");
    setByTool("A.Z", "1");
    start();
    pane_.setKeyPaths({"A.X", "A.Y"});
    EXPECT_EQ(text(About::Count), QStringLiteral("2"));
    EXPECT_EQ(text(About::CommonValue), QStringLiteral("true"));
    pane_.setKeyPaths({"A.X", "A.Z"});
    EXPECT_EQ(text(About::CommonValue), QStringLiteral("various"));
}

TEST_F(DetailsPaneTests, EachTextHasANameAndTakesTheFocusInTheOrderOfReading) {
    setByTool(color, "1 0.5 0 0.5");
    start();
    bool isHistoryShown = false;
    QObject::connect(&pane_, &DetailsPane::historyShown, &pane_, [&] { isHistoryShown = true; });
    pane_.setKeyPath(color);
    ASSERT_TRUE(waitUntil([&] { return isHistoryShown; }));
    QList<QTextEdit*> texts;
    for (auto* const one : pane_.findChildren<QTextEdit*>())
        if (one->isVisible()) texts.append(one);
    for (QTextEdit* const one : texts) {
        EXPECT_FALSE(one->accessibleName().isEmpty()) << one->toPlainText().toStdString();
        EXPECT_EQ(one->focusPolicy(), Qt::StrongFocus);
        EXPECT_TRUE(one->textInteractionFlags() & Qt::TextSelectableByKeyboard);
    }
    int lastTop = -1;
    QWidget* at = &pane_;
    for (int steps = 0; steps < 200; ++steps) {
        at = at->nextInFocusChain();
        if (at == &pane_) break;
        if (!texts.contains(qobject_cast<QTextEdit*>(at))) continue;
        const int top = at->mapTo(pane_.widget(), QPoint(0, 0)).y();
        EXPECT_GE(top, lastTop) << at->accessibleName().toStdString();
        lastTop = top;
    }
    EXPECT_GE(lastTop, 0);
}

TEST_F(DetailsPaneTests, CanBeReadInLargeFontsInTheDarkAndFromRightToLeft) {
    runTool({"set", enabled, "yes", "--any-kind"});
    setByTool(color, "1 0.5 0 0.5");
    start();
    for (const char* const keyPath : {enabled, color, "CPU.Menubar"})
        for (const bool isDark : {false, true})
            for (const int points : {10, 20}) {
                QApplication::setPalette(isDark ? QRVWindow::Theme::darkPalette()
                                                : QRVWindow::Theme::lightPalette());
                QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), points));
                pane_.setLayoutDirection(isDark ? Qt::RightToLeft : Qt::LeftToRight);
                pane_.setKeyPath(keyPath);
                session_.edit(keyPath, "no");
                WindowSupport::spin(std::chrono::milliseconds(150));
                const QImage image = WindowSupport::grab(
                    pane_, QStringLiteral("details-%1-%2-%3")
                               .arg(QString::fromUtf8(keyPath).section(QLatin1Char('.'), -1))
                               .arg(isDark)
                               .arg(points));
                EXPECT_EQ(WindowSupport::clippedTexts(pane_).join(QLatin1Char('\n')).toStdString(),
                          "");
                EXPECT_EQ(pane_.horizontalScrollBar()->maximum(), 0) << points;
                for (auto* const text : pane_.findChildren<QTextEdit*>()) {
                    if (!text->isVisible()) continue;
                    EXPECT_GE(text->height(), text->document()->size().height());
                }
            }
}

TEST_F(DetailsPaneTests, ChoosingAnotherSettingIsAsQuickAsPaintingIt) {
    setByTool(enabled, "false");
    start();
    std::vector<std::string> keyPaths;
    for (const Tool::SettingRow& row : session_.table().rows()) keyPaths.push_back(row.keyPath);
    ASSERT_GT(keyPaths.size(), 20U);
    pane_.setKeyPath(keyPaths.front());
    QElapsedTimer timer;
    qint64 choosing = 0;
    qint64 painting = 0;
    for (const std::string& keyPath : keyPaths) {
        timer.start();
        pane_.setKeyPath(keyPath);
        choosing += timer.nsecsElapsed();
        timer.start();
        WindowSupport::grab(pane_);
        painting += timer.nsecsElapsed();
    }
    const auto microseconds = [&](qint64 all) {
        return static_cast<int>(all / 1000 / static_cast<qint64>(keyPaths.size()));
    };
    RecordProperty("choosingMicroseconds", microseconds(choosing));
    RecordProperty("paintingMicroseconds", microseconds(painting));
    EXPECT_LT(choosing, 5 * painting) << microseconds(choosing) << ", " << microseconds(painting);
}

TEST(PlaceOfStored, IsTheOneThatHasThisStoredKeyPath) {
    for (const Tool::SettingPlace& place :
         {Tool::SettingPlace{"A.B", ""}, Tool::SettingPlace{"A.B", "travel"},
          Tool::SettingPlace{"Settings.X", "default"}, Tool::SettingPlace{"X", "a b"}})
        EXPECT_EQ(Tool::placeOfStored(place.storedKeyPath()), place) << place.storedKeyPath();
}

// SPDX-License-Identifier: MIT
// The lists of settings that applications install: where they are found, what they add, and how
// little a wrong one harms.
#include "Settings/KnownLists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

using namespace Tool;

using Kind = PropertyListValue::Kind;
using Scope = QRVSettingScope;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

namespace fs = std::filesystem;

class KnownListsTests : public testing::Test {
  protected:
    KnownListsTests() {
        setenv("XDG_DATA_HOME", own.c_str(), 1);
        setenv("XDG_DATA_DIRS", (first + ":relative:" + second).c_str(), 1);
    }

    static void write(const std::string& folder, const std::string& name, const std::string& text) {
        fs::create_directories(folder + "/qrvsettings/known");
        std::ofstream(folder + "/qrvsettings/known/" + name) << text;
    }
    void writeList(const std::string& settings) const {
        write(own, "a.json", "{\"settings\": {" + settings + "}}");
    }
    [[nodiscard]] static std::vector<std::string> reasons(const KnownLists& lists) {
        std::vector<std::string> reasons;
        for (const ListRemark& remark : lists.remarks()) reasons.push_back(remark.reason);
        return reasons;
    }

    const std::string place = fs::current_path().string();
    const std::string own = place + "/own";
    const std::string first = place + "/first";
    const std::string second = place + "/second";
};

std::string sentenceOf(const KnownLists& lists, const std::string& keyPath) {
    const KnownSetting* const setting = lists.at(keyPath);
    return setting == nullptr ? "none" : setting->sentence;
}

}  // namespace

TEST_F(KnownListsTests, WithoutAnyHaveWhatTheLibraryKnows) {
    const KnownLists lists = KnownLists::read();
    EXPECT_THAT(lists.remarks(), IsEmpty());
    ASSERT_EQ(lists.settings().size(), QRVKnownSettings().size());
    for (const QRVKnownSetting& known : QRVKnownSettings()) {
        const KnownSetting* const setting = lists.at(known.keyPath);
        ASSERT_NE(setting, nullptr) << known.keyPath;
        EXPECT_EQ(setting->kind, known.kind);
        EXPECT_EQ(setting->scope, known.scope);
        EXPECT_EQ(setting->sentence, known.sentence);
        EXPECT_EQ(setting->file, "");
    }
}

TEST_F(KnownListsTests, AddSettingsWithAllThatTheySay) {
    writeList(R"("Host.Interval": {
        "sentence": "How often the host asks.", "kind": "integer", "scope": "profile",
        "default": 5, "unit": "seconds", "range": {"from": 1, "to": 60},
        "renamed-from": ["Host.Frequency", "Host.Old"],
        "choices": [1, {"value": 5, "sentence": "Often enough."}]})");
    const KnownLists lists = KnownLists::read();
    EXPECT_THAT(reasons(lists), IsEmpty());
    const KnownSetting* const setting = lists.at("Profiles.Settings.work.Host.Interval");
    ASSERT_NE(setting, nullptr);
    EXPECT_EQ(setting, lists.at("Host.Interval"));
    EXPECT_EQ(setting->keyPath, "Host.Interval");
    EXPECT_EQ(setting->sentence, "How often the host asks.");
    EXPECT_EQ(setting->kind, Kind::Integer);
    EXPECT_EQ(setting->scope, Scope::Profile);
    EXPECT_EQ(setting->byDefault, PropertyListValue(5));
    EXPECT_EQ(setting->unit, "seconds");
    EXPECT_EQ(setting->minimum, PropertyListValue(1));
    EXPECT_EQ(setting->maximum, PropertyListValue(60));
    EXPECT_THAT(setting->renamedFrom, ElementsAre("Host.Frequency", "Host.Old"));
    ASSERT_EQ(setting->choices.size(), 2U);
    EXPECT_EQ(setting->choices[1].value, PropertyListValue(5));
    EXPECT_EQ(setting->choices[1].sentence, "Often enough.");
    EXPECT_EQ(setting->file, own + "/qrvsettings/known/a.json");
    EXPECT_EQ(lists.renamedFrom("Host.Old"), setting);
    EXPECT_EQ(lists.renamedFrom("Profiles.Settings.work.Host.Frequency"), setting);
    EXPECT_EQ(lists.renamedFrom("Host.Interval"), nullptr);
}

TEST_F(KnownListsTests, MayBePropertyLists) {
    write(own, "a.plist",
          "<plist><dict><key>settings</key><dict><key>Host.A</key><dict>"
          "<key>kind</key><string>date</string></dict></dict></dict></plist>");
    write(own, "b.plist", R"({settings = {"Host.B" = {kind = color; unit = "x";};};})");
    const KnownLists lists = KnownLists::read();
    EXPECT_THAT(reasons(lists), IsEmpty());
    ASSERT_NE(lists.at("Host.A"), nullptr);
    EXPECT_EQ(lists.at("Host.A")->kind, Kind::Date);
    ASSERT_NE(lists.at("Host.B"), nullptr);
    EXPECT_EQ(lists.at("Host.B")->kind, Kind::Color);
}

TEST_F(KnownListsTests, OfTheUserComeFirstThenThoseOfTheSystemInOrder) {
    const auto list = [](const std::string& keyPaths, const std::string& sentence) {
        std::string settings;
        for (const char letter : keyPaths)
            settings += (settings.empty() ? "" : ",") + std::string("\"Host.") + letter +
                        R"(": {"sentence": ")" + sentence + "\"}";
        return "{\"settings\": {" + settings + "}}";
    };
    write(second, "a.json", list("ABCD", "second"));
    write(first, "b.json", list("ABC", "first b"));
    write(first, "a.json", list("AB", "first a"));
    write(own, "z.json", list("A", "own"));
    write(place + "/relative", "a.json", list("E", "relative"));
    write(second, "a.txt", "no list");
    const KnownLists lists = KnownLists::read();
    EXPECT_THAT(reasons(lists), IsEmpty());
    EXPECT_EQ(sentenceOf(lists, "Host.A"), "own");
    EXPECT_EQ(sentenceOf(lists, "Host.B"), "first a");
    EXPECT_EQ(sentenceOf(lists, "Host.C"), "first b");
    EXPECT_EQ(sentenceOf(lists, "Host.D"), "second");
    EXPECT_EQ(sentenceOf(lists, "Host.E"), "none");
}

TEST_F(KnownListsTests, InAFolderThatIsNamedTwiceAreReadOnce) {
    setenv("XDG_DATA_DIRS", (own + ":" + first + ":" + first).c_str(), 1);
    write(own, "a.json", "");
    write(first, "a.json", "");
    EXPECT_EQ(KnownLists::read().remarks().size(), 2U);
}

TEST_F(KnownListsTests, OfTheUserAreInTheHomeFolderByDefault) {
    unsetenv("XDG_DATA_HOME");
    setenv("HOME", place.c_str(), 1);
    write(place + "/.local/share", "a.json", R"({"settings": {"Host.A": {"kind": "real"}}})");
    EXPECT_NE(KnownLists::read().at("Host.A"), nullptr);
}

TEST_F(KnownListsTests, SayMoreOfASettingOfTheLibraryButNotAnotherKind) {
    writeList(
        R"("CPU.Menu.Processes.Format": {"choices": [0, 1], "sentence": "How.", "kind": "string"},
                 "CPU.Menubar.Mode.HistoryGraph.Width": {"scope": "profile", "unit": "points"},
                 "Sensors.Menubar.Sensors": {"kind": "array"},
                 "Weather.Menubar.Enabled": {"kind": "boolean"})");
    const KnownLists lists = KnownLists::read();
    EXPECT_THAT(reasons(lists),
                ElementsAre("CPU.Menu.Processes.Format: kind is \"string\", and that of the "
                            "library is \"integer\""));
    const KnownSetting* const format = lists.at("CPU.Menu.Processes.Format");
    EXPECT_EQ(format->kind, Kind::Integer);
    EXPECT_EQ(format->sentence, "How.");
    EXPECT_EQ(format->choices.size(), 2U);
    const KnownSetting* const width = lists.at("CPU.Menubar.Mode.HistoryGraph.Width");
    EXPECT_EQ(width->scope, Scope::Profile);
    EXPECT_EQ(width->sentence, QRVKnownSettingAt(width->keyPath)->sentence);
    EXPECT_EQ(lists.at("Sensors.Menubar.Sensors")->kind, Kind::Array);
    EXPECT_EQ(lists.at("Weather.Menubar.Enabled")->scope, Scope::Profile);
}

TEST_F(KnownListsTests, ThatAreNoneAreRemarks) {
    write(own, "a.json", "{\"settings\":\n {\"A\": }}");
    write(own, "b.json", "[]");
    write(own, "c.plist", "<plist>\n<dict>\n<foo/></dict></plist>");
    write(own, "d.json", "{\"setting\": {}}");
    write(own, "e.json", "");
    write(own, "f.json", R"({"settings": {"Host.A": {"kind": "real"}}})");
    fs::create_directory(own + "/qrvsettings/known/g.json");
    ASSERT_EQ(mkfifo((own + "/qrvsettings/known/h.plist").c_str(), 0600), 0);
    fs::create_symlink("nowhere", own + "/qrvsettings/known/i.json");
    const KnownLists lists = KnownLists::read();
    EXPECT_NE(lists.at("Host.A"), nullptr);
    std::vector<std::string> files;
    for (const ListRemark& remark : lists.remarks())
        files.push_back(fs::path(remark.file).filename().string());
    EXPECT_THAT(files, ElementsAre("a.json", "b.json", "c.plist", "d.json", "e.json", "g.json",
                                   "h.plist", "i.json"));
    EXPECT_THAT(reasons(lists)[0], HasSubstr("line 2"));
    EXPECT_THAT(reasons(lists)[1], HasSubstr("no dictionary \"settings\""));
    EXPECT_THAT(reasons(lists)[2], HasSubstr("line 3"));
    EXPECT_THAT(reasons(lists)[3], HasSubstr("no dictionary \"settings\""));
}

TEST_F(KnownListsTests, WithWrongFactsKeepTheOthers) {
    writeList(R"("Host.A": {"kind": "integer", "unit": 5, "sentence": "A.", "colour": 1,
                            "choices": [1, "two", {"sentence": "No value."}], "default": true,
                            "range": {"from": 9, "to": 3}, "scope": "record",
                            "renamed-from": ["Host.A", "CPU.Menubar.Enabled", "Host.Old"]},
                 "Host.B": {"kind": "number", "range": {"from": 0.5}},
                 "Host.C": {"kind": "string", "range": {"from": 1, "to": 2}},
                 "Host.D": {"range": {"least": 1}},
                 "Host.E": 5, "": {}, "Device.Device": {}, "Profiles.Settings.a.Host.F": {})");
    const KnownLists lists = KnownLists::read();
    EXPECT_THAT(
        reasons(lists),
        ElementsAre("\"\": an empty key path", "Device.Device: a record of the store",
                    R"(Host.A: "colour" is no part of a description)",
                    R"(Host.A: a choice has no value: {"sentence":"No value."})",
                    R"(Host.A: a choice is of another kind than integer: "two")",
                    "Host.A: default is of another kind than integer: true",
                    R"(Host.A: range is not {"from": NUMBER, "to": NUMBER}: {"from":9,"to":3})",
                    R"(Host.A: renamed-from is a setting of the library: "CPU.Menubar.Enabled")",
                    R"(Host.A: renamed-from is no other key path: "Host.A")",
                    R"(Host.A: scope is "record", not "application" or "profile")",
                    "Host.A: unit is not a string: 5", R"(Host.B: "number" is no kind)",
                    "Host.C: range of a setting that is no number",
                    R"(Host.D: range is not {"from": NUMBER, "to": NUMBER}: {"least":1})",
                    "Host.E: its description is not a dictionary",
                    "Profiles.Settings.a.Host.F: a key path of one profile, not the plain one"));
    const KnownSetting* const setting = lists.at("Host.A");
    EXPECT_EQ(setting->kind, Kind::Integer);
    EXPECT_EQ(setting->sentence, "A.");
    EXPECT_EQ(setting->choices.size(), 1U);
    EXPECT_TRUE(setting->byDefault.isNull());
    EXPECT_TRUE(setting->minimum.isNull());
    EXPECT_THAT(setting->renamedFrom, ElementsAre("Host.Old"));
    EXPECT_EQ(lists.at("Host.B")->kind, Kind::Null);
    EXPECT_EQ(lists.at("Host.B")->minimum, PropertyListValue(0.5));
    EXPECT_EQ(lists.at("Host.E"), nullptr);
    EXPECT_TRUE(lists.at("Device.Device")->file.empty());
}

TEST_F(KnownListsTests, HaveTheFormOfTheManualPage) {
    std::ostringstream page;
    page << std::ifstream(QRV_FILE_PAGE).rdbuf();
    const std::string text = page.str();
    const std::size_t start = text.find("{\"settings\"");
    ASSERT_NE(start, text.npos);
    std::string example = text.substr(start, text.find("\n.EE", start) - start);
    std::erase(example, '\\');
    write(own, "a.json", example);
    const KnownLists lists = KnownLists::read();
    EXPECT_THAT(reasons(lists), IsEmpty());
    const KnownSetting* const interval = lists.at("Weather.Global.Interval");
    ASSERT_NE(interval, nullptr);
    EXPECT_EQ(interval->unit, "minutes");
    EXPECT_EQ(lists.renamedFrom("Weather.Global.Frequency"), interval);
    ASSERT_NE(lists.at("Weather.Menubar.Style"), nullptr);
    EXPECT_EQ(lists.at("Weather.Menubar.Style")->choices.size(), 2U);
}

TEST_F(KnownListsTests, CallEveryKindByOneWord) {
    EXPECT_EQ(kindWord(Kind::Color), "color");
    EXPECT_EQ(kindWord(Kind::Null), "any");
    EXPECT_TRUE(isOfKind("1 0 0 1", Kind::Color));
    EXPECT_TRUE(isOfKind(1, Kind::Real));
    EXPECT_FALSE(isOfKind(1.5, Kind::Integer));
    EXPECT_FALSE(isOfKind(true, Kind::Integer));
    EXPECT_TRUE(isOfKind(NSArray{1}, Kind::Null));
}

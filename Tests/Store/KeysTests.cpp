// SPDX-License-Identifier: MIT
// Typed keys: that they are those of the table, and what reads and writes by them do.
#include "QRVSettings/QRVKeys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include "QRVSettings/QRVKnownSettings.h"
#include "Support/MachineSupport.h"
#include "Support/StoreSupport.h"

using StoreSupport::cached;

namespace {

using Kind = PropertyListValue::Kind;

// What the compiler refuses is tried in Tests/Checks/typed_keys.py, too: there a person's program.
template <typename Given, typename Key>
concept CanBeWritten = requires(const Given& value, const Key& key) {
    QRVSettingsSetValue(value, key);
    QRVSettingsProfileSetValue(value, key);
};
template <typename Value>
using Key = QRVKey<Value>;

static_assert(CanBeWritten<bool, Key<bool>>);
static_assert(!CanBeWritten<int, Key<bool>>);
static_assert(!CanBeWritten<const char*, Key<bool>>);
static_assert(!CanBeWritten<PropertyListValue, Key<bool>>);
static_assert(CanBeWritten<int, Key<std::int64_t>>);
static_assert(CanBeWritten<std::uint64_t, Key<std::int64_t>>);
static_assert(!CanBeWritten<bool, Key<std::int64_t>>);
static_assert(!CanBeWritten<char, Key<std::int64_t>>);
static_assert(!CanBeWritten<double, Key<std::int64_t>>);
static_assert(CanBeWritten<float, Key<double>>);
static_assert(CanBeWritten<int, Key<double>>);
static_assert(!CanBeWritten<bool, Key<double>>);
static_assert(CanBeWritten<char[4], Key<std::string>>);
static_assert(CanBeWritten<std::string_view, Key<std::string>>);
static_assert(!CanBeWritten<int, Key<std::string>>);
static_assert(!CanBeWritten<NSColor, Key<std::string>>);
static_assert(CanBeWritten<NSColor, Key<NSColor>>);
static_assert(!CanBeWritten<const char*, Key<NSColor>>);
static_assert(CanBeWritten<NSMutableArray, Key<NSArray>>);
static_assert(!CanBeWritten<NSDictionary, Key<NSArray>>);
static_assert(!CanBeWritten<int, Key<NSArray>>);
static_assert(CanBeWritten<NSMutableDictionary, Key<NSDictionary>>);
static_assert(CanBeWritten<NSDate, Key<NSDate>>);
static_assert(!CanBeWritten<double, Key<NSDate>>);
static_assert(CanBeWritten<NSData, Key<NSData>>);
static_assert(CanBeWritten<int, Key<PropertyListValue>>);
static_assert(CanBeWritten<NSArray, Key<PropertyListValue>>);
static_assert(CanBeWritten<std::nullptr_t, Key<bool>>);
static_assert(CanBeWritten<std::nullptr_t, Key<std::string>>);
static_assert(CanBeWritten<std::nullptr_t, Key<PropertyListValue>>);
static_assert(!CanBeWritten<bool, const char*>);

template <typename Value>
constexpr Kind kindOfKey(const QRVKey<Value>& /*key*/) {
    if (std::is_same_v<Value, bool>) return Kind::Boolean;
    if (std::is_same_v<Value, std::int64_t>) return Kind::Integer;
    if (std::is_same_v<Value, std::string>) return Kind::String;
    if (std::is_same_v<Value, NSColor>) return Kind::Color;
    if (std::is_same_v<Value, NSArray>) return Kind::Array;
    if (std::is_same_v<Value, NSDictionary>) return Kind::Dictionary;
    return Kind::Null;
}

struct TableKey {
    std::string name;
    std::string_view keyPath;
    Kind kind;
};

#define KEY_Application(levels, name) \
    {#levels "::" #name, levels::name.keyPath(), kindOfKey(levels::name)},
#define KEY_Profile(levels, name) KEY_Application(levels, name)
#define KEY_Record(levels, name)
#define QRV_SETTING(keyPath, levels, name, kind, byDefault, scope, sentence) \
    KEY_##scope(levels, name)
const std::vector<TableKey> tableKeys = {
#include "QRVSettings/KnownSettingsTable.h"
};
#undef KEY_Record
#undef KEY_Profile
#undef KEY_Application

bool isNumber(std::string_view text) {
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool isLevel(std::string_view keyPath) {
    return std::any_of(tableKeys.begin(), tableKeys.end(), [&](const TableKey& key) {
        return key.keyPath.starts_with(std::string(keyPath) + ".");
    });
}

/// The name that the rule gives a key path.
std::string nameByRule(std::string_view keyPath) {
    std::string name = "Keys";
    std::string_view rest = keyPath;
    while (!rest.empty()) {
        const std::string_view key = rest.substr(0, rest.find('.'));
        name.append(isNumber(key) ? "::N" : "::").append(key);
        rest.remove_prefix(std::min(key.size() + 1, rest.size()));
    }
    return isLevel(keyPath) ? name + "_" : name;
}

constexpr QRVKey<std::int64_t> interval("Host.Interval");
constexpr QRVKey<double> ratio("Host.Ratio");
constexpr QRVKey<bool> flag("Host.Flag");
constexpr QRVKey<std::string> text("Host.Text");
constexpr QRVKey<NSColor> color("Host.Color");
constexpr QRVKey<NSDate> date("Host.Date");
constexpr QRVKey<NSData> data("Host.Data");
constexpr QRVKey<NSArray> list("Host.List");
constexpr QRVKey<NSDictionary> tree("Host.Tree");
constexpr QRVKey<PropertyListValue> anything("Host.Anything");

/// A store on a machine of its own, with the built-in defaults.
void start() {
    MachineSupport::beMachine("1", "M");
    QRVSettings::sharedSettings().loadDefaults();
    QRVSettings::sharedSettings().prepare();
}

void store(const PropertyListValue& value, QRVKeyPath keyPath) {
    QRVSettingsSetObjectForKeyPath(value, keyPath);
}

PropertyListValue stored(QRVKeyPath keyPath) {
    return QRVSettingsStoredObjectForKeyPath(keyPath);
}

}  // namespace

TEST(Keys, AreThoseOfTheTableButTheRecords) {
    std::size_t number = 0;
    for (const QRVKnownSetting& setting : QRVKnownSettings()) {
        if (setting.scope == QRVSettingScope::Record) continue;
        ASSERT_LT(number, tableKeys.size());
        const TableKey& key = tableKeys[number++];
        EXPECT_EQ(key.keyPath, setting.keyPath);
        EXPECT_EQ(key.kind, setting.kind) << setting.keyPath;
        EXPECT_EQ(key.name, nameByRule(setting.keyPath));
    }
    EXPECT_EQ(number, tableKeys.size());
}

TEST(Keys, HaveTheTypesThatSurprise) {
    static_assert(std::is_same_v<decltype(QRVSettingsValue(Keys::CPU::Menubar::Enabled)), bool>);
    static_assert(
        std::is_same_v<decltype(QRVSettingsValue(Keys::Processes::Combine)), std::int64_t>);
    static_assert(
        std::is_same_v<decltype(QRVSettingsValue(Keys::CPU::Global::EfficiencyCores::Visible)),
                       std::int64_t>);
    static_assert(std::is_same_v<decltype(QRVSettingsValue(
                                     Keys::Network::Menubar::Mode::Status::NoIP::Color)),
                                 NSColor>);
    start();
    EXPECT_EQ(QRVSettingsValue(Keys::Processes::Combine), 1);
    EXPECT_TRUE(QRVSettingsValue(Keys::CPU::Menubar::Enabled));
    EXPECT_EQ(QRVSettingsValue(Keys::Weather::Menu::Forecast::Graph::N1), "windspeed");
    EXPECT_EQ(QRVSettingsValue(Keys::Combined::Menu::Items).count(), 6U);
    EXPECT_TRUE(QRVSettingsValue(Keys::Sensors::Global::Fans::Curve::Sync));
    EXPECT_EQ(QRVSettingsValue(Keys::Sensors::Global::Fans_).count(), 1U);
    EXPECT_TRUE(QRVSettingsValue(Keys::Sensors::Menubar::Sensors).isNull());
}

TEST(Keys, GiveEveryDefault) {
    start();
    EXPECT_EQ(QRVSettingsDefaultValue(Keys::CPU::Menubar::Mode::HistoryGraph::Width), 40);
    QRVSettingsSetValue(60, Keys::CPU::Menubar::Mode::HistoryGraph::Width);
    EXPECT_EQ(QRVSettingsDefaultValue(Keys::CPU::Menubar::Mode::HistoryGraph::Width), 40);
    const NSColor red =
        QRVSettingsDefaultValue(Keys::Network::Menubar::Mode::Status::NotConnected::Color);
    EXPECT_FLOAT_EQ(static_cast<float>(red.greenComponent), 0.321F);
    EXPECT_EQ(QRVSettingsDefaultValue(interval), 0);
}

TEST(Keys, WriteValuesOfTheirKind) {
    start();
    QRVSettingsSetValue(false, flag);
    QRVSettingsSetValue(7, interval);
    QRVSettingsSetValue(2, ratio);
    QRVSettingsSetValue("word", text);
    QRVSettingsSetValue(NSColor{1, 0.5, 0, 1}, color);
    QRVSettingsSetValue(NSDate(5), date);
    QRVSettingsSetValue(NSData("ab"), data);
    QRVSettingsSetValue(NSArray{1, 2}, list);
    QRVSettingsSetValue(NSDictionary{{"A", 1}}, tree);
    QRVSettingsSetValue("any", anything);
    EXPECT_TRUE(stored(flag).isBoolean());
    EXPECT_TRUE(stored(interval).isInteger());
    EXPECT_TRUE(stored(ratio).isReal());
    EXPECT_EQ(stored(text), PropertyListValue("word"));
    EXPECT_EQ(stored(color), PropertyListValue("1 0.5 0 1"));
    EXPECT_FALSE(QRVSettingsValue(flag, true));
    EXPECT_EQ(QRVSettingsValue(interval), 7);
    EXPECT_EQ(QRVSettingsValue(ratio), 2.0);
    EXPECT_EQ(QRVSettingsValue(text), "word");
    EXPECT_EQ(QRVSettingsValue(color), (NSColor{1, 0.5, 0, 1}));
    EXPECT_EQ(QRVSettingsValue(date), NSDate(5));
    EXPECT_EQ(QRVSettingsValue(data), NSData("ab"));
    EXPECT_EQ(QRVSettingsValue(list), (NSArray{1, 2}));
    EXPECT_EQ(QRVSettingsValue(tree), (NSDictionary{{"A", 1}}));
    EXPECT_EQ(QRVSettingsValue(anything), PropertyListValue("any"));
    QRVSettingsSetValue(~std::uint64_t{0}, interval);
    EXPECT_TRUE(stored(interval).isBeyondSigned());
}

TEST(Keys, GiveTheFallbackOnlyWhereNothingAnswers) {
    start();
    EXPECT_EQ(QRVSettingsValue(interval, 30), 30);
    EXPECT_EQ(QRVSettingsValue(text, "fallback"), "fallback");
    EXPECT_EQ(QRVSettingsProfileValue(interval, 31), 31);
    EXPECT_EQ(QRVSettingsValue(Keys::UpdateFrequency, 30), 1);
    EXPECT_EQ(QRVSettingsProfileValue(Keys::UpdateFrequency, 30), 1);
    QRVSettingsSetValue(0, interval);
    EXPECT_EQ(QRVSettingsValue(interval, 30), 0);
}

TEST(Keys, GiveNothingWhereNothingAnswers) {
    start();
    EXPECT_FALSE(QRVSettingsValue(flag));
    EXPECT_EQ(QRVSettingsValue(interval), 0);
    EXPECT_EQ(QRVSettingsValue(ratio), 0);
    EXPECT_EQ(QRVSettingsValue(text), "");
    EXPECT_EQ(QRVSettingsValue(color), (NSColor{0, 0, 0, 1}));
    EXPECT_EQ(QRVSettingsValue(date), NSDate(0));
    EXPECT_EQ(QRVSettingsValue(data), NSData());
    EXPECT_EQ(QRVSettingsValue(list), NSArray());
    EXPECT_EQ(QRVSettingsValue(tree), NSDictionary());
    EXPECT_TRUE(QRVSettingsValue(anything).isNull());
    EXPECT_EQ(QRVSettingsStoredValue(interval), std::nullopt);
}

TEST(Keys, RemoveTheStoredValueByNullAndByTheDefault) {
    start();
    QRVSettingsSetValue(2, Keys::UpdateFrequency);
    EXPECT_EQ(QRVSettingsStoredValue(Keys::UpdateFrequency), 2);
    QRVSettingsSetValue(nullptr, Keys::UpdateFrequency);
    EXPECT_EQ(QRVSettingsStoredValue(Keys::UpdateFrequency), std::nullopt);
    EXPECT_EQ(QRVSettingsDefaultValue(Keys::UpdateFrequency), 1);
    QRVSettingsSetValue(2, Keys::UpdateFrequency);
    QRVSettingsSetValue(1, Keys::UpdateFrequency);
    EXPECT_EQ(QRVSettingsStoredValue(Keys::UpdateFrequency), std::nullopt);
}

TEST(Keys, ConvertBooleansNumbersAndText) {
    start();
    store("yes", flag);
    EXPECT_TRUE(QRVSettingsValue(flag));
    store(0, flag);
    EXPECT_FALSE(QRVSettingsValue(flag, true));
    store(true, interval);
    EXPECT_EQ(QRVSettingsValue(interval), 1);
    store("60 points", interval);
    EXPECT_EQ(QRVSettingsValue(interval), 60);
    store(2.9, interval);
    EXPECT_EQ(QRVSettingsValue(interval), 2);
    store("0.5", ratio);
    EXPECT_EQ(QRVSettingsValue(ratio), 0.5);
    store(3, ratio);
    EXPECT_EQ(QRVSettingsValue(ratio), 3.0);
    store(5, text);
    EXPECT_EQ(QRVSettingsValue(text), "5");
}

TEST(Keys, TakeTheDefaultForWhatCannotBeConverted) {
    start();
    store(NSArray{1}, Keys::CPU::Menubar::Enabled);
    EXPECT_TRUE(QRVSettingsValue(Keys::CPU::Menubar::Enabled));
    EXPECT_EQ(QRVSettingsStoredValue(Keys::CPU::Menubar::Enabled), std::nullopt);
    store(NSDictionary{{"A", 1}}, Keys::UpdateFrequency);
    EXPECT_EQ(QRVSettingsValue(Keys::UpdateFrequency), 1);
    store(NSDate(0), Keys::Menu::Theme::Dark);
    EXPECT_EQ(QRVSettingsValue(Keys::Menu::Theme::Dark), "indigo");
    store("text", Keys::Combined::Menu::Items);
    EXPECT_EQ(QRVSettingsValue(Keys::Combined::Menu::Items).count(), 6U);
    store("no colour", Keys::Network::Menubar::Mode::Status::NoIP::Color);
    EXPECT_EQ(QRVSettingsValue(Keys::Network::Menubar::Mode::Status::NoIP::Color),
              QRVSettingsDefaultValue(Keys::Network::Menubar::Mode::Status::NoIP::Color));
    store(5, list);
    EXPECT_EQ(QRVSettingsValue(list, NSArray{"fallback"}), NSArray{"fallback"});
    store(5, date);
    EXPECT_EQ(QRVSettingsValue(date, NSDate(9)), NSDate(9));
}

TEST(Keys, ReadAndWriteTheActiveProfile) {
    start();
    QRVSettingsProfileSetValue(false, Keys::CPU::Menubar::Enabled);
    EXPECT_FALSE(QRVSettingsProfileValue(Keys::CPU::Menubar::Enabled));
    EXPECT_TRUE(QRVSettingsValue(Keys::CPU::Menubar::Enabled));
    EXPECT_EQ(stored("Profiles.Settings.default.CPU.Menubar.Enabled"), PropertyListValue(false));
    QRVSettings::sharedSettings().setActiveProfile("work");
    EXPECT_TRUE(QRVSettingsProfileValue(Keys::CPU::Menubar::Enabled));
    QRVSettings::sharedSettings().setActiveProfile("default");
    QRVSettingsProfileSetValue(nullptr, Keys::CPU::Menubar::Enabled);
    EXPECT_TRUE(QRVSettingsProfileValue(Keys::CPU::Menubar::Enabled));
    EXPECT_TRUE(stored("Profiles.Settings.default.CPU.Menubar.Enabled").isNull());
}

TEST(Keys, OfColoursDropTheDefaultHoweverItIsWritten) {
    start();
    const auto& key = Keys::Network::Menubar::Mode::Status::NotConnected::Color;
    for (const NSColor& same : {QRVSettingsValue(key), NSColor{1, 0.321, 0.341, 1}}) {
        QRVSettingsSetValue(NSColor{0, 0, 1, 1}, key);
        EXPECT_EQ(QRVSettingsValue(key), (NSColor{0, 0, 1, 1}));
        EXPECT_TRUE(QRVSettingsColorForKeyPath(key).isColor());
        QRVSettingsSetValue(same, key);
        EXPECT_TRUE(stored(key).isNull());
        EXPECT_EQ(QRVSettingsValue(key), QRVSettingsDefaultValue(key));
    }
}

TEST(Keys, OfColoursWorkInProfiles) {
    start();
    const auto& key = Keys::Network::Menubar::Mode::Status::NotConnected::Color;
    const std::string inProfile = QRVSettingsProfileKeyForKey(key);
    EXPECT_EQ(QRVSettingsProfileValue(key), QRVSettingsDefaultValue(key));
    EXPECT_EQ(QRVSettingsProfileObjectForKeyPath(key), QRVSettingsDefaultForKeyPath(key))
        << "the colour that was read hides the default";
    QRVSettingsProfileSetValue(NSColor{0, 0, 1, 1}, key);
    EXPECT_EQ(stored(inProfile), PropertyListValue("0 0 1 1"));
    EXPECT_EQ(QRVSettingsProfileValue(key), (NSColor{0, 0, 1, 1}));
    EXPECT_TRUE(QRVSettingsColorForKeyPath(inProfile).isColor());
    EXPECT_EQ(QRVSettingsValue(key), QRVSettingsDefaultValue(key));
    QRVSettingsProfileSetValue(QRVSettingsDefaultValue(key), key);
    EXPECT_TRUE(stored(inProfile).isNull());
    EXPECT_EQ(QRVSettingsProfileValue(key), QRVSettingsDefaultValue(key));
}

TEST(Keys, OfColoursReadTextThatTheCacheHolds) {
    start();
    const auto& key = Keys::Network::Menubar::Mode::Status::NoIP::Color;
    store("0 1 0 1", key);
    ASSERT_TRUE(cached(key.keyPath()).isString());
    EXPECT_EQ(QRVSettingsValue(key), (NSColor{0, 1, 0, 1}));
}

TEST(ColorOfText, IsTheColourThatReadsGive) {
    EXPECT_EQ(QRVSettingsColorOfText("1 0.5 0 1").color(), (NSColor{1, 0.5, 0, 1}));
    EXPECT_EQ(QRVSettingsColorOfText("1 a 0 1").color(), (NSColor{1, 0, 0, 1}));
    for (const char* none : {"", "1 0 0", "1  0 0 1", "1 0 0 1 "})
        EXPECT_TRUE(QRVSettingsColorOfText(none).isNull()) << none;
    EXPECT_TRUE(QRVSettingsColorOfText(nullptr).isNull());
    EXPECT_TRUE(QRVSettingsColorOfText(NSColor{}).isNull());
    EXPECT_EQ(QRVSettingsTextOfColor(NSColor{1, 0.321, 0, 1}), "1 0.321 0 1");
}
